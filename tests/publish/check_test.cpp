// A channel that is wrong in one way at a time.
#include "publish/studio.h"
#include "publisher/release/manifest_text.h"
#include "shared/nginx.h"

#include <functional>

using namespace ca::test;
using namespace ca::publisher;

namespace {

// A line for each finding of this kind.
std::string findingsOf(const CheckResult& result, bool isProblem) {
    std::string text;
    for (const Finding& finding : result.findings) {
        if (finding.isProblem == isProblem) {
            text += finding.where + " " + finding.what + "\n";
        }
    }
    return text;
}

} // namespace

TEST(Check, FindsWhatIsWrongInAFolder) {
    using Manifest = ca::update::UpdateManifest;
    struct Row {
        const char *what, *file, *bytes;         // a file is written anew, or removed,
        std::function<void(Manifest&)> change{}; // or the manifest is changed and signed
        bool isProblem = true;
    };
    const auto duplicate = [](Manifest& m) {
        (m.files.emplace_back(m.files[3])).path = "DATA/first.dat";
    };
    for (const Row& row : {
             Row{"first.dat: No such file", "files/data/first.dat", nullptr},
             {"has 1 bytes where the manifest says 5", "files/data/first.dat", "x"},
             {"hasn't the digest", "files/data/first.dat", "First"},
             {"manifest.sig: No such file", "manifest.sig", nullptr},
             {"manifest_signature_verify_failed", "manifest.json", "{}"},
             {"manifest_signature_invalid_hex", "manifest.sig", " 00"},
             {"manifest_signature_verify_failed", "manifest.sig", "00"},
             {"stranger isn't in the manifest", "files/data/stranger", "x", {}, false},
             {"manifest_has_no_files", "", "", [](Manifest& m) { m.files.clear(); }},
             {"it is of beta on windows", "", "", [](Manifest& m) { m.channel = "beta"; }},
             {"in the manifest twice", "", "", duplicate},
             {"lower-case digits", "", "", [](Manifest& m) { m.files[0].sha256[0] = 'F'; }},
             {"Save/x lies", "", "", [](Manifest& m) { m.files[0].path = "Save/x"; }},
             {"version \"v1\"", "", "", [](Manifest& m) { m.version = "v1"; }, false},
         }) {
        Studio s;
        s.expectRelease();
        if (row.change) {
            row.change(s.result.manifest);
            const std::string text = manifestText(s.result.manifest);
            writeFile(s.live / "manifest.json", text);
            writeFile(s.live / "manifest.sig", PrivateKey(s.options.privateKey, {}).sign(text));
        } else {
            fs::remove(s.live / row.file);
            row.bytes != nullptr ? void(writeFile(s.live / row.file, row.bytes)) : void();
        }
        const CheckResult result = s.check();
        expectPart(findingsOf(result, row.isProblem), row.what);
        // no key
        for (const CheckResult& each : {result, checkChannel({s.root, "stable", {}, 2})}) {
            EXPECT_EQ(each.good(), !row.isProblem) << row.what;
        }
    }
}

TEST(Check, FindsWhatAServerDoesToResponses) {
    Studio s;
    s.expectRelease();
    struct Row {
        std::string directives;
        bool isProblem;
        const char* what;
        std::size_t findings;
    };
    const std::string fresh = "add_header Cache-Control no-cache;";
    for (const Row& row : {
             Row{"", false, "and 5 more leaves to every cache", 1},
             {fresh, false, "", 0},
             {"expires 1h;", true, "may be answered from a cache for long", 6},
             {fresh + "location ~ first { return 404; }", true, "can't be fetched: http_404", 1},
             {fresh + "location ~ first { return 200 FIRST; }", true, "hasn't the digest", 1},
             {fresh + "rewrite ^/stable/(.*dat)$ /x/$1 redirect; rewrite ^/x/(.*)$ /stable/$1 "
                      "break;",
              false, "is redirected", 1},
             {fresh + "gzip on; gzip_min_length 1; gzip_types *;", false, "the coding gzip", 1},
             {fresh + "location ~ dat$ { add_header Content-Encoding br;" + fresh + "}", true,
              "the coding br, which launchers don't undo", 1},
         }) {
        SCOPED_TRACE(row.directives);
        const ca::kit::Nginx server(s.folder / "nginx", {s.root, 0, row.directives});
        const CheckResult result = s.check(server.url() + "/");
        const std::string findings = findingsOf(result, row.isProblem);
        EXPECT_EQ(result.findings.size(), row.findings) << findings;
        expectPart(findings, row.what);
        EXPECT_EQ(result.good(), !row.isProblem);
    }
}
