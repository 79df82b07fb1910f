#include "publisher/commands/commands.h"
#include "publisher/serve/serve.h"

#include <memory>

namespace ca::publisher {

void addServe(CLI::App& program) {
    const auto options = std::make_shared<ServeOptions>();
    CLI::App* command = program.add_subcommand(
        "serve", "Serves a channel root with the system's nginx, to try it out");
    command->add_option("root", options->root, "The channel root")->required();
    command->add_option("--port", options->port, "TCP port; 0 chooses a free one")
        ->capture_default_str();
    command->add_option("--address", options->address, "Address of this machine; 0.0.0.0 for all")
        ->capture_default_str();
    command->add_option("--limit-rate", options->bytesPerSecond,
                        "Bytes a second for each connection; 0: no limit");
    command->callback([options] { serve(*options); });
}

} // namespace ca::publisher
