#include "host.h"
#include "processes/argument_rules.h"

#include <cstdlib>
#include <cwchar>
#include <fstream>
#include <iterator>
#include <shellapi.h>

namespace {

using namespace ca::win32;

// The kernel keeps the arguments with a zero byte behind each.
std::string readOwnCommandLine() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::string line;
    for (std::size_t at = 0; at < text.size();
         at += std::string_view(text.c_str() + at).size() + 1) {
        const std::string_view argument = text.c_str() + at;
        line += line.empty() ? '"' + std::string(argument) + '"' : ' ' + quoteArgument(argument);
    }
    return line;
}

} // namespace

LPWSTR GetCommandLineW() {
    // Never destroyed: the result is valid for as long as the process.
    static std::wstring& line =
        *new std::wstring(toWide(readOwnCommandLine()).value_or(std::wstring()));
    return line.data();
}

LPWSTR* CommandLineToArgvW(LPCWSTR commandLine, int* count) {
    const std::optional<std::string> line = toUtf8(commandLine);
    if (!line) {
        return nullptr;
    }
    // One block holds the pointers and, behind them, the texts.
    const std::vector<std::string> arguments = splitCommandLine(*line, true);
    std::size_t size = (arguments.size() + 1) * sizeof(LPWSTR);
    for (const std::string& argument : arguments) {
        size += (argument.size() + 1) * sizeof(wchar_t); // no text has more characters than bytes
    }
    auto** pointers = static_cast<LPWSTR*>(std::malloc(size));
    if (pointers == nullptr) {
        fail(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    auto* text = reinterpret_cast<wchar_t*>(pointers + arguments.size() + 1);
    std::size_t index = 0;
    for (const std::string& argument : arguments) {
        const std::wstring wide = toWide(argument).value_or(std::wstring());
        pointers[index++] = text;
        std::wmemcpy(text, wide.c_str(), wide.size() + 1);
        text += wide.size() + 1;
    }
    pointers[index] = nullptr;
    *count = static_cast<int>(arguments.size());
    return pointers;
}

HANDLE LocalFree(HANDLE memory) {
    std::free(memory);
    return nullptr;
}
