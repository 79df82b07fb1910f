#include "last_error.h"
#include "processes/argument_rules.h"
#include "text/utf8.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <fstream>
#include <iterator>
#include <shellapi.h>

namespace {

using namespace ca::win32;

std::string readOwnCommandLine() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    // The kernel keeps the arguments with a zero byte behind each. The first is the program's name,
    // in which no character can be escaped.
    std::string line;
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::string_view argument = rest.substr(0, rest.find('\0'));
        line += line.empty() ? '"' + std::string(argument) + '"' : ' ' + quoteArgument(argument);
        rest.remove_prefix(std::min(argument.size() + 1, rest.size()));
    }
    return line;
}

// Bytes for the pointers, the null behind them and the texts. No text has more wide characters than
// it has bytes.
std::size_t blockSize(const std::vector<std::string>& arguments) {
    std::size_t size = (arguments.size() + 1) * sizeof(LPWSTR);
    for (const std::string& argument : arguments) {
        size += (argument.size() + 1) * sizeof(wchar_t);
    }
    return size;
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
    // One block holds the pointers and, behind them, the texts, because LocalFree frees them all.
    const std::vector<std::string> arguments = splitCommandLine(*line, true);
    auto** pointers = static_cast<LPWSTR*>(std::malloc(blockSize(arguments)));
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
