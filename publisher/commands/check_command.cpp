#include "publisher/check/check.h"
#include "publisher/commands/commands.h"
#include "publisher/text/amounts.h"
#include "publisher/text/shown.h"

#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

namespace ca::publisher {

namespace {

struct CommandOptions : CheckOptions {
    bool json = false;
};

void printJson(const CheckResult& result) {
    nlohmann::ordered_json problems = nlohmann::ordered_json::array();
    nlohmann::ordered_json advice = nlohmann::ordered_json::array();
    for (const Finding& finding : result.findings) {
        nlohmann::ordered_json& kind = finding.isProblem ? problems : advice;
        kind.push_back({{"where", finding.where}, {"what", finding.what}});
    }
    const nlohmann::ordered_json object = {{"good", result.good()},
                                           {"version", result.manifest.version},
                                           {"files", result.manifest.files.size()},
                                           {"bytes", result.bytes},
                                           {"problems", problems},
                                           {"advice", advice}};
    // ASCII alone: the texts are the channel's, and may not even be UTF-8.
    std::cout << object.dump(1, ' ', true, nlohmann::json::error_handler_t::replace) << '\n';
}

void printLines(const CheckResult& result) {
    for (const Finding& finding : result.findings) {
        std::cout << (finding.isProblem ? "problem: " : "advice: ")
                  << shown(finding.where + " " + finding.what) << '\n';
    }
    std::cout << (result.good() ? "good" : "not good") << ": version "
              << shown(result.manifest.version) << ", "
              << countText(result.manifest.files.size(), "file") << ", " << bytesText(result.bytes)
              << '\n';
}

} // namespace

void addCheck(CLI::App& program, int& status) {
    const auto options = std::make_shared<CommandOptions>();
    CLI::App* command = program.add_subcommand(
        "check", "Fetches everything that a launcher would fetch, and checks it");
    command
        ->add_option("channel-root", options->address,
                     "The server's address as launchers have it, or a channel root")
        ->required();
    command->add_option("--channel", options->channel, "The channel's name")->capture_default_str();
    command->add_option("--key", options->publicKey, "The public key file that players have")
        ->check(CLI::ExistingFile);
    addJobs(*command, options->threads, "Number of files fetched at once");
    command->add_flag("--json", options->json, "Print the result as one JSON object");
    command->callback([options, &status] {
        const CheckResult result = checkChannel(*options);
        status = result.good() ? 0 : 1;
        options->json ? printJson(result) : printLines(result);
    });
}

} // namespace ca::publisher
