// A publisher's desk: a tree with a game, a key pair and a channel root, in a folder that vanishes.
#pragma once

#include "demo/process.h"
#include "publish/check.h"
#include "publish/failure.h"
#include "publish/release.h"
#include "support/programs.h"
#include "unit/temporary_folder.h"

#include <gtest/gtest.h>

namespace ca::test {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

// One pair for the whole program, since making one takes long; made anew only to have another.
const fs::path& keyFolder();

struct Studio {
    Studio() {
        order.tree = tree;
        order.root = root;
        order.privateKey = keyFolder() / publish::privateKeyName;
        order.version = "1.4.2";
        put("ColdAnchor.exe", "game");
        put("ColdAnchorLauncher.exe", "launcher");
        put("ColdAnchorUpdateHelper.exe", "helper");
        put("data/first.dat", "first");
    }

    void put(const std::string& path, const std::string& bytes) const {
        if (bytes != "/")
            writeFile(tree / path, bytes);
        else
            fs::create_directories(tree / path);
    }

    // "released", or why not; the warnings stay in `warnings`.
    std::string release() {
        warnings.clear();
        const auto none = [](const fs::path&) -> std::string { throw publish::Failure("asked for a passphrase"); };
        try {
            result = publish::makeRelease(order, none, [this](const std::string& text) { warnings.push_back(text); });
            return "released";
        } catch (const publish::Failure& failure) {
            return failure.what();
        }
    }

    publish::CheckResult check(const std::string& address = {}) const {
        return publish::checkChannel(
            {address.empty() ? root.string() : address, order.channel, keyFolder() / publish::publicKeyName, 2});
    }

    // Ends with the program; gives its exit status, and what it printed in `output`.
    int run(Lines words, const Lines& before = {}, const Lines& environment = {}) {
        words.insert(words.begin(), builtProgram("coldanchor-publish"));
        words.insert(words.begin(), before.begin(), before.end());
        fs::remove(folder / "output");
        demo::ProcessOptions options{folder.path(), folder / "output", environment, -1};
        options.environment.push_back("ASAN_OPTIONS=detect_leaks=0"); // which can't be done under strace
        const int status = demo::Process(words, options).wait(std::chrono::seconds(60)).value_or(-1);
        output = readFile(folder / "output");
        return status;
    }

    Lines releaseWords(const std::string& version) const {
        return {"release", tree, "--version", version, "--key", order.privateKey, "--to", root, "--jobs", "1"};
    }

    TemporaryFolder folder{"/dev/shm"}; // in memory: each release brings the whole disk up to date
    fs::path tree = folder / "game", root = folder / "channel", live = root / "stable/windows";
    publish::ReleaseOrder order;
    publish::ReleaseResult result;
    Lines warnings;
    std::string output;
};

} // namespace ca::test
