// The Access provider's speed, from one run:
//   (1) rows per second into a new Access file for a table of 100,000 rows,
//       through the library's import (ImportTable, ExportData, ImportData
//       from MariaDB) and through multi-row INSERTs on a connection;
//   (2) rows per second of `zol migrate` from an Access file of a million
//       rows into MariaDB, against mdbtools (`mdb-schema | mariadb` then
//       `mdb-export -I mysql | mariadb`) on the same file, each a child
//       process timed from its start (the JVM's start included), with its
//       peak resident size; both copies are checked row for row by a
//       checksum the server computes.
//
//   zol_access_bench [--rows N] [--big-rows N] [--keep]
//
// The server comes from ZOLSDK_MYSQL_ATTRS (an attribute string), by
// default the local test server; `zol` is looked for beside this program's
// build folder (ZOL_TOOL names another).
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "bench_support.hpp"

using namespace zolsdk;
using namespace zolbench;
using SteadyClock = std::chrono::steady_clock;

namespace {

struct Options {
    int64_t rows = 100000;
    int64_t bigRows = 1000000;
    bool keep = false;
};

// Integers, a short and a longer text, a decimal, a double and a date-time.
const char* kCreateSource =
    "CREATE TABLE t (id INT NOT NULL PRIMARY KEY, qty INT NOT NULL, code VARCHAR(16) NOT NULL,"
    " title VARCHAR(120), price DECIMAL(12,2), ratio DOUBLE, stamp DATETIME) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4";

std::string FillSource(int64_t rows) {
    return "INSERT INTO t SELECT seq, seq % 1000, CONCAT('C', LPAD(seq, 9, '0')),"
           " CONCAT('Item ', seq, ' Zoë ', REPEAT('x', seq % 40)), (seq % 100000) / 100, (seq % 1000) / 8,"
           " TIMESTAMP('2020-01-01') + INTERVAL seq SECOND FROM seq_1_to_" + std::to_string(rows);
}

const char* kChecksum =
    "SELECT COUNT(*), COALESCE(SUM(CRC32(CONCAT_WS('|', id, qty, code, title, price, ratio, stamp))), 0) FROM t";

std::string Quoted(const std::string& s) {
    std::string out = "'";
    for (char c : s) {
        if (c == '\'') out += "'\\''";
        else out += c;
    }
    return out + "'";
}

// A child process run to its end: seconds from its start, peak resident KiB.
struct Run {
    double seconds = 0;
    long peakKb = 0;
    std::string output;
};

Run RunChild(const std::vector<std::string>& argv) {
    std::string log = (std::filesystem::temp_directory_path() / ("zol_access_bench_" + std::to_string(::getpid()) + ".log")).string();
    std::fflush(stdout);
    std::fflush(stderr);
    auto start = SteadyClock::now();
    pid_t pid = ::fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid == 0) {
        FILE* f = std::freopen(log.c_str(), "w", stdout);
        if (f) ::dup2(::fileno(stdout), 2);
        std::vector<char*> args;
        for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        ::execvp(args[0], args.data());
        std::_Exit(127);
    }
    int status = 0;
    struct rusage usage {};
    ::wait4(pid, &status, 0, &usage);
    Run r;
    r.seconds = Since(start);
    r.peakKb = usage.ru_maxrss;
    std::string all = Shell("tail -c 2000 " + Quoted(log));
    std::filesystem::remove(log);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error("failed: " + argv[0] + " ... " + argv.back() + "\n" + all);
    r.output = all;
    return r;
}

std::string AccessAttrs(const std::filesystem::path& file) {
    return "dbtype=msaccess;dbname=" + file.filename().string() + ";dblocation=" + file.parent_path().string();
}

int64_t MdbCount(const std::filesystem::path& file, const std::string& table) {
    return std::stoll(Shell("mdb-count " + Quoted(file.string()) + " " + table));
}

void Report(const std::string& name, int64_t rows, double seconds, const std::string& extra = "") {
    std::printf("  %-58s %10s rows/s  (%s rows in %.2f s)%s\n", name.c_str(), Grouped(static_cast<int64_t>(rows / seconds)).c_str(),
                Grouped(rows).c_str(), seconds, extra.c_str());
}

// Multi-row INSERTs of `rows` generated rows, `perStatement` rows each,
// into a new table of the catalog's file.
double InsertRows(const Ref<DbCatalog>& cat, int64_t rows, int perStatement) {
    auto c = cat->Session();
    c->ExecuteNoQuery(u"CREATE TABLE [t] ([id] INTEGER NOT NULL, [qty] INTEGER NOT NULL, [code] VARCHAR(16) NOT NULL,"
               u" [title] VARCHAR(120), [price] DECIMAL(12,2), [ratio] FLOAT, [stamp] DATETIME)");
    c->ExecuteNoQuery(u"ALTER TABLE [t] ADD CONSTRAINT [idx_t] PRIMARY KEY ([id])");
    auto start = SteadyClock::now();
    std::string sql;
    char buf[512];
    for (int64_t i = 1; i <= rows; ++i) {
        if (sql.empty()) sql = "INSERT INTO [t] ([id], [qty], [code], [title], [price], [ratio], [stamp]) VALUES ";
        else sql += ", ";
        long long s = 1577836800LL + i; // 2020-01-01 + i seconds
        time_t tt = static_cast<time_t>(s);
        struct tm tmv {};
        ::gmtime_r(&tt, &tmv);
        std::snprintf(buf, sizeof buf, "(%lld, %lld, 'C%09lld', 'Item %lld Zo\xC3\xAB %s', %lld.%02lld, %g, #%d/%d/%d %02d:%02d:%02d#)",
                      static_cast<long long>(i), static_cast<long long>(i % 1000), static_cast<long long>(i),
                      static_cast<long long>(i), std::string(static_cast<size_t>(i % 40), 'x').c_str(),
                      static_cast<long long>((i % 100000) / 100), static_cast<long long>((i % 100000) % 100),
                      static_cast<double>(i % 1000) / 8, tmv.tm_mon + 1, tmv.tm_mday, tmv.tm_year + 1900, tmv.tm_hour,
                      tmv.tm_min, tmv.tm_sec);
        sql += buf;
        if (i % perStatement == 0 || i == rows) {
            c->ExecuteNoQuery(FromUtf8(sql));
            sql.clear();
        }
    }
    return Since(start);
}

std::string ZolTool() {
    if (const char* env = std::getenv("ZOL_TOOL"); env && *env) return env;
    std::filesystem::path self(SelfPath());
    return (self.parent_path().parent_path() / "tools" / "zol").string();
}

Options Parse(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto next = [&]() -> std::string {
            if (i + 1 >= argc) throw std::runtime_error(a + " needs a value");
            return argv[++i];
        };
        if (a == "--rows") o.rows = std::stoll(next());
        else if (a == "--big-rows") o.bigRows = std::stoll(next());
        else if (a == "--keep") o.keep = true;
        else throw std::runtime_error("unknown argument " + a);
    }
    return o;
}

int Main(const Options& o) {
    Server server = Server::FromEnvironment();
    std::filesystem::path dir = std::filesystem::temp_directory_path() / ("zol_access_bench_" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string src = "zol_access_bench_src", viaZol = "zol_access_bench_zol", viaMdb = "zol_access_bench_mdb";
    for (const std::string& db : {src, viaZol, viaMdb}) RunSql(server, "DROP DATABASE IF EXISTS `" + db + "`");
    RunSql(server, "CREATE DATABASE `" + src + "` DEFAULT CHARACTER SET utf8mb4");
    RunSql(server, kCreateSource, src);
    RunSql(server, FillSource(o.rows), src);

    std::printf("Access provider benchmark (%s rows into a new file, %s rows out of one)\n", Grouped(o.rows).c_str(),
                Grouped(o.bigRows).c_str());
    // The JVM's start and a first file, apart from the rows.
    auto start = SteadyClock::now();
    {
        auto warm = Ref<DbCatalog>::New();
        warm->Init(FromUtf8(AccessAttrs(dir / "warm.mdb")));
        warm->Create();
        warm->Session()->ExecuteNoQuery(u"CREATE TABLE [w] ([id] INTEGER)");
        warm->Session()->ExecuteScalar(u"SELECT COUNT(*) FROM [w]", u"");
    }
    std::printf("  JVM start, a new file, a first statement: %.2f s\n", Since(start));

    // (1) into a new file.
    {
        std::filesystem::path file = dir / "import.mdb";
        Ref<DbCatalog> source = server.Catalog(src);
        auto target = Ref<DbCatalog>::New();
        target->Init(FromUtf8(AccessAttrs(file)));
        target->Create();
        target->ImportTable(source->Tables()->Item(Variant(u"t")));
        start = SteadyClock::now();
        target->ImportData(u"t", source->ExportData(u"t"));
        double seconds = Since(start);
        int64_t counted = MdbCount(file, "t");
        if (counted != o.rows) throw std::runtime_error("mdb-count found " + std::to_string(counted) + " rows");
        Report("library import from MariaDB (a statement a row)", o.rows, seconds);
    }
    {
        std::filesystem::path file = dir / "insert.mdb";
        auto target = Ref<DbCatalog>::New();
        target->Init(FromUtf8(AccessAttrs(file)));
        target->Create();
        double seconds = InsertRows(target, o.rows, 500);
        int64_t counted = MdbCount(file, "t");
        if (counted != o.rows) throw std::runtime_error("mdb-count found " + std::to_string(counted) + " rows");
        Report("INSERTs of 500 rows each on a connection", o.rows, seconds);
    }

    // (2) out of a large file into MariaDB.
    std::filesystem::path big = dir / "big.mdb";
    {
        auto target = Ref<DbCatalog>::New();
        target->Init(FromUtf8(AccessAttrs(big)));
        target->Create();
        double seconds = InsertRows(target, o.bigRows, 500);
        Report("making the large file (INSERTs of 500 rows)", o.bigRows, seconds,
               "  " + Grouped(static_cast<int64_t>(std::filesystem::file_size(big) / 1024)) + " KiB");
    }
    const std::string to = server.attributes + ";dbname=" + viaZol;
    RunSql(server, "CREATE DATABASE `" + viaZol + "` DEFAULT CHARACTER SET utf8mb4");
    RunSql(server, "CREATE DATABASE `" + viaMdb + "` DEFAULT CHARACTER SET utf8mb4");
    Run zol = RunChild({ZolTool(), "migrate", "--from", AccessAttrs(big), "--to", to});
    std::string client = "mariadb " + server.ClientOptions() + " " + viaMdb;
    Run mdb = RunChild({"sh", "-c",
                        "set -e; mdb-schema " + Quoted(big.string()) + " mysql | " + client + "; mdb-export -I mysql " +
                            Quoted(big.string()) + " t | " + client});
    std::string a = QueryValue(server, kChecksum, viaZol), b = QueryValue(server, kChecksum, viaMdb);
    std::string countZol = a.substr(0, a.find('\t'));
    std::printf("\n  Access -> MariaDB, %s rows (child processes, from their start)\n", Grouped(o.bigRows).c_str());
    Report("zol migrate", o.bigRows, zol.seconds, "  peak RSS " + Grouped(zol.peakKb / 1024) + " MiB");
    Report("mdb-schema | mariadb; mdb-export -I mysql | mariadb", o.bigRows, mdb.seconds,
           "  peak RSS " + Grouped(mdb.peakKb / 1024) + " MiB");
    std::printf("  zol migrate against mdbtools: %.2fx\n", mdb.seconds / zol.seconds);
    std::printf("  rows and checksum: zol %s, mdbtools %s (%s)\n", a.c_str(), b.c_str(),
                a == b ? "the same" : "DIFFERENT");
    if (std::to_string(o.bigRows) != countZol) std::printf("  zol migrate copied %s rows\n", countZol.c_str());

    if (!o.keep) {
        for (const std::string& db : {src, viaZol, viaMdb}) RunSql(server, "DROP DATABASE IF EXISTS `" + db + "`");
        std::filesystem::remove_all(dir);
    }
    return a == b ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Main(Parse(argc, argv));
    } catch (const DbError& e) {
        std::cerr << "failed: " << ToUtf8(e.Description()) << "\n" << ToUtf8(e.Source()) << "\n";
    } catch (const std::exception& e) {
        std::cerr << "failed: " << e.what() << "\n";
    }
    return 1;
}
