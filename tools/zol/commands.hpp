#pragma once
// The zol tool's commands. Each returns the process exit code.
#include <ostream>
#include <string>
#include <vector>

#include "zolsdk/zolsdk.hpp"

namespace zol {

using Args = std::vector<std::string>;

int Usage(std::ostream& out, int code);
int SchemaCommand(const Args& args, std::ostream& out);
int CreateCommand(const Args& args, std::ostream& out);
int DropCommand(const Args& args, std::ostream& out);
int MigrateCommand(const Args& args, std::ostream& out);
int VerifyCommand(const Args& args, std::ostream& out);
int DemoCommand(const Args& args, std::ostream& out);

// A catalog initialised from an attribute string, with a hint for a person
// when the string names no engine or lacks what its engine needs.
zolsdk::Ref<zolsdk::DbCatalog> OpenCatalog(const std::string& attrs);

// Prints a library failure the way a person needs it: number, text and the
// chain of routines it passed.
int ReportFailure(std::ostream& err, const std::exception& e);

} // namespace zol
