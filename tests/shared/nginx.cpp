#include "shared/nginx.h"

#include "publisher/serve/nginx.h"

#include <fstream>
#include <stdexcept>

namespace ca::kit {
namespace {

std::string configurationFor(std::uint16_t port, const NginxOptions& options) {
    publisher::NginxConfiguration configuration;
    configuration.workers = "1";
    configuration.httpLines =
        "    log_format requests '$request_method $request_uri $status $body_bytes_sent "
        "$http_user_agent';\n"
        "    access_log access.log requests;\n"
        "    default_type application/octet-stream;\n"
        "    types { }\n"
        "    sendfile on;\n"
        "    tcp_nopush on;\n";
    configuration.listen = "127.0.0.1:" + std::to_string(port);
    configuration.root = options.root;
    configuration.bytesPerSecond = options.bytesPerSecond;
    if (!options.certificate.empty()) {
        const std::string certificate = publisher::quotedPath(options.certificate);
        configuration.listen += " ssl";
        configuration.serverLines = "        ssl_certificate " + certificate + ";\n" +
                                    "        ssl_certificate_key " + certificate + ";\n";
    }
    configuration.serverLines += options.serverDirectives + "\n";
    return publisher::configurationText(configuration);
}

void writeText(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw std::runtime_error("can't write " + path.string());
    }
}

} // namespace

Nginx::Nginx(const std::filesystem::path& folder, const NginxOptions& options)
    : folder_(std::filesystem::absolute(folder)),
      origin_(options.certificate.empty() ? "http://127.0.0.1:" : "https://localhost:") {
    std::filesystem::create_directories(folder_);
    const publisher::Listener listener = publisher::listenOn("127.0.0.1", 0);
    port_ = listener.port;
    writeText(folder_ / "nginx.conf", configurationFor(port_, options));
    ProcessOptions process;
    process.output = folder_ / "error.log";
    server_ = std::make_unique<Process>(publisher::startNginx(folder_, listener, process));
}

} // namespace ca::kit
