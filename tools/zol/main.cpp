// zol: moves databases between engines from the command line.
#include <iostream>

#include "commands.hpp"
#include "zolsdk/zolsdk.hpp"

int main(int argc, char** argv) {
    zol::Args args(argv + 1, argv + argc);
    if (args.empty() || args[0] == "-h" || args[0] == "--help" || args[0] == "help")
        return zol::Usage(args.empty() ? std::cerr : std::cout, args.empty() ? 2 : 0);
    std::string cmd = args[0];
    args.erase(args.begin());
    try {
        if (cmd == "schema") return zol::SchemaCommand(args, std::cout);
        if (cmd == "create") return zol::CreateCommand(args, std::cout);
        if (cmd == "drop") return zol::DropCommand(args, std::cout);
        if (cmd == "migrate") return zol::MigrateCommand(args, std::cout);
        if (cmd == "verify") return zol::VerifyCommand(args, std::cout);
        if (cmd == "demo") return zol::DemoCommand(args, std::cout);
        std::cerr << "zol: unknown command '" << cmd << "'\n";
        return zol::Usage(std::cerr, 2);
    } catch (const std::exception& e) {
        return zol::ReportFailure(std::cerr, e);
    }
}
