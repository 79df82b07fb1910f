#include "publisher/check/check.h"

#include "publisher/check/origin.h"
#include "publisher/files/parallel.h"
#include "publisher/keys/keys.h"
#include "publisher/rules/name_rules.h"
#include "publisher/rules/version_rules.h"
#include "publisher/text/progress.h"
#include "update/channel.h"
#include "update/signature.h"

#include <algorithm>
#include <mutex>
#include <numeric>
#include <set>

namespace ca::publisher {

namespace {

// As far as can be told without the key. The longest and the shortest one, and the steps between,
// are those of the RSA keys that Windows imports: 512 to 16384 bits in steps of 64.
bool canBeSignature(std::string_view text) {
    std::vector<unsigned char> bytes;
    return update::decodeSignature(text, bytes) && bytes.size() >= 64 && bytes.size() <= 2048 &&
           bytes.size() % 8 == 0;
}

std::uint64_t bytesOf(const std::vector<update::ManifestFile>& files) {
    const auto add = [](std::uint64_t sum, const update::ManifestFile& file) {
        return sum + file.size;
    };
    return std::accumulate(files.begin(), files.end(), std::uint64_t{0}, add);
}

void compare(const update::ManifestFile& file, Arrival& arrival) {
    if (!arrival.good) {
        return; // which it says itself
    }
    if (arrival.size != file.size) {
        arrival.notes.push_back({true, file.path,
                                 "has " + std::to_string(arrival.size) +
                                     " bytes where the manifest says " +
                                     std::to_string(file.size)});
    } else if (arrival.sha256 != file.sha256) {
        arrival.notes.push_back({true, file.path, "hasn't the digest that the manifest says"});
    }
}

// One run of a check. Each step adds what it finds to the result.
class Check {
public:
    explicit Check(const CheckOptions& options)
        : options_(options),
          origin_(isAddress(options.address) ? webOrigin(options.address, options.channel)
                                             : folderOrigin(options.address, options.channel)) {}

    CheckResult run() {
        // A manifest that launchers don't believe says nothing about the files.
        if (believeManifest()) {
            judgeChannel();
            judgeVersion();
            judgePaths();
            readFiles();
            findStrangers();
        }
        judgeTransport();
        result_.findings = grouped(std::move(result_.findings));
        return std::move(result_);
    }

private:
    void problem(const std::string& where, const std::string& what) {
        result_.findings.push_back({true, where, what});
    }
    void advise(const std::string& where, const std::string& what) {
        result_.findings.push_back({false, where, what});
    }
    void keep(const Arrival& arrival) {
        result_.findings.insert(result_.findings.end(), arrival.notes.begin(), arrival.notes.end());
    }

    // In the launcher's order: both texts, the signature, the manifest.
    bool believeManifest() {
        std::string text;
        std::string signature;
        const Arrival manifestArrival = origin_->manifest(text);
        const Arrival signatureArrival = origin_->signature(signature);
        keep(manifestArrival);
        keep(signatureArrival);
        return manifestArrival.good && signatureArrival.good &&
               believeSignature(text, update::trimSignature(signature)) && readManifest(text);
    }

    bool believeSignature(std::string_view text, std::string_view signature) {
        if (options_.publicKey.empty()) {
            advise(update::signatureName, "wasn't verified: name the public key with --key");
            if (canBeSignature(signature)) {
                return true;
            }
            problem(update::signatureName,
                    "is no signature that launchers would take with any key");
            return false;
        }
        std::string error;
        if (update::verifyManifestSignature(text, signature, options_.publicKey,
                                            fingerprintOf(options_.publicKey), error)) {
            return true;
        }
        problem(update::manifestName, "isn't believed by launchers with the key " +
                                          options_.publicKey.string() + ": " + error);
        return false;
    }

    bool readManifest(std::string_view text) {
        std::string error;
        if (update::parseManifest(text, result_.manifest, error)) {
            return true;
        }
        problem(update::manifestName, "can't be read by launchers: " + error);
        return false;
    }

    void judgeChannel() {
        const update::UpdateManifest& m = result_.manifest;
        if (m.channel != options_.channel || m.platform != update::platformName) {
            problem(update::manifestName, "is refused by launchers, which look for the channel " +
                                              options_.channel + " on " + update::platformName +
                                              ": it is of " + m.channel + " on " + m.platform);
        }
    }

    void judgeVersion() {
        const std::string refusal = versionRefusal(result_.manifest.version);
        if (!refusal.empty()) {
            advise("version", refusal);
        }
    }

    void judgePaths() {
        std::set<std::wstring> names;
        for (const update::ManifestFile& file : result_.manifest.files) {
            const std::string refusal = refusalOf(file.path);
            if (!refusal.empty()) {
                problem(file.path, refusal);
            }
            const bool isNew = names.insert(foldedPath(file.path)).second;
            if (!isNew) {
                problem(file.path, "stands in the manifest twice, as far as Windows is concerned");
            }
            if (file.sha256.find_first_not_of("0123456789abcdef") != std::string::npos) {
                problem(file.path,
                        "has a digest with others than lower-case digits, which matches no file");
            }
        }
    }

    void readFiles() {
        const std::vector<update::ManifestFile>& files = result_.manifest.files;
        Progress progress("checking", bytesOf(files));
        std::mutex keeping;
        const auto read = [&](std::size_t i) {
            Arrival arrival = origin_->file(files[i].path);
            progress.add(arrival.size);
            compare(files[i], arrival);
            const std::lock_guard lock(keeping);
            keep(arrival);
            result_.bytes += arrival.size;
        };
        forEach(files.size(), options_.threads, [&] { return read; });
    }

    void findStrangers() {
        std::vector<std::string> known;
        for (const update::ManifestFile& file : result_.manifest.files) {
            known.push_back(file.path);
        }
        std::sort(known.begin(), known.end());
        for (const std::string& path : origin_->strangers(known)) {
            advise(path, "isn't in the manifest: no launcher asks for it");
        }
    }

    void judgeTransport() {
        const std::string& address = options_.address;
        const bool isLocal = address.starts_with("http://127.");
        if (address.starts_with("http://") && !isLocal) {
            advise(address,
                   "isn't https: anyone on the way sees what players get and can hold it back");
        }
    }

    const CheckOptions& options_;
    std::unique_ptr<Origin> origin_;
    CheckResult result_;
};

} // namespace

bool CheckResult::good() const {
    return std::none_of(findings.begin(), findings.end(),
                        [](const Finding& finding) { return finding.isProblem; });
}

CheckResult checkChannel(const CheckOptions& options) {
    return Check(options).run();
}

} // namespace ca::publisher
