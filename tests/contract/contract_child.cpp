// The program that the contract's tests start:
//
//   contract_child report FILE [ARGUMENT]...
//                              writes its folder, its own path and the arguments to FILE
//   contract_child leave URL MICROSECONDS
//                              returns from main while its other thread downloads
#include "contract.h"
#include "net/download.h"

#include <shellapi.h>

using namespace ca::test;

// Not main's own: Windows hands over those in a code page, and C++ libraries differ in which one a
// path's text is in.
static std::vector<std::string> ownArguments() {
    int count = 0;
    wchar_t** const words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    std::transform(words + 1, words + count, std::back_inserter(arguments), utf8FromWide);
    ::LocalFree(words);
    return arguments;
}

static void downloadForever(const std::string& url) {
    for (std::string text, error;;) {
        ca::net::fetchText(url, text, error);
    }
}

int main() {
    const std::vector<std::string> arguments = ownArguments();
    if (arguments.at(0) == "leave") {
        [[maybe_unused]] static std::thread* volatile neverJoined = // kept, so that nothing leaks
            new std::thread(downloadForever, arguments.at(1));
        const auto end = std::chrono::steady_clock::now() +
                         std::chrono::microseconds(std::stoi(arguments.at(2)));
        while (std::chrono::steady_clock::now() < end) {
        }
        return 0;
    }
    std::string text = utf8FromPath(fs::current_path()) + "\n" + utf8FromPath(executableDir());
    for (std::size_t i = 2; i < arguments.size(); ++i) {
        text += "\n" + arguments[i];
    }
    // whole at once, for whoever waits for it
    const auto file = fs::absolute(pathFromUtf8(arguments.at(1)));
    fs::rename(writeFile(file.parent_path() / "draft", text), file);
}
