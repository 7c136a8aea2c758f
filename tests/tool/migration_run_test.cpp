// zol migrate as a user runs it on real servers: parallel runs give the
// same verified result as one job, a run whose target dies is resumed to a
// whole copy without a duplicate, a held lock ends the run within
// --lock-timeout, and the report and log are fit for scripts.
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

#include "own_server.hpp"
#include "tool_runner.hpp"

using namespace zoltool;

namespace {

const Server kShared;

std::string UniqueName(const std::string& stem) {
    static std::atomic<int> n{0};
    return "zt_" + stem + "_" + std::to_string(::getpid()) + "_" + std::to_string(n++);
}

std::string Must(const Ran& r) {
    if (r.exit != 0) ADD_FAILURE() << "mariadb failed: " << r.err;
    return r.out;
}

// A database on a server, dropped when the test ends.
struct Database {
    const Server& server;
    std::string name;
    Database(const Server& s, const std::string& stem) : server(s), name(UniqueName(stem)) {
        Must(server.Sql("CREATE DATABASE `" + name + "` DEFAULT CHARACTER SET utf8mb4"));
    }
    ~Database() { server.Sql("DROP DATABASE IF EXISTS `" + name + "`"); }
    std::string Attrs() const { return server.Attrs(name); }
    std::string Sql(const std::string& sql) const { return Must(server.Sql(sql, name)); }
};

void LoadSakila(const Database& db) {
    std::string dir = std::string(ZOLSDK_SHARED_DIR) + "/data/sakila/";
    std::string rename = "sed -e '/^DROP SCHEMA IF EXISTS sakila;/d' -e '/^CREATE SCHEMA sakila;/d' -e 's/^USE sakila;/USE " +
                         db.name + ";/' -e 's/\\bsakila\\./" + db.name + "./g'";
    Ran r = RunProgram({"sh", "-c",
                        "cat '" + dir + "sakila-schema.sql' '" + dir + "sakila-data.sql' | " + rename +
                            " | mariadb --protocol=tcp -h127.0.0.1 -P3306 -uzol -pzol"});
    ASSERT_EQ(r.exit, 0) << r.err;
}

// Count, distinct keys and a checksum of every row, computed by the server.
std::string Fingerprint(const Database& db, const std::string& table, const std::string& key,
                        const std::string& columns) {
    return db.Sql("SELECT COUNT(*), COUNT(DISTINCT " + key + "), SUM(CRC32(CONCAT_WS('|'," + columns +
                  "))) FROM `" + table + "`");
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// The tables of a JSON report as "name rows verified failure?" lines, read by Python's json module.
std::string ReportTables(const std::string& path) {
    Ran r = RunProgram({"python3", "-c",
                        "import json,sys\n"
                        "r=json.load(open(sys.argv[1]))\n"
                        "for t in r['tables']: print(t['name'], t['rows'], t['verified'], t['failure'] is None)\n",
                        path});
    EXPECT_EQ(r.exit, 0) << r.err;
    return r.out;
}

TEST(Migrate, FourJobsGiveTheSameVerifiedSakilaAsOne) {
    Database source(kShared, "sakila"), one(kShared, "one"), four(kShared, "four");
    LoadSakila(source);
    std::string reportOne = "/tmp/" + one.name + ".json", reportFour = "/tmp/" + four.name + ".json";
    Ran a = Zol({"migrate", "--from", source.Attrs(), "--to", one.Attrs(), "--jobs", "1", "--report", reportOne,
                 "--state", "/tmp/" + one.name + ".state"});
    Ran b = Zol({"migrate", "--from", source.Attrs(), "--to", four.Attrs(), "--jobs", "4", "--range-rows", "3000",
                 "--report", reportFour, "--state", "/tmp/" + four.name + ".state"});
    EXPECT_EQ(a.exit, b.exit) << a.out << b.out;
    // Logs captured from a pipe are plain lines.
    EXPECT_EQ(a.out.find('\r'), std::string::npos);
    EXPECT_EQ(b.out.find('\r'), std::string::npos);

    std::string tablesOne = ReportTables(reportOne), tablesFour = ReportTables(reportFour);
    EXPECT_EQ(tablesOne, tablesFour);
    EXPECT_NE(tablesOne.find("rental 16044 True True"), std::string::npos) << tablesOne;
    EXPECT_NE(tablesOne.find("payment 16044 True True"), std::string::npos) << tablesOne;
    // The server's own checksums of every table agree between the two copies.
    std::string names = one.Sql("SELECT GROUP_CONCAT('`', table_name, '`') FROM information_schema.tables "
                                "WHERE table_schema = DATABASE() AND table_type = 'BASE TABLE'");
    names.pop_back();
    std::string sumsOne = one.Sql("CHECKSUM TABLE " + names), sumsFour = four.Sql("CHECKSUM TABLE " + names);
    auto bare = [](std::string s, const std::string& db) {
        for (size_t at; (at = s.find(db + ".")) != std::string::npos;) s.erase(at, db.size() + 1);
        return s;
    };
    EXPECT_EQ(bare(sumsOne, one.name), bare(sumsFour, four.name));
    // Every index arrived in both, the late ones built beside the last
    // verifications included.
    std::string indexes = "SELECT table_name, index_name, seq_in_index, column_name, non_unique, sub_part "
                          "FROM information_schema.statistics WHERE table_schema = DATABASE() ORDER BY 1, 2, 3";
    EXPECT_EQ(one.Sql(indexes), source.Sql(indexes));
    EXPECT_EQ(four.Sql(indexes), source.Sql(indexes));
    // Foreign keys came last, in both.
    std::string fk = "SELECT COUNT(*) FROM information_schema.referential_constraints WHERE constraint_schema = DATABASE()";
    EXPECT_EQ(one.Sql(fk), four.Sql(fk));
    EXPECT_EQ(one.Sql(fk), source.Sql(fk));
    for (auto* f : {&reportOne, &reportFour}) std::remove(f->c_str());
}

TEST(Migrate, ARunWhoseTargetDiesIsResumedWithNoRowMissingOrTwice) {
    OwnServer target;
    Database source(kShared, "resume_src");
    source.Sql("CREATE TABLE numbered (id INT PRIMARY KEY, a VARCHAR(40), b DECIMAL(12,2), c DATETIME, t TEXT);"
               "INSERT INTO numbered SELECT seq, CONCAT('row ', seq), seq / 7, '2024-01-01' + INTERVAL seq MINUTE, "
               "REPEAT('x', seq % 200) FROM seq_1_to_1200000;"
               "CREATE TABLE nokey (n INT, s VARCHAR(10));"
               "INSERT INTO nokey SELECT seq % 100, 'same' FROM seq_1_to_20000;");
    Database copy(target.server, "resume_dst");
    std::string state = "/tmp/" + copy.name + ".state";
    std::vector<std::string> args = {"migrate", "--from", source.Attrs(), "--to", copy.Attrs(), "--jobs", "2",
                                     "--range-rows", "20000", "--state", state, "--lock-timeout", "5"};

    Ran first;
    std::thread run([&] { first = Zol(args, std::chrono::seconds(240)); });
    // Kill the target once the keyless table (planned first: its name sorts
    // first) and some key ranges are recorded as verified, while others are
    // not (sixty ranges: the copy takes seconds even on a fast machine).
    int verified = 0;
    bool keylessDone = false;
    for (int i = 0; i < 1200 && (verified < 2 || !keylessDone); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        std::string s = ReadFile(state);
        verified = 0;
        for (size_t at = 0; (at = s.find("\nrange\t", at)) != std::string::npos; ++at) ++verified;
        keylessDone = s.find("\ntable\tnokey\t") != std::string::npos;
    }
    target.Kill();
    run.join();
    ASSERT_GE(verified, 2) << first.out << first.err;
    ASSERT_TRUE(keylessDone) << first.out << first.err;
    EXPECT_FALSE(first.timedOut);
    EXPECT_NE(first.exit, 0) << first.out;

    target.Start();
    Ran again = Zol({"migrate", "--from", source.Attrs(), "--to", copy.Attrs(), "--jobs", "2", "--range-rows", "20000",
                     "--state", state, "--resume"},
                    std::chrono::seconds(240));
    EXPECT_EQ(again.exit, 0) << again.out << again.err;
    std::string columns = "id, a, b, c, t";
    EXPECT_EQ(Fingerprint(copy, "numbered", "id", columns), Fingerprint(source, "numbered", "id", columns));
    EXPECT_EQ(copy.Sql("SELECT COUNT(*), SUM(n) FROM nokey"), "20000\t990000\n");
    // The rerun copied again only what was not verified.
    EXPECT_NE(first.out.find("nokey: verified"), std::string::npos) << first.out;
    EXPECT_NE(again.out.find("nokey: verified by an earlier run"), std::string::npos) << again.out;
    EXPECT_FALSE(std::filesystem::exists(state)) << "a run that ends whole leaves no record";
    std::remove(state.c_str());
}

TEST(Migrate, ATargetThatRefusesClientLoadsGetsEveryValueByInserts) {
    // A server with local_infile off takes INSERTs of many rows instead:
    // from the source's text (a table of plain types) and from values (a
    // table with a BIT column), each value as the client reads it back.
    OwnServer target({"--local-infile=0"});
    Database source(kShared, "noload_src"), copy(target.server, "noload_dst");
    source.Sql("CREATE TABLE plain (id INT PRIMARY KEY, s VARCHAR(30), t TEXT, b VARBINARY(8), d DATETIME(3), "
               "z DATE, f FLOAT, x DECIMAL(30,10)) DEFAULT CHARSET utf8mb4;"
               "INSERT INTO plain SELECT seq, CONCAT('it''s \\\\ ', seq, '\\t\\n'), REPEAT('\\0x', seq % 50), "
               "UNHEX(CONCAT('00', HEX(seq))), '2020-01-01 00:00:00.125' + INTERVAL seq SECOND, "
               "IF(seq % 7 = 0, '0000-00-00', '2020-02-29'), seq / 3, seq / 7 FROM seq_1_to_5000;"
               "INSERT INTO plain VALUES (0, NULL, '', X'', NULL, NULL, 16777216, -0.0000000001);"
               "CREATE TABLE withbits (id INT PRIMARY KEY, b BIT(3), s VARCHAR(10));"
               "INSERT INTO withbits VALUES (1, b'101', 'a''\\\\b'), (2, NULL, NULL);");
    // A server that takes arrays of parameters gets those: they are turned
    // off here, as for a proxy that passes none.
    setenv("ZOL_ROW_BATCHES", "off", 1);
    Ran r = Zol({"migrate", "--from", source.Attrs(), "--to", copy.Attrs(), "--state", "/tmp/" + copy.name + ".state"});
    unsetenv("ZOL_ROW_BATCHES");
    EXPECT_EQ(r.exit, 0) << r.out << r.err;
    EXPECT_NE(r.out.find("2 of 2 tables copied and verified"), std::string::npos) << r.out;
    std::string judge = "SELECT COUNT(*), SUM(CRC32(CONCAT_WS('|', id, HEX(s), HEX(t), HEX(b), d, z, "
                        "CAST(f AS DOUBLE), x, ISNULL(s), ISNULL(b), ISNULL(d)))) FROM plain";
    EXPECT_EQ(copy.Sql(judge), source.Sql(judge));
    EXPECT_EQ(copy.Sql("SELECT id, BIN(b), HEX(s) FROM withbits ORDER BY id"), "1\t101\t61275C62\n2\tNULL\tNULL\n");
}

TEST(Migrate, AHeldLockEndsTheRunWithinItsLockTimeout) {
    Database source(kShared, "lock_src"), copy(kShared, "lock_dst");
    source.Sql("CREATE TABLE t (id INT PRIMARY KEY, v INT); INSERT INTO t SELECT seq, seq FROM seq_1_to_100;");
    copy.Sql("CREATE TABLE t (id INT PRIMARY KEY, v INT);");
    // Another session holds the table while zol wants to replace it.
    std::thread holder([&] { copy.server.Sql("LOCK TABLES t WRITE; SELECT SLEEP(12);", copy.name); });
    std::this_thread::sleep_for(std::chrono::seconds(2));
    auto started = std::chrono::steady_clock::now();
    Ran r = Zol({"migrate", "--from", source.Attrs(), "--to", copy.Attrs(), "--replace", "--lock-timeout", "3"},
                std::chrono::seconds(60));
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    holder.join();
    EXPECT_EQ(r.exit, 1) << r.out << r.err;
    EXPECT_LT(seconds, 15.0) << r.out;
    EXPECT_NE(r.out.find("Lock wait timeout"), std::string::npos) << r.out;
}

} // namespace
