// The command line as a user meets it: help of every command, the version,
// and arguments that are wrong, which end with exit code 2 and a message
// naming the argument before anything is opened.
#include <gtest/gtest.h>

#include "tool_runner.hpp"

using namespace zoltool;

namespace {

const std::vector<std::string> kCommands = {"migrate", "verify", "schema", "create", "drop", "demo", "help"};
const std::vector<std::string> kAttrCommands = {"migrate", "verify", "schema", "create", "drop"};

TEST(CommandLine, EveryCommandHasHelpThatNamesItsOptionsAndTheEngines) {
    Ran top = Zol({"--help"});
    EXPECT_EQ(top.exit, 0);
    for (const std::string& c : kCommands) EXPECT_NE(top.out.find("  " + c), std::string::npos) << c;
    EXPECT_EQ(Zol({"help"}).out, top.out);

    for (const std::string& c : kCommands) {
        SCOPED_TRACE(c);
        Ran help = Zol({c, "--help"});
        EXPECT_EQ(help.exit, 0);
        EXPECT_EQ(help.err, "");
        EXPECT_NE(help.out.find("Usage: zol " + c), std::string::npos) << help.out;
        Ran viaHelp = Zol({"help", c});
        EXPECT_EQ(viaHelp.exit, 0);
        EXPECT_EQ(viaHelp.out, help.out);
    }
    // Commands that take attribute strings list each engine's keys and an example.
    for (const std::string& c : kAttrCommands) {
        SCOPED_TRACE(c);
        std::string text = Zol({c, "--help"}).out;
        for (const char* needle :
             {"dbtype=mysql", "dbtype=mssql", "dbtype=msaccess", "dbtype=msxml", "protocol", "auth_mode", "port",
              "example: \"dbtype=mysql;dbname=shop;dblocation=127.0.0.1", "example: \"dbtype=msaccess;dbname=shop.mdb"})
            EXPECT_NE(text.find(needle), std::string::npos) << needle;
    }
    std::string migrate = Zol({"migrate", "--help"}).out;
    for (const char* option : {"--from", "--to", "--table", "--schema-only", "--replace", "--jobs", "--range-rows",
                               "--resume", "--state", "--lock-timeout", "--report", "--compat"})
        EXPECT_NE(migrate.find(option), std::string::npos) << option;

    Ran version = Zol({"--version"});
    EXPECT_EQ(version.exit, 0);
    EXPECT_EQ(version.out.rfind("zol ", 0), 0u) << version.out;
    EXPECT_NE(version.out.find(ZOL_VERSION), std::string::npos);
}

TEST(CommandLine, WrongArgumentsExitTwoNamingTheArgument) {
    const std::string mysql = "dbtype=mysql;dbname=x;dblocation=127.0.0.1";
    struct Case {
        std::vector<std::string> args;
        const char* named;
    } cases[] = {
        {{}, "Usage: zol"},
        {{"bogus"}, "unknown command 'bogus'"},
        {{"help", "bogus"}, "no command 'bogus'"},
        {{"schema"}, "ATTRS is required"},
        {{"schema", "--help-me"}, "--help-me"},
        {{"schema", mysql, "extra"}, "extra"},
        {{"schema", "dbtype=oracle;dbname=x"}, "names no engine: dbtype 'oracle'"},
        {{"schema", "dbname=x;dblocation=/tmp"}, "ATTRS: the attribute string names no engine: it has no dbtype"},
        {{"create", "shop.mdb"}, "ATTRS: 'shop.mdb' is no key=value item"},
        {{"migrate", "--from", mysql}, "--to is required"},
        {{"migrate", "--to", mysql}, "--from is required"},
        {{"migrate", "--from", "dbtype=db2", "--to", mysql}, "--from: the attribute string names no engine"},
        {{"migrate", "--from", mysql, "--to", mysql, "--fast"}, "--fast"},
        {{"migrate", "--from", mysql, "--to", mysql, "--report"}, "--report"},
        {{"migrate", "--from", mysql, "--to", mysql, "--jobs", "0"}, "--jobs"},
        {{"migrate", "--from", mysql, "--to", mysql, "--jobs", "four"}, "--jobs"},
        {{"migrate", "--from", mysql, "--to", mysql, "--compat", "--resume"}, "--compat"},
        {{"migrate", "--from", mysql, "--to", mysql, "--lock-timeout", "-1"}, "--lock-timeout"},
        {{"verify", "--from", mysql}, "--to is required"},
        {{"demo", "--scale", "0"}, "--scale"},
        {{"demo", "--scale", "many"}, "--scale"},
    };
    for (const Case& c : cases) {
        std::string line;
        for (const auto& a : c.args) line += a + " ";
        SCOPED_TRACE(line);
        Ran r = Zol(c.args, std::chrono::seconds(30));
        EXPECT_EQ(r.exit, 2);
        EXPECT_NE(r.err.find(c.named), std::string::npos) << r.err;
        EXPECT_EQ(r.out, "");
    }
}

} // namespace
