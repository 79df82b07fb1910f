#include "bench/data.h"
#include "bench/measure.h"
#include "bench/rows.h"
#include "shared/channel.h"
#include "shared/nginx.h"
#include "update/digest.h"

namespace ca::bench {

namespace fs = std::filesystem;

namespace {

// Trees as installations, each offered by a signed channel of its own.
class Channels {
public:
    explicit Channels(const Setting& setting)
        : worker_(setting.worker),
          scratch_(setting.scratch),
          server_(scratch_ / "nginx", {scratch_ / "channels", 0, ""}) {
        kit::makeKeyPair(scratch_);
        fingerprint_ = update::sha256File(scratch_ / publicKey);
    }

    // Reads every file, so that the measured programs find them all in memory.
    void offer(const Tree& tree) {
        const fs::path key = tree.folder / "data" / publicKey;
        fs::remove(key);
        kit::makeLive(tree.folder, scratch_ / "channels" / tree.folder.filename(),
                      {"1.4.2", "1.3.0", "Notes"}, scratch_ / "update_private_key.pem");
        fs::create_directories(key.parent_path());
        fs::copy_file(scratch_ / publicKey, key);
    }

    Command check(const Tree& tree) const {
        return {worker_, "check", ".", server_.url() + "/" + tree.folder.filename().string()};
    }
    kit::ProcessOptions trustingIn(const Tree& tree) const {
        kit::ProcessOptions options;
        options.workingFolder = tree.folder;
        options.environment = {"COLDANCHOR_BENCH_FINGERPRINT=" + fingerprint_};
        return options;
    }

private:
    static constexpr const char* publicKey = "update_public_key.pem";

    fs::path worker_;
    fs::path scratch_;
    kit::Nginx server_;
    std::string fingerprint_;
};

// A program that prints the digests of the tree's files. All programs run in the tree, so that none
// of them has longer paths to walk.
Command digestsOf(Command program, const Tree& tree) {
    program.insert(program.end(), tree.names.begin(), tree.names.end());
    return program;
}

kit::ProcessOptions silentIn(const Tree& tree) {
    kit::ProcessOptions options;
    options.workingFolder = tree.folder;
    options.output = "/dev/null";
    return options;
}

const Command openssl{"openssl", "dgst", "-sha256"};

Row speedRow(Channels& channels, const Tree& tree, int rounds, double limit) {
    channels.offer(tree);
    const std::vector<double> seconds = alternate(
        {[&] { return secondsOfProgram(channels.check(tree), channels.trustingIn(tree)); },
         [&] { return secondsOfProgram(digestsOf(openssl, tree), silentIn(tree)); },
         [&] { return secondsOfProgram(digestsOf({"sha256sum"}, tree), silentIn(tree)); }},
        rounds);
    return {.work = "check " + std::to_string(tree.names.size()) + " files of " +
                    sizeText(tree.size) + ", warm",
            .ours = timeCell("", seconds[0]),
            .beside = timeCell("openssl dgst", seconds[1]),
            .also = timeCell("sha256sum", seconds[2]),
            .figure = seconds[1] / seconds[0],
            .bar = Bar::AtLeast,
            .limit = limit};
}

Row memoryRow(const Setting& setting, Channels& channels) {
    const Tree large = makeSparseFile(setting.scratch / "large", setting.sizes.sparseFile);
    const Tree little = makeSparseFile(setting.scratch / "little", 4096);
    channels.offer(large);
    channels.offer(little);
    const std::vector<double> peaks = alternate(
        {[&] { return peakOfProgram(channels.check(large), channels.trustingIn(large)); },
         [&] { return peakOfProgram(channels.check(little), channels.trustingIn(little)); },
         [&] { return peakOfProgram(digestsOf(openssl, large), silentIn(large)); }},
        3);
    return {.work = "peak memory, check of one file of " + sizeText(large.size),
            .ours = memoryCell("", peaks[0]),
            .beside = memoryCell("ours, " + sizeText(little.size), peaks[1]),
            .also = memoryCell("openssl dgst", peaks[2]),
            .figure = peaks[0] - peaks[1],
            .unit = " MiB more",
            .bar = Bar::AtMost,
            .limit = 1};
}

} // namespace

void addCheckRows(const Setting& setting, std::vector<Row>& rows) {
    Channels channels(setting);
    const Tree bulk = makeTree(setting.data, setting.sizes.bulkFiles, 10 << 20);
    const Tree many = makeTree(setting.data, setting.sizes.smallFiles, 4 << 10);
    rows.push_back(speedRow(channels, bulk, setting.rounds, 0.95));
    rows.push_back(speedRow(channels, many, setting.shortRounds, 1));
    rows.push_back(memoryRow(setting, channels));
}

} // namespace ca::bench
