// Databases nobody here wrote, through zol migrate on the lossless road:
// the real Access files into MariaDB and back, through XML and back, and
// Sakila through XML; every table verified or the report says why.
#include <algorithm>
#include <filesystem>

#include "transfer/transfer_fixture.hpp"

using namespace zolsdk;
using namespace zolsdk::transfertest;

namespace {

[[maybe_unused]] ::testing::Environment* const kSakila = ::testing::AddGlobalTestEnvironment(new Sakila);

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

const char* const kSampleFiles[] = {"testAccess2_2000.mdb", "indexTestV2003.mdb", "testV2000.mdb"};

void CopySample(const zoltest::TempDir& dir, const std::string& file) {
    std::filesystem::copy_file(std::string(ZOLSDK_SHARED_DIR) + "/data/access/" + file, dir.File(file));
}

// The shape of a catalog as zol schema lists it: each table's columns with
// their types and lengths, and its indexes by their columns, directions and
// kind (names, defaults and NULL marks are compared elsewhere), sorted.
std::string Shape(const std::string& attrs) {
    Ran r = Zol({"schema", attrs});
    EXPECT_EQ(r.code, 0) << r.output;
    std::vector<std::string> lines;
    std::string table;
    for (size_t at = r.output.find('\n') + 1, end; (end = r.output.find('\n', at)) != std::string::npos; at = end + 1) {
        std::string line = r.output.substr(at, end - at);
        if (line.rfind("table ", 0) == 0) table = line;
        else if (line.rfind("  index ", 0) == 0) lines.push_back(table + " index" + line.substr(line.find(' ', 8)));
        else if (!line.empty()) lines.push_back(table + line.substr(0, line.find(')') + 1));
    }
    std::sort(lines.begin(), lines.end());
    std::string out;
    for (const auto& l : lines) out += l + "\n";
    return out;
}

// Every table of a report verified.
void EveryTableVerified(const std::string& report, const std::vector<std::string>& tables) {
    for (const std::string& t : tables) EXPECT_TRUE(Has(report, "  " + t + ": verified")) << t << "\n" << report;
}

std::vector<std::string> Tables(const zoltest::TempDir& dir, const std::string& file) {
    std::string out = Shell("mdb-tables -1 " + Q(dir.File(file).string())).output;
    std::vector<std::string> names;
    for (size_t at = 0, end; (end = out.find('\n', at)) != std::string::npos; at = end + 1)
        names.push_back(out.substr(at, end - at));
    return names;
}

} // namespace

TEST(SampleFiles, AccessFilesIntoMariaDbAndBackArriveVerified) {
    for (const char* file : kSampleFiles) {
        SCOPED_TRACE(file);
        zoltest::TempDir dir;
        CopySample(dir, file);
        ScratchDb db("tr_sample");
        Ran r = Zol({"migrate", "--from", AccessAttrs(dir, file), "--to", MyAttrs(db.Name())});
        EXPECT_EQ(r.code, 0) << r.output;
        auto names = Tables(dir, file);
        EveryTableVerified(r.output, names);
        // Row counts as mdbtools and the server count them.
        for (const std::string& t : names) {
            if (Has(r.output, "  " + t + ": verified")) {
                EXPECT_EQ(Shell("mdb-count " + Q(dir.File(file).string()) + " " + Q(t)).output,
                          Client("SELECT COUNT(*) FROM `" + t + "`", db.Name()))
                    << t;
            }
        }

        NewAccessFile(dir, "back.mdb");
        r = Zol({"migrate", "--from", MyAttrs(db.Name()), "--to", AccessAttrs(dir, "back.mdb")});
        EXPECT_EQ(r.code, 0) << r.output;
    }
}

TEST(SampleFiles, RelationshipsOfAnAccessFileBecomeForeignKeys) {
    zoltest::TempDir dir;
    CopySample(dir, "indexTestV2003.mdb");
    ScratchDb db("tr_rel");
    Ran r = Zol({"migrate", "--from", AccessAttrs(dir, "indexTestV2003.mdb"), "--to", MyAttrs(db.Name())});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_EQ(Client("SELECT REFERENCED_TABLE_NAME, UPDATE_RULE, DELETE_RULE FROM "
                     "INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS WHERE CONSTRAINT_SCHEMA = DATABASE() "
                     "ORDER BY REFERENCED_TABLE_NAME",
                     db.Name()),
              "Table2\tRESTRICT\tCASCADE\nTable3\tCASCADE\tRESTRICT\n");
}

TEST(SampleFiles, AccessFilesThroughXmlKeepTheirSchema) {
    for (const char* file : kSampleFiles) {
        SCOPED_TRACE(file);
        zoltest::TempDir dir;
        CopySample(dir, file);
        std::string xml = ToUtf8(dir.XmlAttrs("s.xml"));
        Ran r = Zol({"migrate", "--from", AccessAttrs(dir, file), "--to", xml});
        EXPECT_EQ(r.code, 0) << r.output;
        NewAccessFile(dir, "again.mdb");
        r = Zol({"migrate", "--from", xml, "--to", AccessAttrs(dir, "again.mdb")});
        EXPECT_EQ(r.code, 0) << r.output;
        EXPECT_EQ(Shape(AccessAttrs(dir, file)), Shape(AccessAttrs(dir, "again.mdb")));
    }
}

TEST(SampleFiles, SakilaThroughXmlComesBackWithItsSchema) {
    zoltest::TempDir dir;
    ScratchDb back("tr_sakila_xml");
    std::string xml = ToUtf8(dir.XmlAttrs("sakila.xml"));
    Ran r = Zol({"migrate", "--from", MyAttrs(Sakila::Name()), "--to", xml});
    EXPECT_EQ(r.code, 0) << r.output;
    r = Zol({"migrate", "--from", xml, "--to", MyAttrs(back.Name())});
    EXPECT_EQ(r.code, 0) << r.output;
    std::string columns = "SELECT TABLE_NAME, COLUMN_NAME, COLUMN_TYPE, IS_NULLABLE, COLUMN_DEFAULT, EXTRA FROM "
                          "INFORMATION_SCHEMA.COLUMNS WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME IN "
                          "(SELECT TABLE_NAME FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_SCHEMA = DATABASE() AND "
                          "TABLE_TYPE = 'BASE TABLE') ORDER BY 1, 2";
    EXPECT_EQ(Client(columns, Sakila::Name()), Client(columns, back.Name()));
    std::string keys = "SELECT TABLE_NAME, INDEX_NAME, SEQ_IN_INDEX, COLUMN_NAME, NON_UNIQUE, INDEX_TYPE FROM "
                       "INFORMATION_SCHEMA.STATISTICS WHERE TABLE_SCHEMA = DATABASE() ORDER BY 1, 2, 3";
    EXPECT_EQ(Client(keys, Sakila::Name()), Client(keys, back.Name()));
}
