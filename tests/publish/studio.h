// A publisher's desk: a tree with a game, a key pair and a channel root, in a folder that vanishes.
#pragma once

#include "publisher/check/check.h"
#include "publisher/release/release.h"
#include "publisher/text/failure.h"
#include "shared/process.h"
#include "support/programs.h"
#include "unit/temporary_folder.h"

#include <gtest/gtest.h>

namespace ca::test {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

inline void expectPart(const std::string& text, const std::string& part) {
    EXPECT_NE(text.find(part), text.npos) << part << "\n" << text;
}

// One pair for the whole program, since making one takes long; made anew only to have another.
const fs::path& keyFolder();

struct Studio {
    Studio() {
        options.tree = tree;
        options.root = root;
        options.privateKey = keyFolder() / publisher::privateKeyName;
        options.version = "1.4.2";
        put("ColdAnchor.exe", "game");
        put("ColdAnchorLauncher.exe", "launcher");
        put("ColdAnchorUpdateHelper.exe", "helper");
        put("data/first.dat", "first");
    }

    void put(const std::string& path, const std::string& bytes) const {
        writeFile(tree / path, bytes);
    }

    // "released", or why not; the warnings stay in `warnings`, a line each.
    std::string release() {
        warnings.clear();
        const auto none = [](const fs::path&) -> std::string {
            throw publisher::Failure("asked for a passphrase");
        };
        try {
            result = publisher::makeRelease(
                options, none, [this](const std::string& text) { warnings += text + "\n"; });
            return "released";
        } catch (const publisher::Failure& failure) {
            return failure.what();
        }
    }

    void expectRelease() { EXPECT_EQ(release(), "released"); }
    void expectRefusal(const std::string& part) { expectPart(release(), part); }

    publisher::CheckResult check(const std::string& address = {}) const {
        return publisher::checkChannel({address.empty() ? root.string() : address, options.channel,
                                        keyFolder() / publisher::publicKeyName, 2});
    }

    // Ends with the program; gives its exit status, and what it printed in `output`.
    int run(Lines words, const Lines& before = {}) {
        words.insert(words.begin(), builtProgram("coldanchor-publish"));
        words.insert(words.begin(), before.begin(), before.end());
        fs::remove(folder / "output");
        const Lines environment{"ASAN_OPTIONS=detect_leaks=0"}; // which can't be done under strace
        const kit::ProcessOptions process{folder.path(), folder / "output", environment, -1};
        const int status = kit::Process(words, process).wait(std::chrono::seconds(60)).value_or(-1);
        output = readFile(folder / "output");
        return status;
    }

    TemporaryFolder folder{"/dev/shm"}; // in memory: each release brings the whole disk up to date
    fs::path tree = folder / "game", root = folder / "channel", live = root / "stable/windows";
    publisher::ReleaseOptions options;
    publisher::ReleaseResult result;
    std::string warnings, output;
};

} // namespace ca::test
