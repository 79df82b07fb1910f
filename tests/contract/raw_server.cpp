// A server that sends what a test wants to see a client cope with, byte for byte, on a loopback port of its own choice.
// Prints the port, serves until its standard input ends. What it does stands in the request's path:
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
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

std::string withoutPercents(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escaped = text[i] == '%' && i + 2 < text.size();
        bytes += escaped ? static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16)) : text[i];
        i += escaped ? 2 : 0;
    }
    return bytes;
}

std::string answerTo(const std::string& head, std::string_view verb, std::string_view rest) {
    if (verb == "chain") {
        const int left = std::atoi(std::string(rest).c_str());
        return left == 0 ? "HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nend"
                         : "HTTP/1.1 302 Found\r\nContent-Length: 4\r\nLocation: /chain/" + std::to_string(left - 1) +
                               "/x\r\n\r\nmore";
    }
    if (verb.starts_with("echo")) {
        return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(head.size()) + "\r\n\r\n" + head;
    }
    return withoutPercents(rest);
}

void serve(int client) {
    std::string head;
    char buffer[4096];
    while (head.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = ::recv(client, buffer, sizeof(buffer), 0);
        if (count <= 0) {
            ::close(client);
            return;
        }
        head.append(buffer, static_cast<std::size_t>(count));
    }
    const std::string path = head.substr(head.find('/') + 1, head.find(" HTTP/") - head.find('/') - 1);
    const std::string verb = path.substr(0, path.find_first_of("/?"));
    const std::string answer = answerTo(head, verb, path.size() > verb.size() ? path.substr(verb.size() + 1) : "");
    ::send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
    if (verb == "reset") {
        const linger atOnce{1, 0};
        ::setsockopt(client, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
    } else {
        if (verb != "hold") {
            ::shutdown(client, SHUT_WR);
        }
        while (::recv(client, buffer, sizeof(buffer), 0) > 0) {
        }
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
    if (::bind(listener, plain, size) != 0 || ::listen(listener, 64) != 0 ||
        ::getsockname(listener, plain, &size) != 0) {
        std::perror("raw_server");
        return 1;
    }
    std::printf("%d\n", ntohs(address.sin_port));
    std::fflush(stdout);
    std::thread([listener] {
        for (int client = ::accept(listener, nullptr, nullptr); client >= 0;
             client = ::accept(listener, nullptr, nullptr)) {
            std::thread(serve, client).detach();
        }
    }).detach();
    while (std::getchar() != EOF) {
    }
    std::_Exit(0); // the threads of clients that still hold on end with the process
}
