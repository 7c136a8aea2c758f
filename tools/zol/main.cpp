// zol: moves databases between engines from the command line.
#include <iostream>
#include <vector>

#include "commands.hpp"
#include "zolsdk/zolsdk.hpp"

#ifndef ZOL_VERSION
#define ZOL_VERSION "unknown"
#endif

int main(int argc, char** argv) {
    CLI::App zol{"zol moves databases between engines: Access files, SQL Server, MySQL/MariaDB and XML schema files.",
                 "zol"};
    zol.set_version_flag("--version", "zol " ZOL_VERSION);
    zol.require_subcommand(1);
    zol.footer("Run 'zol help COMMAND' or 'zol COMMAND --help' for a command's options, the attribute\n"
               "keys of each engine and examples.");
    std::vector<zol::Command> commands = {
        zol::AddMigrateCommand(zol), zol::AddVerifyCommand(zol), zol::AddSchemaCommand(zol),
        zol::AddCreateCommand(zol),  zol::AddDropCommand(zol),   zol::AddDemoCommand(zol),
        zol::AddHelpCommand(zol),
    };

    if (argc < 2) {
        std::cerr << zol.help();
        return 2;
    }
    std::string first = argv[1];
    if (first.empty() || first[0] != '-') {
        bool known = false;
        for (const zol::Command& c : commands) known = known || c.app->check_name(first);
        if (!known) {
            std::cerr << "zol: unknown command '" << first << "'\n" << "Run 'zol --help' for the commands.\n";
            return 2;
        }
    }
    try {
        zol.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() == 0) return zol.exit(e); // --help, --version
        std::string where = "zol", what = e.what();
        for (CLI::App* sub : zol.get_subcommands()) {
            where += " " + sub->get_name();
            // A misspelt option leaves a required one unset: name the misspelling.
            if (!sub->remaining().empty() && dynamic_cast<const CLI::RequiredError*>(&e)) {
                what = "not an option or argument of this command:";
                for (const std::string& r : sub->remaining()) what += " " + r;
            }
        }
        std::cerr << where << ": " << what << "\n"
                  << "Run '" << where << " --help' for " << (where == "zol" ? "the commands" : "its options")
                  << ".\n";
        return 2;
    }
    for (const zol::Command& c : commands) {
        if (!c.app->parsed()) continue;
        try {
            return c.run();
        } catch (const std::exception& e) {
            return zol::ReportFailure(std::cerr, e);
        }
    }
    std::cerr << zol.help();
    return 2;
}
