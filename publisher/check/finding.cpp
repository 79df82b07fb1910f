#include "publisher/check/finding.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace ca::publisher {

namespace {

bool comesFirst(const Finding& a, const Finding& b) {
    return std::tie(b.isProblem, a.where, a.what) < std::tie(a.isProblem, b.where, b.what);
}

} // namespace

std::vector<Finding> grouped(std::vector<Finding> findings) {
    std::sort(findings.begin(), findings.end(), comesFirst);
    std::map<std::string, std::size_t> places; // of each advice
    for (const Finding& finding : findings) {
        if (!finding.isProblem) {
            ++places[finding.what];
        }
    }
    std::vector<Finding> result;
    for (Finding& finding : findings) {
        if (!finding.isProblem) {
            const std::size_t count = std::exchange(places[finding.what], 0);
            if (count == 0) {
                continue; // its first place has stood for this one
            }
            if (count > 1) {
                finding.where += " and " + std::to_string(count - 1) + " more";
            }
        }
        result.push_back(std::move(finding));
    }
    return result;
}

} // namespace ca::publisher
