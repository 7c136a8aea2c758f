#pragma once
// What the lossless road's tests share: zol run as a user runs it, MariaDB
// databases of their own judged by the mariadb client, Access files judged
// by mdbtools.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <sys/wait.h>

#include "common/temp_dir.hpp"
#include "mysql/mysql_fixture.hpp"

namespace zolsdk::transfertest {

using namespace zolsdk::mysqltest;

struct Ran {
    int code = -1;
    std::string output;
};

// A shell command's exit code and everything it printed.
inline Ran Shell(const std::string& cmd) {
    Ran r;
    if (FILE* p = ::popen((cmd + " 2>&1").c_str(), "r")) {
        char buf[4096];
        size_t n;
        while ((n = std::fread(buf, 1, sizeof buf, p)) > 0) r.output.append(buf, n);
        int status = ::pclose(p);
        r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    return r;
}

inline std::string Q(const std::string& s) {
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// zol with its arguments, each quoted for the shell.
inline Ran Zol(std::initializer_list<std::string> args) {
    std::string cmd = ZOL_BINARY;
    for (const auto& a : args) cmd += " " + Q(a);
    return Shell(cmd);
}

inline std::string MyAttrs(const String& db) { return ToUtf8(u"dbname=" + db + u";" + ServerAttributes()); }

inline std::string AccessAttrs(const zoltest::TempDir& dir, const std::string& file) {
    return "dbtype=msaccess;dbname=" + file + ";dblocation=" + dir.Path().string();
}

// The mariadb client's answer to a statement: tab-separated rows, no header.
inline std::string Client(const std::string& sql, const String& db = u"mysql") {
    std::string port = ToUtf8(Attr(u"port"));
    std::string cmd = "mariadb --protocol=tcp -N -B -h" + Q(ToUtf8(Attr(u"dblocation"))) + " -P" +
                      (port.empty() ? std::string("3306") : port) + " -u" + Q(ToUtf8(Attr(u"username"))) + " -p" +
                      Q(ToUtf8(Attr(u"password"))) + " " + Q(ToUtf8(db)) + " -e " + Q(sql);
    Ran r = Shell(cmd);
    EXPECT_EQ(r.code, 0) << sql << "\n" << r.output;
    return r.output;
}

// What mdbtools reads from an Access file.
inline std::string MdbExport(const zoltest::TempDir& dir, const std::string& file, const std::string& table,
                             const std::string& options = "") {
    Ran r = Shell("mdb-export " + options + " " + Q((dir.Path() / file).string()) + " " + Q(table));
    EXPECT_EQ(r.code, 0) << r.output;
    return r.output;
}

inline std::string MdbSchema(const zoltest::TempDir& dir, const std::string& file) {
    Ran r = Shell("mdb-schema " + Q((dir.Path() / file).string()) + " access");
    EXPECT_EQ(r.code, 0) << r.output;
    return r.output;
}

// An empty Access file made by zol.
inline void NewAccessFile(const zoltest::TempDir& dir, const std::string& file) {
    Ran r = Zol({"create", AccessAttrs(dir, file)});
    ASSERT_EQ(r.code, 0) << r.output;
}

} // namespace zolsdk::transfertest
