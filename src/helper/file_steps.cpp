#include "helper/file_steps.h"

#include "system/files.h"
#include "system/folders.h"
#include "system/retry.h"
#include "system/start_program.h"

namespace ca::helper {

namespace {

// A scanner is done with a launcher long before.
constexpr system::RetryTimes times{.limit = 30 * 1000, .firstPause = 50, .longestPause = 2000};

} // namespace

bool isProgram(const std::wstring& file) {
    return system::withRetries(times, [&] { return system::isProgram(file); });
}

bool keepAside(const std::wstring& target, const std::wstring& folder, const std::wstring& name) {
    const std::wstring copy = folder + name;
    system::makeFolders(folder); // mostly there already; a failure shows in the next step
    if (system::isLink(folder)) {
        return false;
    }
    // What is left there may be a second name of the target itself, which a copy would overwrite
    // with itself.
    if (!system::isMissing(copy) &&
        !system::withRetries(times, [&] { return system::removeFile(copy); })) {
        return false;
    }
    return system::withRetries(times, [&] {
        return system::linkFile(target, copy) ||
               (system::copyFile(target, copy) && flushToDisk(copy));
    });
}

bool flushToDisk(const std::wstring& file) {
    return system::withRetries(times, [&] { return system::flushFile(file); });
}

bool moveOver(const std::wstring& from, const std::wstring& to) {
    return system::withRetries(times, [&] { return system::replaceFileThrough(from, to); });
}

bool start(const std::wstring& program) {
    return system::withRetries(times, [&] { return system::startProgram(program, L"", 0); });
}

} // namespace ca::helper
