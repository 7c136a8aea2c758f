#pragma once
// What the MySQL tests share: where the server is (ZOLSDK_MYSQL_ATTRS, an
// attribute string), databases of their own with unique names, sessions on
// them, and the Sakila sample loaded once per test program.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <unistd.h>

#include "common/failure.hpp"
#include "catalog/attributes.hpp"
#include "sessions/mysql_session.hpp"
#include "platform/ado/connection.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::mysqltest {

using zoltest::Failure;

inline String ServerAttributes() {
    const char* env = std::getenv("ZOLSDK_MYSQL_ATTRS");
    return FromUtf8(env && *env ? env : "dbtype=mysql;dblocation=127.0.0.1;username=zol;password=zol");
}

inline String Attr(StringView key) { return SessionAttributeValue(ServerAttributes(), key); }

// A database name no other test (or test run) uses.
inline std::string UniqueName(const std::string& stem) {
    static std::atomic<int> seq{0};
    auto stamp = std::chrono::system_clock::now().time_since_epoch().count() % 1000000000;
    return "zt_" + stem + "_" + std::to_string(::getpid()) + "_" + std::to_string(stamp) + "_" + std::to_string(seq++);
}

// A server-level connection of the tests' own, for set-up and checks that
// must not go through the code under test.
inline Ref<ado::Connection> ServerConnection(const String& database = u"mysql") {
    String port = Attr(u"port");
    auto c = Ref<ado::Connection>::New();
    c->ConnectionString(u"Driver=MySQL ODBC 5.1 Driver;DATABASE=" + database + u";SERVER=" + Attr(u"dblocation") +
                        u";UID=" + Attr(u"username") + u";PASSWORD=" + Attr(u"password") + u";PORT=" +
                        (port.empty() ? String(u"3306") : port) + u";OPTION=18475;");
    c->Open();
    return c;
}

inline void RunOnServer(const String& sql, const String& database = u"mysql") {
    auto c = ServerConnection(database);
    int32_t n = 0;
    c->Execute(sql, n, ado::adExecuteNoRecords);
    c->Close();
}

inline Ref<DbMySqlDB> NewSession(const String& extraAttributes) {
    auto s = Ref<DbMySqlDB>::New();
    s->Connect(extraAttributes + u";" + ServerAttributes());
    return s;
}

// A database made for one test and dropped when the test ends.
class ScratchDb {
public:
    explicit ScratchDb(const std::string& stem) : name_(FromUtf8(UniqueName(stem))) {
        RunOnServer(u"CREATE DATABASE `" + name_ + u"` DEFAULT CHARACTER SET utf8mb4");
    }
    ~ScratchDb() {
        try {
            RunOnServer(u"DROP DATABASE IF EXISTS `" + name_ + u"`");
        } catch (...) {
        }
    }
    ScratchDb(const ScratchDb&) = delete;
    ScratchDb& operator=(const ScratchDb&) = delete;

    const String& Name() const { return name_; }
    Ref<DbMySqlDB> Session() const { return NewSession(u"dbname=" + name_); }
    void Run(const String& sql) const { RunOnServer(sql, name_); }

private:
    String name_;
};

// The Sakila sample in a database of its own, loaded by the command-line
// client (the files use DELIMITER, a client command) on first use and
// dropped when the program ends.
class Sakila : public ::testing::Environment {
public:
    static const String& Name() {
        static String name = Load();
        return name;
    }
    void TearDown() override {
        if (Loaded()) {
            try {
                RunOnServer(u"DROP DATABASE IF EXISTS `" + Name() + u"`");
            } catch (...) {
            }
        }
    }

private:
    static bool& Loaded() {
        static bool loaded = false;
        return loaded;
    }
    static String Load() {
        std::string name = UniqueName("sakila");
        std::string dir = std::string(ZOLSDK_SHARED_DIR) + "/data/sakila/";
        std::string port = ToUtf8(Attr(u"port"));
        std::string client = "mariadb --protocol=tcp -h'" + ToUtf8(Attr(u"dblocation")) + "' -P" +
                             (port.empty() ? std::string("3306") : port) + " -u'" + ToUtf8(Attr(u"username")) +
                             "' -p'" + ToUtf8(Attr(u"password")) + "'";
        // The files name their own database: point them at ours.
        std::string rename = "sed -e '/^DROP SCHEMA IF EXISTS sakila;/d' -e 's/^CREATE SCHEMA sakila;/CREATE SCHEMA " +
                             name + ";/' -e 's/^USE sakila;/USE " + name + ";/' -e 's/\\bsakila\\./" + name + "./g'";
        std::string cmd = "cat '" + dir + "sakila-schema.sql' '" + dir + "sakila-data.sql' | " + rename + " | " +
                          client + " 2>&1";
        std::string output;
        if (FILE* p = ::popen(cmd.c_str(), "r")) {
            char buf[512];
            while (std::fgets(buf, sizeof buf, p)) output += buf;
            int rc = ::pclose(p);
            if (rc != 0) throw std::runtime_error("loading Sakila failed: " + output);
        }
        Loaded() = true;
        return FromUtf8(name);
    }
};

inline bool Contains(const String& text, StringView part) { return text.find(part) != String::npos; }

} // namespace zolsdk::mysqltest
