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
#include <map>
#include <mutex>
#include <numeric>
#include <set>
#include <tuple>

namespace ca::publisher {

namespace {

// As far as can be told without the key. The longest and the shortest one, and the steps between,
// are those of the RSA keys that Windows imports: 512 to 16384 bits in steps of 64.
bool canBeSignature(std::string_view text) {
    std::vector<unsigned char> bytes;
    return update::decodeSignature(text, bytes) && bytes.size() >= 64 && bytes.size() <= 2048 &&
           bytes.size() % 8 == 0;
}

class Check {
public:
    explicit Check(const CheckOptions& options)
        : options_(options),
          origin_(isAddress(options.address) ? webOrigin(options.address, options.channel)
                                             : folderOrigin(options.address, options.channel)) {}

    CheckResult run() {
        if (believeManifest()) {
            judgeManifest();
            readFiles();
            findStrangers();
        }
        if (options_.address.starts_with("http://") &&
            !options_.address.starts_with("http://127.")) {
            advise(options_.address,
                   "isn't https: anyone on the way sees what players get and can hold it back");
        }
        mergeAdvice();
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

    // In the launcher's order: both texts, the signature, the manifest, its channel.
    bool believeManifest() {
        std::string text;
        std::string signature;
        std::string error;
        const Arrival manifest = origin_->get(update::manifestName, &text);
        const Arrival signed_ = origin_->get(update::signatureName, &signature);
        keep(manifest);
        keep(signed_);
        if (!manifest.good || !signed_.good) {
            return false;
        }
        signature.erase(signature.find_last_not_of("\t\n\r ") + 1);
        if (options_.publicKey.empty()) {
            advise(update::signatureName, "wasn't verified: name the public key with --key");
            if (!canBeSignature(signature)) {
                problem(update::signatureName,
                        "is no signature that launchers would take with any key");
                return false;
            }
        } else if (!update::verifyManifestSignature(text, signature, options_.publicKey,
                                                    fingerprintOf(options_.publicKey), error)) {
            problem(update::manifestName, "isn't believed by launchers with the key " +
                                              options_.publicKey.string() + ": " + error);
            return false;
        }
        if (!update::parseManifest(text, result_.manifest, error)) {
            problem(update::manifestName, "can't be read by launchers: " + error);
            return false;
        }
        const update::UpdateManifest& m = result_.manifest;
        if (m.channel != options_.channel || m.platform != update::platformName) {
            problem(update::manifestName, "is refused by launchers, which look for the channel " +
                                              options_.channel + " on " + update::platformName +
                                              ": it is of " + m.channel + " on " + m.platform);
        }
        return true;
    }

    void judgeManifest() {
        const update::UpdateManifest& m = result_.manifest;
        if (const std::string refusal = versionRefusal(m.version); !refusal.empty()) {
            advise("version", refusal);
        }
        std::set<std::wstring> names;
        for (const update::ManifestFile& file : m.files) {
            if (const std::string refusal = refusalOf(file.path); !refusal.empty()) {
                problem(file.path, refusal);
            }
            if (!names.insert(foldedPath(file.path)).second) {
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
        const auto add = [](std::uint64_t sum, const update::ManifestFile& file) {
            return sum + file.size;
        };
        Progress progress("checking",
                          std::accumulate(files.begin(), files.end(), std::uint64_t{0}, add));
        std::mutex keeping;
        forEach(files.size(), options_.threads, [&] {
            return [&](std::size_t i) {
                Arrival arrival =
                    origin_->get(std::string(update::filesName) + "/" + files[i].path, nullptr);
                progress.add(arrival.size);
                compare(files[i], arrival);
                const std::lock_guard lock(keeping);
                keep(arrival);
                result_.bytes += arrival.size;
            };
        });
    }

    static void compare(const update::ManifestFile& file, Arrival& arrival) {
        if (arrival.good && arrival.size != file.size) {
            arrival.notes.push_back({true, file.path,
                                     "has " + std::to_string(arrival.size) +
                                         " bytes where the manifest says " +
                                         std::to_string(file.size)});
        } else if (arrival.good && arrival.sha256 != file.sha256) {
            arrival.notes.push_back({true, file.path, "hasn't the digest that the manifest says"});
        }
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

    // The same advice about many files is one line, with the first of them; every problem
    // has a line of its own.
    void mergeAdvice() {
        std::sort(result_.findings.begin(), result_.findings.end(),
                  [](const Finding& a, const Finding& b) {
                      return std::tie(b.isProblem, a.where, a.what) <
                             std::tie(a.isProblem, b.where, b.what);
                  });
        std::map<std::string, std::pair<Finding*, int>> firsts;
        std::vector<Finding> merged;
        merged.reserve(result_.findings.size());
        for (Finding& finding : result_.findings) {
            auto& [first, more] = firsts[finding.what];
            if (!finding.isProblem && first != nullptr) {
                ++more;
                continue;
            }
            merged.push_back(std::move(finding));
            if (!merged.back().isProblem) {
                first = &merged.back(); // which stays there: the room is reserved
            }
        }
        for (const auto& [what, first] : firsts) {
            if (first.second > 0) {
                first.first->where += " and " + std::to_string(first.second) + " more";
            }
        }
        result_.findings = std::move(merged);
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
