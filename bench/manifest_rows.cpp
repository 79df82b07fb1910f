#include "bench/data.h"
#include "bench/measure.h"
#include "bench/rows.h"
#include "update/manifest.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace ca::bench {

namespace {

// Without the release of what was read, which both put off.
double parseSeconds(const std::string& text) {
    update::UpdateManifest manifest;
    std::string error;
    bool good = false;
    const double seconds = secondsOf([&] { good = update::parseManifest(text, manifest, error); });
    if (!good) {
        throw std::runtime_error("parseManifest: " + error);
    }
    return seconds;
}

double jsonSeconds(const std::string& text) {
    nlohmann::json document;
    return secondsOf([&] { document = nlohmann::json::parse(text); });
}

std::string entries(int count) {
    return "parse " + std::to_string(count) + " entries";
}

Row speedRow(const Setting& setting, const std::string& work, const ManifestShape& shape, Bar bar) {
    const std::string text = makeManifest(shape);
    const std::vector<double> seconds =
        alternate({[&] { return parseSeconds(text); }, [&] { return jsonSeconds(text); }},
                  setting.shortRounds);
    return {.work = work,
            .ours = timeCell("", seconds[0]),
            .beside = timeCell("nlohmann", seconds[1]),
            .figure = seconds[1] / seconds[0],
            .bar = bar,
            .limit = 2};
}

Row growthRow(const Setting& setting, const ManifestShape& shape) {
    const std::string single = makeManifest(shape);
    const std::string twice =
        makeManifest({2 * shape.entries, shape.indent, shape.optionalKeys, shape.notes});
    const std::vector<double> seconds =
        alternate({[&] { return parseSeconds(twice); }, [&] { return parseSeconds(single); }},
                  setting.shortRounds);
    return {.work = entries(2 * shape.entries),
            .ours = timeCell("", seconds[0]),
            .beside = timeCell("ours, " + std::to_string(shape.entries), seconds[1]),
            .figure = seconds[0] / seconds[1],
            .bar = Bar::AtMost,
            .limit = 2.2};
}

} // namespace

void addManifestRows(const Setting& setting, std::vector<Row>& rows) {
    const int count = setting.sizes.entries;
    const ManifestShape usual{count, 1, true, makeNotes(2000)};
    rows.push_back(speedRow(setting, entries(count) + ", indent 1", usual, Bar::AtLeast));
    rows.push_back(growthRow(setting, usual));
    rows.push_back(
        speedRow(setting, entries(count) + ", compact", {count, -1, true, usual.notes}, Bar::None));
    rows.push_back(
        speedRow(setting, entries(count) + ", bare header", {count, 1, false, ""}, Bar::None));
    std::string escapes(5 << 20, '"'); // two bytes each in the manifest
    rows.push_back(speedRow(setting,
                            "parse " + sizeText(2 * escapes.size()) + " of escapes in the notes",
                            {1, 1, true, escapes}, Bar::None));
}

} // namespace ca::bench
