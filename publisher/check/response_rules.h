// What an answer's head promises, and whether launchers and caches take it as the publisher
// means it. Pure; any thread.
#pragma once

#include "publisher/check/finding.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ca::publisher {

// What was asked for, and what came.
struct AnswerHead {
    std::string url;      // as asked for
    std::string finalUrl; // behind all redirects
    std::string fields;   // the final answer's head: a status line and one line a field, with CR LF
    bool cut = false;     // fewer bytes came than it announced
};

// The value of a field, blanks cut off; empty without one. Several of one name are joined by ", ".
std::string fieldValue(std::string_view fields, std::string_view name);

// Every file of a channel keeps its address from release to release, so nothing of it may be
// answered from a cache without asking the server, and nothing may change it on its way.
std::vector<Finding> judgeAnswer(const AnswerHead& head);

} // namespace ca::publisher
