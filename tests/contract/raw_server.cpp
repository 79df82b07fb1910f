// A server that sends what a test wants to see a client cope with, byte for byte, on a loopback port of its own choice.
// Prints the port and serves until its standard input ends. What it does stands in the request's path:
//
//   /raw/<answer>    sends the answer, written with %XX for any byte, and closes the connection
//   /reset/<answer>  the same, but breaks the connection off
//   /hold/<answer>   the same, but leaves the connection open until the client goes
//   /echo...         answers with the head of the request as the body
//   /chain/<n>/x     redirects n times, then answers "end"
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

std::string withoutPercents(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += text[i] == '%' ? 3U : 1U)
        bytes += text[i] == '%' ? static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16)) : text[i];
    return bytes;
}

std::string answerTo(const std::string& head, const std::string& verb, const std::string& rest) {
    const std::string good = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: ";
    if (verb == "echo")
        return good + std::to_string(head.size()) + "\r\n\r\n" + head;
    if (verb != "chain")
        return withoutPercents(rest);
    const int left = std::atoi(rest.c_str());
    return left == 0 ? good + "3\r\n\r\nend"
                     : "HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 0\r\nLocation: /chain/" +
                           std::to_string(left - 1) + "/x\r\n\r\n";
}

void serve(int client) {
    std::string head;
    char buffer[4096];
    ssize_t count = 1;
    while (head.find("\r\n\r\n") == std::string::npos && count > 0) {
        count = ::recv(client, buffer, sizeof(buffer), 0);
        head.append(buffer, static_cast<std::size_t>(count > 0 ? count : 0));
    }
    const std::size_t begin = head.find('/') + 1;
    const std::size_t split = head.find_first_of("/? ", begin);
    const std::string verb = head.substr(begin, split - begin);
    const std::string answer = answerTo(head, verb, head.substr(split + 1, head.find(" HTTP/") - split - 1));
    ::send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
    const linger atOnce{verb == "reset", 0};
    ::setsockopt(client, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
    if (verb != "hold" && verb != "reset")
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
