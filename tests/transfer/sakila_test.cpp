// Sakila, a sample nobody here wrote, through zol migrate on the lossless
// road: every table verified by zol, and judged again by the server itself.
#include "transfer/transfer_fixture.hpp"

using namespace zolsdk;
using namespace zolsdk::transfertest;

namespace {
[[maybe_unused]] ::testing::Environment* const kSakila = ::testing::AddGlobalTestEnvironment(new Sakila);

std::vector<std::string> Lines(const std::string& s) {
    std::vector<std::string> out;
    size_t at = 0;
    while (at < s.size()) {
        size_t end = s.find('\n', at);
        if (end == std::string::npos) end = s.size();
        out.push_back(s.substr(at, end - at));
        at = end + 1;
    }
    return out;
}
} // namespace

TEST(SakilaTransfer, MariaDbIntoMariaDbArrivesWholeWithItsSchema) {
    ScratchDb target("tr_sakila");
    Ran r = Zol({"migrate", "--from", MyAttrs(Sakila::Name()), "--to", MyAttrs(target.Name())});
    ASSERT_EQ(r.code, 0) << r.output;
    EXPECT_NE(r.output.find("16 of 16 tables copied and verified"), std::string::npos) << r.output;

    // The server's own checksum of every table, and the definitions
    // (columns, keys, defaults, auto-increment, foreign keys) line for line.
    std::string src = ToUtf8(Sakila::Name()), dst = ToUtf8(target.Name());
    for (const std::string& table : Lines(Client("SHOW FULL TABLES WHERE Table_type = 'BASE TABLE'", Sakila::Name()))) {
        std::string name = table.substr(0, table.find('\t'));
        SCOPED_TRACE(name);
        std::string a = Client("CHECKSUM TABLE `" + src + "`.`" + name + "`");
        std::string b = Client("CHECKSUM TABLE `" + dst + "`.`" + name + "`");
        EXPECT_EQ(a.substr(a.find('\t')), b.substr(b.find('\t')));
        auto definition = [&](const std::string& db) {
            std::string text = Client("SHOW CREATE TABLE `" + db + "`.`" + name + "`");
            // The counter's next value is the table's state, not its definition.
            auto at = text.find(" AUTO_INCREMENT=");
            if (at != std::string::npos) text.erase(at, text.find(' ', at + 1) - at);
            return text.substr(text.find('\t'));
        };
        EXPECT_EQ(definition(src), definition(dst));
    }
}

// Into a new Access file: every table verified by zol, each table's row
// count and one table's rows (AutoNumber ids, text, stamps) as mdbtools reads them.
TEST(SakilaTransfer, MariaDbIntoAccessArrivesVerified) {
    zoltest::TempDir dir;
    NewAccessFile(dir, "sakila.mdb");
    Ran r = Zol({"migrate", "--from", MyAttrs(Sakila::Name()), "--to", AccessAttrs(dir, "sakila.mdb")});
    ASSERT_EQ(r.code, 0) << r.output;
    EXPECT_NE(r.output.find("16 of 16 tables copied and verified"), std::string::npos) << r.output;
    for (const std::string& table : Lines(Client("SHOW FULL TABLES WHERE Table_type = 'BASE TABLE'", Sakila::Name()))) {
        std::string name = table.substr(0, table.find('\t'));
        EXPECT_EQ(Shell("mdb-count " + Q(dir.File("sakila.mdb").string()) + " " + Q(name)).output,
                  Client("SELECT COUNT(*) FROM `" + name + "`", Sakila::Name()))
            << name;
    }
    std::string server = Client("SELECT actor_id, first_name, last_name, last_update FROM actor ORDER BY actor_id",
                                Sakila::Name());
    for (char& c : server)
        if (c == '\t') c = '|';
    std::string file = MdbExport(dir, "sakila.mdb", "actor", "-Q -d '|' -T '%Y-%m-%d %H:%M:%S'");
    EXPECT_EQ(file.substr(file.find('\n') + 1), server);
}
