#include "program/scenario.h"
#include "update/updater.h"

#include <gtest/gtest.h>

using namespace ca::test;

// Any one byte of the manifest or of the signature changed on its way.
TEST(Tampering, IsRefusedAtEveryByte) {
    Scenario s;
    s.remember();
    // Serves `text` under this name and has it checked; gives the token, or nothing if it was believed.
    const auto verdict = [&s](const char* name, const std::string& text) {
        writeFile(s.channel / name, text);
        ca::update::Updater updater(s.installation);
        updater.serverUrl = s.server->url();
        ca::update::UpdatePlan plan;
        std::string error;
        const bool believed = updater.check("stable", plan, error);
        EXPECT_EQ(plan.manifest.files.size(), believed ? 3U : 0U);
        return believed ? "" : error;
    };
    const std::string signature = readFile(s.channel / "manifest.sig").substr(0, 768);
    for (const auto& [name, text] :
         {std::pair("manifest.json", readFile(s.channel / "manifest.json")), std::pair("manifest.sig", signature)}) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            std::string changed = text;
            changed[at] ^= 1; // another digit or none, and never the same one in a capital
            EXPECT_NE(verdict(name, changed), "") << name << " at byte " << at;
        }
        EXPECT_EQ(verdict(name, text), "");
    }
    std::string capitals = signature;
    for (char& digit : capitals)
        digit = static_cast<char>(std::toupper(digit));
    EXPECT_EQ(verdict("manifest.sig", capitals), "");
    EXPECT_EQ(verdict("manifest.sig", signature + " \t\r\n"), "");
    EXPECT_EQ(verdict("manifest.sig", " " + signature), "manifest_signature_invalid_hex");
    EXPECT_EQ(s.changes(), Paths());
}
