// Does what the launcher does, as a process of its own that can be measured from outside:
//   check INSTALLATION URL   a whole check; succeeds if every file is intact
//   download LIST FOLDER     the URLs of a file, one a line, one after the other
#include "net/download.h"
#include "update/key_fingerprint.h"
#include "update/updater.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

namespace ca::update {

// Of a key that is made for the run, so the environment has it.
const std::string_view keyFingerprint = [] {
    const char* value = std::getenv("COLDANCHOR_BENCH_FINGERPRINT");
    return std::string_view(value != nullptr ? value : "");
}();

} // namespace ca::update

namespace {

bool check(const std::string& installation, const std::string& url) {
    ca::update::Updater updater(installation);
    updater.serverUrl = url;
    ca::update::UpdatePlan plan;
    std::string error;
    if (!updater.check("stable", plan, error)) {
        std::cerr << "check: " << error << '\n';
    } else if (!plan.files.empty()) {
        std::cerr << "check: " << plan.files.front().file.path << " differs\n";
    } else {
        return true;
    }
    return false;
}

bool download(const std::string& list, const std::filesystem::path& folder) {
    std::ifstream urls(list);
    std::string error;
    for (std::string url; std::getline(urls, url);) {
        const std::string name = url.substr(url.rfind('/') + 1);
        if (!ca::net::downloadToFile(url, folder / name, {}, error)) {
            std::cerr << url << ": " << error << '\n';
            return false;
        }
    }
    return true;
}

} // namespace

int main(int count, char** arguments) {
    const std::string task = count == 4 ? arguments[1] : "";
    if (task == "check") {
        return check(arguments[2], arguments[3]) ? 0 : 1;
    }
    if (task == "download") {
        return download(arguments[2], arguments[3]) ? 0 : 1;
    }
    std::cerr << "check INSTALLATION URL, or download LIST FOLDER\n";
    return 2;
}
