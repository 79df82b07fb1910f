#include "helper/file_steps.h"

#include "system/files.h"
#include "system/folders.h"
#include "system/start_program.h"

namespace ca::helper {

bool isProgram(const std::wstring& file, const system::Patience& patience) {
    return patience.retry([&] { return system::isProgram(file); });
}

bool keepAside(const std::wstring& target, const std::wstring& folder, const std::wstring& name,
               const system::Patience& patience) {
    const std::wstring copy = folder + name;
    system::makeFolders(folder); // mostly there already; a failure shows in the next step
    if (system::isLink(folder)) {
        return false;
    }
    // What is left there may be a second name of the target itself, which a copy would overwrite
    // with itself.
    if (!system::isMissing(copy) && !patience.retry([&] { return system::removeFile(copy); })) {
        return false;
    }
    return patience.retry([&] {
        return system::linkFile(target, copy) ||
               (system::copyFile(target, copy) && flushToDisk(copy, patience));
    });
}

bool flushToDisk(const std::wstring& file, const system::Patience& patience) {
    return patience.retry([&] { return system::flushFile(file); });
}

bool moveOver(const std::wstring& from, const std::wstring& to, const system::Patience& patience) {
    return patience.retry([&] { return system::replaceFileThrough(from, to); });
}

bool start(const std::wstring& program, const system::Patience& patience) {
    return patience.retry([&] { return system::startProgram(program, L"", 0); });
}

} // namespace ca::helper
