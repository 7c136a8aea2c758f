#pragma once
// Small helpers of the benchmark: where the server is, timing, the
// process's memory figures, and running the server's command-line tools.
#include <chrono>
#include <cstdint>
#include <string>

#include "zolsdk/zolsdk.hpp"

namespace zolbench {

using zolsdk::Ref;
using zolsdk::String;

// The MySQL-family server, from an attribute string such as
// "dbtype=mysql;dblocation=127.0.0.1;username=zol;password=zol".
struct Server {
    std::string attributes;
    std::string host = "127.0.0.1", port = "3306", user, password;

    static Server FromAttributes(const std::string& attributes);
    // The server named by ZOLSDK_MYSQL_ATTRS, or the local test server.
    static Server FromEnvironment();
    // A catalog on one database of the server (the database need not exist).
    Ref<zolsdk::DbCatalog> Catalog(const std::string& database) const;
    // The options of the command-line client and dump tool for this server.
    std::string ClientOptions() const;
};

// Runs a statement on the server outside the library under test, through
// the command-line client; raises std::runtime_error with its output when
// it fails.
void RunSql(const Server& server, const std::string& sql, const std::string& database = "");
// The first column of the first row, as text.
std::string QueryValue(const Server& server, const std::string& sql, const std::string& database = "");
// A shell command; raises std::runtime_error with its output when it fails.
std::string Shell(const std::string& command);

// The path of the running program.
std::string SelfPath();

// Seconds since `start`.
inline double Since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Peak and current resident size of this process in KiB (VmHWM, VmRSS).
int64_t PeakRssKb();
int64_t CurrentRssKb();
// Starts a new peak from the current size; false where the kernel does not
// offer it.
bool ResetPeakRss();

// "1234567" as "1,234,567".
std::string Grouped(int64_t n);

} // namespace zolbench
