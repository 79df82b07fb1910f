// A server that sends what a test wants to see a client cope with, byte for byte, on a loopback port of its own choice.
// Prints the port and serves until its standard input ends. The request's path tells what to send, every byte written
// %XX:
//
//   /raw/<answer>    sends the answer and closes the connection
//   /reset/<answer>  the same, but breaks the connection off
//   /hold/<answer>   the same, but leaves the connection open until the client goes
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

void serve(int client) {
    std::string head;
    char buffer[4096];
    ssize_t count = 1;
    while (head.find("\r\n\r\n") == std::string::npos && count > 0) {
        count = ::recv(client, buffer, sizeof(buffer), 0);
        head.append(buffer, static_cast<std::size_t>(count > 0 ? count : 0));
    }
    const std::size_t split = head.find('/', 5); // behind "GET /"
    const std::string verb = count > 0 ? head.substr(5, split - 5) : "";
    std::string answer;
    for (std::size_t i = split + 1; i + 2 < head.find(" HTTP/") && count > 0; i += 3)
        answer += static_cast<char>(std::strtol(head.substr(i + 1, 2).c_str(), nullptr, 16));
    ::send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
    const linger atOnce{verb == "reset", 0};
    ::setsockopt(client, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
    if (verb == "raw")
        ::shutdown(client, SHUT_WR);
    while (verb != "reset" && ::recv(client, buffer, sizeof(buffer), 0) > 0) {
    }
    ::close(client);
}

} // namespace

int main() {
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* plain = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof(address);
    if (::bind(listener, plain, size) != 0 || ::listen(listener, 64) != 0 || ::getsockname(listener, plain, &size) != 0)
        return 1;
    std::printf("%d\n", ntohs(address.sin_port));
    std::fflush(stdout);
    std::thread([listener] {
        for (;;)
            std::thread(serve, ::accept(listener, nullptr, nullptr)).detach();
    }).detach();
    while (std::getchar() != EOF) {
    }
    std::_Exit(0); // threads whose clients still hold on end with the process
}
