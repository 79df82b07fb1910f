// The program that the contract's tests start:
//
//   contract_child report FILE [ARGUMENT]...     writes its folder, its own path, DISPLAY and its arguments to FILE
//   contract_child wait FILE                     the same, then ends when the file is gone
//   contract_child leave PORT MICROSECONDS       returns from main while its other thread downloads
#include "contract.h"

#include <winhttp.h>

using namespace ca::test;

static void downloadForever(INTERNET_PORT port) {
    for (std::vector<char> bytes(65536);;) {
        const HINTERNET session = ::WinHttpOpen(L"Contract/1", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, nullptr, nullptr, 0);
        const HINTERNET server = ::WinHttpConnect(session, L"127.0.0.1", port, 0);
        const HINTERNET request =
            ::WinHttpOpenRequest(server, nullptr, L"/numbers.txt", nullptr, nullptr, nullptr, WINHTTP_FLAG_SECURE);
        DWORD count = 1;
        if (::WinHttpSendRequest(request, nullptr, 0, nullptr, 0, 0, 0) && ::WinHttpReceiveResponse(request, nullptr))
            while (count > 0 && ::WinHttpReadData(request, bytes.data(), 65536, &count)) {
            }
        for (const HINTERNET handle : {request, server, session})
            ::WinHttpCloseHandle(handle);
    }
}

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.at(0) == "leave") {
        [[maybe_unused]] static std::thread* volatile neverJoined = // kept, so that nothing leaks
            new std::thread(downloadForever, static_cast<INTERNET_PORT>(std::stoi(arguments.at(1))));
        const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(std::stoi(arguments.at(2)));
        while (std::chrono::steady_clock::now() < end) {
        }
        return 0;
    }
    std::string text = utf8FromPath(std::filesystem::current_path()) + "\n" + utf8FromPath(executableDir()) + "\n" +
                       setting("DISPLAY");
    for (std::size_t i = 2; i < arguments.size(); ++i)
        text += "\n" + arguments[i];
    const auto file = std::filesystem::absolute(arguments.at(1)); // whole at once, for whoever waits for it
    std::filesystem::rename(writeFile(file.parent_path() / "draft", text), file);
    return arguments[0] == "report" || eventually([&] { return !std::filesystem::exists(file); }) ? 0 : 1;
}
