// zol help [COMMAND]: the same text as `zol COMMAND --help`.
#include <iostream>

#include "commands.hpp"

namespace zol {

Command AddHelpCommand(CLI::App& zol) {
    CLI::App* app = zol.add_subcommand("help", "zol help COMMAND shows the options of COMMAND; zol help alone, the list of commands.");
    // The command's name is taken as it comes, even when it is "help".
    app->prefix_command();
    CLI::App* tool = &zol;
    return {app, [tool, app] {
                std::vector<std::string> rest = app->remaining();
                if (rest.size() > 1) {
                    std::cerr << "zol help: one command at a time, not '" << rest[1] << "'\n";
                    return 2;
                }
                auto name = std::make_shared<std::string>(rest.empty() ? "" : rest[0]);
                if (name->empty()) {
                    // help() would answer for the chosen command, which is this one.
                    std::cout << tool->get_formatter()->make_help(tool, tool->get_name(), CLI::AppFormatMode::Normal);
                    return 0;
                }
                for (CLI::App* sub : tool->get_subcommands(std::function<bool(CLI::App*)>())) {
                    if (sub->check_name(*name)) {
                        std::cout << sub->help(tool->get_name());
                        return 0;
                    }
                }
                std::cerr << "zol help: no command '" << *name << "'\nRun 'zol --help' for the commands.\n";
                return 2;
            }};
}

} // namespace zol
