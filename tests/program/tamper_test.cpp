#include "program/scenario.h"
#include "update/updater.h"

using namespace ca::test;

// Any one byte of the manifest or of the signature changed on its way.
TEST(Tampering, IsRefusedAtEveryByte) {
    Scenario s;
    s.remember();
    // Serves `text` under this name and has it checked; gives the token, or
    // nothing if it was believed.
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
    const std::string manifest = readFile(s.channel / "manifest.json");
    const std::string signature = readFile(s.channel / "manifest.sig").substr(0, 768);
    for (const auto& [name, text] :
         {std::pair("manifest.json", manifest), std::pair("manifest.sig", signature)}) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            std::string changed = text;
            changed[at] ^= 1; // another digit or none, and never the same one in a capital
            EXPECT_NE(verdict(name, changed), "") << name << " at byte " << at;
        }
        EXPECT_EQ(verdict(name, text), "");
    }
    std::string capitals = signature;
    std::transform(capitals.begin(), capitals.end(), capitals.begin(),
                   [](char c) { return std::toupper(c); });
    const char* const noHex = "manifest_signature_invalid_hex";
    const char* const wrong = "manifest_signature_verify_failed";
    using Row = std::pair<std::string, const char*>;
    for (const auto& [text, result] :
         {Row(capitals, ""), Row(signature + " \t\r\n", ""), Row(" " + signature, noHex),
          Row(signature.substr(1), noHex), Row("", noHex), Row("0x" + signature, noHex),
          Row(std::string(768, 'g'), noHex), Row(signature.substr(2), wrong),
          Row(signature + "00", wrong), Row("00", wrong), Row(std::string(768, 'f'), wrong)}) {
        EXPECT_EQ(verdict("manifest.sig", text), result) << text;
    }
    writeFile(s.channel / "manifest.sig", signature);
    for (const std::string& text : {manifest + "\n", manifest.substr(1)}) {
        EXPECT_EQ(verdict("manifest.json", text), wrong);
    }
    EXPECT_EQ(s.changes(), Paths());
}
