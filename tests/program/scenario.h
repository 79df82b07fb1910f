// One player's machine and one update channel: an installation of 1.4.1 with the real
// launcher, and 1.4.2 on a real web server. Everything lies in folders of its own, which
// vanish with the scenario.
#pragma once

#include "job/shared.h"
#include "program/display.h"
#include "shared/channel.h"
#include "shared/nginx.h"
#include "support/programs.h"
#include "unit/temporary_folder.h"

#include <gtest/gtest.h>

namespace ca::test {

namespace fs = std::filesystem;
using enum job::JobState;

enum Road { start, refresh, repair }; // the ways to a job

// A record with these fields, and the rest as at first.
job::SharedSnapshot look(job::JobState state, const std::string& status, const std::string& detail,
                         const std::string& latest = "1.4.2");
job::SharedSnapshot current(); // a check has found nothing to do
job::SharedSnapshot updated(); // an update has come to its end

struct Scenario {
    // The channel offers data/first.dat, which differs in the installation, data/intact.dat, which
    // doesn't, and maps/Größe XL/Nord mole.pak, which the installation lacks.
    Scenario();

    void makeOld() const;     // puts the installation into that state
    void makeCurrent() const; // makes it equal to what the channel offers
    void publish() const { kit::makeLive(tree, folder / "channel", release, privateKey); }
    // By a new server in place of the old one; with a certificate by https.
    void serve(const std::string& directives = {}, const fs::path& certificate = {});

    void holdServer(bool held) const; // no byte and no answer while it is held
    void begin(Road road);            // a start returns with the first frame

    // Each waits for what it expects, and fails the test if that doesn't come.
    // the whole window; the bar may stand anywhere while updating
    void see(const job::SharedSnapshot& look) const;
    void close(); // by the window: the launcher ends at once
    // by a click on PLAY or a key: the launcher ends, one game goes on
    void play(const std::string& key = {});

    void expectCurrent() const; // every file that the channel offers, and the marker

    void remember() { before = contents(); } // as a start does
    // What differs since then in the player's folders: files, also where only their times do, and
    // empty folders with a slash behind. Names in the work folder are without their digits.
    Paths changes() const { return differing(before, contents()); }
    Paths requests() const; // what the server was asked for, in order

    TemporaryFolder folder;
    fs::path player = folder / "player";
    fs::path installation = player / "game";
    fs::path data = installation / "data";
    fs::path tree = folder / "tree";
    fs::path channel = folder / "channel/stable/windows";
    fs::path privateKey = testedBuild() / "dev_key/update_private_key.pem";
    kit::Release release;
    std::unique_ptr<kit::Nginx> server;
    std::vector<std::string> wrapper;     // what the launcher is started through
    std::vector<std::string> environment; // of the launcher
    std::unique_ptr<kit::Process> launcher;
    Contents before;

private:
    void expectEnd() const;
    Contents contents() const;
};

} // namespace ca::test
