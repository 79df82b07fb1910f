// A channel that is wrong in one way at a time.
#include "demo/nginx.h"
#include "publish/channel_folder.h"
#include "publish/manifest_text.h"
#include "publish/serve.h"
#include "publish/studio.h"

#include <functional>

using namespace ca::test;
namespace publish = ca::publish;

namespace {

// Whether one finding of this kind speaks so.
bool says(const publish::CheckResult& result, bool isProblem, const std::string& text) {
    return std::any_of(result.findings.begin(), result.findings.end(), [&](const publish::Finding& finding) {
        return finding.isProblem == isProblem && (finding.where + " " + finding.what).find(text) != std::string::npos;
    });
}

std::string shownFindings(const publish::CheckResult& result) {
    std::string text;
    for (const publish::Finding& finding : result.findings)
        text += (finding.isProblem ? "problem " : "advice ") + finding.where + " " + finding.what + "\n";
    return text;
}

} // namespace

TEST(Check, FindsWhatIsWrongInAFolder) {
    // Changes the channel; a manifest that is changed before it is signed keeps the signature good.
    const auto resigned = [](const Studio& s, const std::function<void(ca::update::UpdateManifest&)>& change) {
        ca::update::UpdateManifest manifest = s.result.manifest;
        change(manifest);
        const std::string text = publish::manifestText(manifest);
        writeFile(s.live / "manifest.json", text);
        writeFile(s.live / "manifest.sig", publish::PrivateKey(s.order.privateKey, {}).sign(text));
    };
    struct Row {
        const char* what;
        std::function<void(const Studio&)> spoil;
        bool isProblem = true;
    };
    for (const Row& row : {
             Row{"first.dat: No such file", [](const Studio& s) { fs::remove(s.live / "files/data/first.dat"); }},
             Row{"has 1 bytes where the manifest says 5",
                 [](const Studio& s) { writeFile(s.live / "files/data/first.dat", "x"); }},
             Row{"hasn't the digest", [](const Studio& s) { writeFile(s.live / "files/data/first.dat", "First"); }},
             Row{"manifest.sig: No such file", [](const Studio& s) { fs::remove(s.live / "manifest.sig"); }},
             Row{"manifest_signature_verify_failed",
                 [](const Studio& s) { writeFile(s.live / "manifest.json", "{}"); }},
             Row{"manifest_signature_invalid_hex", [](const Studio& s) { writeFile(s.live / "manifest.sig", "x"); }},
             Row{"manifest_has_no_files", [&](const Studio& s) { resigned(s, [](auto& m) { m.files.clear(); }); }},
             Row{"it is of beta on windows",
                 [&](const Studio& s) { resigned(s, [](auto& m) { m.channel = "beta"; }); }},
             Row{"in the manifest twice",
                 [&](const Studio& s) {
                     resigned(s, [](auto& m) {
                         m.files.push_back(m.files[3]);
                         m.files[4].path = "DATA/first.dat";
                     });
                 }},
             Row{"lower-case digits",
                 [&](const Studio& s) { resigned(s, [](auto& m) { m.files[0].sha256[0] = 'F'; }); }},
             Row{"Save/x lies", [&](const Studio& s) { resigned(s, [](auto& m) { m.files[0].path = "Save/x"; }); }},
             Row{"version \"v1\"", [&](const Studio& s) { resigned(s, [](auto& m) { m.version = "v1"; }); }, false},
             Row{"stranger isn't in the manifest",
                 [](const Studio& s) { writeFile(s.live / "files/data/stranger", "x"); }, false},
         }) {
        Studio studio;
        ASSERT_EQ(studio.release(), "released");
        row.spoil(studio);
        const publish::CheckResult result = studio.check();
        EXPECT_TRUE(says(result, row.isProblem, row.what)) << row.what << "\n" << shownFindings(result);
        EXPECT_EQ(result.good(), !row.isProblem);
    }
}

TEST(Check, FindsWhatAServerDoesToAnswers) {
    Studio studio;
    ASSERT_EQ(studio.release(), "released");
    struct Row {
        const char* directives;
        bool isProblem;
        const char* what;
        int findings;
    };
    for (const Row& row : {
             Row{"", false, "and 5 more leaves to every cache", 1},
             Row{"add_header Cache-Control no-cache;", false, "", 0},
             Row{"expires 1h;", true, "may be answered from a cache for long", 6},
             Row{"add_header Cache-Control no-cache; location ~ first { return 404; }", true, "http_404", 1},
             Row{"add_header Cache-Control no-cache; location ~ first { return 200 FIRST; }", true, "hasn't the digest",
                 1},
             Row{"add_header Cache-Control no-cache; rewrite ^/stable/(.*dat)$ /x/$1 redirect; "
                 "rewrite ^/x/(.*)$ /stable/$1 break;",
                 false, "is redirected", 1},
             Row{"add_header Cache-Control no-cache; gzip on; gzip_min_length 1; gzip_types *;", false,
                 "the coding gzip", 1},
             Row{"add_header Cache-Control no-cache; location ~ dat$ { add_header Content-Encoding br; "
                 "add_header Cache-Control no-cache; }",
                 true, "the coding br, which launchers don't undo", 1},
             Row{"add_header Cache-Control no-cache; location ~ sig$ { return 301 ftp://x/; }", true,
                 "can't be fetched", 1},
         }) {
        SCOPED_TRACE(row.directives);
        const ca::demo::Nginx server(studio.folder / "nginx", {studio.root, 0, row.directives});
        const publish::CheckResult result = studio.check(server.url() + "/");
        EXPECT_EQ(result.findings.size(), row.findings) << shownFindings(result);
        EXPECT_TRUE(row.findings == 0 || says(result, row.isProblem, row.what)) << shownFindings(result);
        EXPECT_EQ(result.good(), !row.isProblem);
    }
    const publish::CheckResult none = studio.check("http://127.0.0.1:1");
    EXPECT_TRUE(says(none, true, "winhttp_send_failed_12029"));
}
