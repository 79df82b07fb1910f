#include "bench/data.h"
#include "bench/measure.h"
#include "bench/rows.h"
#include "shared/nginx.h"

#include <fstream>

namespace ca::bench {

namespace fs = std::filesystem;

namespace {

// A tree's URLs, and folders for what they give.
class Job {
public:
    Job(const Setting& setting, const kit::Nginx& server, const Tree& tree)
        : worker_(setting.worker),
          place_(setting.scratch / tree.folder.filename()),
          single_(tree.names.size() == 1) {
        fs::create_directories(place_);
        const std::string base = server.url() + "/" + tree.folder.filename().string() + "/";
        firstUrl_ = base + tree.names.front();
        std::ofstream urls(list());
        for (const std::string& name : tree.names) {
            urls << base << name << '\n';
        }
    }

    fs::path list() const { return place_ / "urls.txt"; }
    const std::string& firstUrl() const { return firstUrl_; }

    // A new folder in place of the last. Many small files stay all the same: for a while after
    // files have been dropped, a file system can be several times slower at making others.
    fs::path newTarget() {
        if (single_) {
            fs::remove_all(target());
        }
        ++targets_;
        fs::create_directories(target());
        return target();
    }

    Command ours() { return {worker_, "download", list(), newTarget()}; }
    Command curl() { return {"curl", "-s", "-o", newTarget() / "file", firstUrl()}; }
    Command wget() {
        return {"wget", "-q", "--no-http-keep-alive", "-P", newTarget(), "-i", list()};
    }

private:
    fs::path target() const { return place_ / std::to_string(targets_); }

    fs::path worker_;
    fs::path place_;
    std::string firstUrl_;
    bool single_;
    int targets_ = 0;
};

Row largeRow(const Setting& setting, const kit::Nginx& server, const Tree& tree) {
    Job job(setting, server, tree);
    const std::vector<double> seconds =
        alternate({[&] { return secondsOfProgram(job.ours(), {}); },
                   [&] { return secondsOfProgram(job.curl(), {}); }},
                  setting.rounds);
    return {.work = "download " + sizeText(tree.size),
            .ours = timeCell("", seconds[0]),
            .beside = timeCell("curl", seconds[1]),
            .figure = seconds[1] / seconds[0],
            .bar = Bar::AtLeast,
            .limit = 0.9};
}

Row smallRow(const Setting& setting, const kit::Nginx& server) {
    const Tree tree = makeTree(setting.data, setting.sizes.downloads, 8 << 10);
    Job job(setting, server, tree);
    const std::vector<double> seconds =
        alternate({[&] { return secondsOfProgram(job.ours(), {}); },
                   [&] { return secondsOfProgram(job.wget(), {}); }},
                  setting.shortRounds);
    return {.work = "download " + std::to_string(tree.names.size()) + " files of " +
                    sizeText(tree.size),
            .ours = timeCell("", seconds[0]),
            .beside = timeCell("wget", seconds[1]),
            .figure = seconds[1] / seconds[0],
            .bar = Bar::AtLeast,
            .limit = 1};
}

Row memoryRow(const Setting& setting, const kit::Nginx& server, const Tree& large) {
    const Tree little = makeTree(setting.data, 1, 1 << 10);
    Job job(setting, server, large);
    Job littleJob(setting, server, little);
    const std::vector<double> peaks =
        alternate({[&] { return peakOfProgram(job.ours(), {}); },
                   [&] { return peakOfProgram(littleJob.ours(), {}); },
                   [&] { return peakOfProgram(job.curl(), {}); }},
                  3);
    return {.work = "peak memory, download of " + sizeText(large.size),
            .ours = memoryCell("", peaks[0]),
            .beside = memoryCell("ours, " + sizeText(little.size), peaks[1]),
            .also = memoryCell("curl", peaks[2]),
            .figure = peaks[0] - peaks[1],
            .unit = " MiB more",
            .bar = Bar::AtMost,
            .limit = 4};
}

} // namespace

void addDownloadRows(const Setting& setting, std::vector<Row>& rows) {
    const kit::Nginx server(setting.scratch / "nginx", {setting.data, 0, ""});
    const Tree large = makeTree(setting.data, 1, setting.sizes.download);
    rows.push_back(largeRow(setting, server, large));
    rows.push_back(smallRow(setting, server));
    rows.push_back(memoryRow(setting, server, large));
}

} // namespace ca::bench
