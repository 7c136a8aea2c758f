#pragma once
// The zol tool's commands. Each Add*Command declares its command and options
// on the tool's CLI11 application; the returned `run` does the work once the
// arguments have parsed, and returns the process exit code (0 done, 1 failed;
// argument errors end the parse with 2 before any command runs).
#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include <CLI/CLI.hpp>

#include "zolsdk/zolsdk.hpp"

namespace zol {

struct Command {
    CLI::App* app = nullptr;
    std::function<int()> run;
};

Command AddSchemaCommand(CLI::App& zol);
Command AddCreateCommand(CLI::App& zol);
Command AddDropCommand(CLI::App& zol);
Command AddMigrateCommand(CLI::App& zol);
Command AddVerifyCommand(CLI::App& zol);
Command AddDemoCommand(CLI::App& zol);
Command AddHelpCommand(CLI::App& zol);

// An option or positional argument that takes an attribute string: checked
// at parse time (it must name an engine), with the engines' keys in the
// command's help.
CLI::Option* AddAttributeString(CLI::App& app, const std::string& name, std::string& into,
                                const std::string& description);

// A catalog initialised from an attribute string, with a hint for a person
// when the string names no engine or lacks what its engine needs.
zolsdk::Ref<zolsdk::DbCatalog> OpenCatalog(const std::string& attrs);

// Prints a library failure the way a person needs it: number, text and the
// chain of routines it passed.
int ReportFailure(std::ostream& err, const std::exception& e);

// "0x8004F001 Failed to connect ..." for a person.
std::string Describe(const zolsdk::DbError& e);

} // namespace zol
