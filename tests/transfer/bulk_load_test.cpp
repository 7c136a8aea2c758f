// The bulk load into MariaDB through zol migrate: every class of value that
// its text form must escape or carry whole, judged by the mariadb client.
#include "transfer/transfer_fixture.hpp"

using namespace zolsdk;
using namespace zolsdk::transfertest;

namespace {

struct Column {
    const char* type;
    std::vector<const char*> values; // SQL literals, one a row
};

// Each column's hostile values; rows are made across the columns.
const std::vector<Column> kColumns = {
    {"VARCHAR(40)", {"'tab\\there'", "'line\\nbreak\\r\\n'", "'back\\\\slash\\\\'", "'\\\\N'", "'N'", "''", "NULL",
                     "'nul\\0in'", "'4-byte \\xF0\\x9F\\x98\\x80 and é'"}},
    {"TEXT", {"REPEAT('\\\\\\t\\n', 3000)", "'\\\\'", "'\\0'", "NULL", "''", "' '", "'\"quotes\\''", "'x'", "'end\\\\'"}},
    {"VARBINARY(16)", {"X'00090A5C0D'", "X'5C4E'", "X''", "NULL", "X'FF'", "X'0A'", "X'09'", "X'00'", "X'80C0'"}},
    {"LONGBLOB", {"REPEAT(X'000A5C09FF', 10000)", "X'5C'", "NULL", "X''", "X'F09F'", "X'0D0A'", "X'01'", "X'FE'",
                  "X'5C5C4E'"}},
    {"BIGINT UNSIGNED", {"18446744073709551615", "0", "NULL", "9223372036854775808", "1", "2", "3", "4", "5"}},
    {"BIGINT", {"-9223372036854775808", "9223372036854775807", "NULL", "0", "-1", "1", "2", "3", "4"}},
    {"DECIMAL(38,10)", {"-1234567890123456789012345678.0123456789", "0.0000000001", "NULL", "0", "-0.5", "1", "2", "3",
                        "4"}},
    {"DOUBLE", {"1.7976931348623157e308", "-2.2250738585072014e-308", "0.1", "NULL", "1e-300", "3", "-0.25", "5", "6"}},
    {"DATETIME", {"'9999-12-31 23:59:59'", "'1000-01-01 00:00:00'", "NULL", "'2020-02-29 12:34:56'",
                  "'1970-01-01 00:00:01'", "'0001-01-01 00:00:00'", "'0029-12-31 23:59:59'", "'0099-06-15 01:02:03'", "'2001-01-04'"}},
    {"DATE", {"'0100-01-01'", "'9999-12-31'", "NULL", "'2024-02-29'", "'1900-03-01'", "'0001-01-01'", "'0029-12-31'",
              "'0030-01-01'", "'0099-12-31'"}},
    {"TIME", {"'23:59:59'", "'00:00:00'", "NULL", "'12:00:01'", "'01:02:03'", "'00:00:01'", "'10:00:00'", "'11:00:00'",
              "'12:00:00'"}},
    {"ENUM('a','b c','\\\\')", {"'a'", "'b c'", "'\\\\'", "NULL", "'a'", "'a'", "'a'", "'a'", "'a'"}},
    {"TINYINT(1)", {"1", "0", "NULL", "1", "0", "1", "0", "1", "0"}},
    // Carried as the server writes them: every digit of a second, zero dates,
    // a TIMESTAMP as its instant.
    {"DATETIME(6)", {"'2020-01-02 03:04:05.123456'", "'0000-00-00 00:00:00'", "NULL", "'1000-01-01 00:00:00.000001'",
                     "'9999-12-31 23:59:59.999999'", "'2020-02-29 00:00:00'", "'0001-01-01 00:00:00.5'",
                     "'2020-00-00 00:00:00'", "'2020-01-00 12:00:00'"}},
    {"TIME(3)", {"'-838:59:59.000'", "'838:59:59.999'", "NULL", "'00:00:00.001'", "'-00:00:01.5'", "'24:00:00'",
                 "'100:00:00'", "'12:34:56.789'", "'00:00:00'"}},
    {"TIMESTAMP(2) NULL", {"'2038-01-19 03:14:07.99'", "'1970-01-01 00:00:01'", "NULL", "'2021-03-28 02:30:00'",
                           "'2021-10-31 02:30:00'", "'2000-01-01 00:00:00.01'", "NULL", "NULL", "NULL"}},
    {"DATE", {"'0000-00-00'", "'2020-00-15'", "NULL", "'2020-01-00'", "'1000-01-01'", "'2020-01-01'", "NULL", "NULL",
              "NULL"}},
    // The server writes a FLOAT with six digits (16777216 as "16777200").
    {"FLOAT", {"3.4028e38", "-1.1754944e-38", "0.1", "NULL", "16777216", "1e-45", "123456.7890625", "1.00000012",
               "-0.333333343"}},
    {"SET('x','y','z')", {"'x,z'", "''", "NULL", "'y'", "'x,y,z'", "'x'", "'x'", "'x'", "'x'"}},
    {"YEAR", {"1901", "2155", "NULL", "0", "2000", "1999", "2024", "2025", "2026"}},
};

} // namespace

TEST(BulkLoad, EveryHostileValueArrivesByteForByte) {
    ScratchDb src("tr_bulk"), dst("tr_bulk_to");
    std::string create = "CREATE TABLE hostile (id INT PRIMARY KEY", row, all, hex;
    for (size_t c = 0; c < kColumns.size(); ++c) {
        std::string name = "c" + std::to_string(c);
        create += ", " + name + " " + kColumns[c].type;
        // Every bit of a FLOAT shows in the DOUBLE it widens to.
        std::string shown = std::string(kColumns[c].type) == "FLOAT" ? "CAST(" + name + " AS DOUBLE)" : name;
        hex += ", IF(" + name + " IS NULL, 'null', LEFT(MD5(" + shown + "), 8))";
    }
    Client(create + ") DEFAULT CHARSET utf8mb4", src.Name());
    for (size_t r = 0; r < kColumns.front().values.size(); ++r) {
        row = "(" + std::to_string(r);
        for (const Column& col : kColumns) row += std::string(", ") + col.values[r];
        all += (all.empty() ? "" : ", ") + row + ")";
    }
    Client("INSERT INTO hostile VALUES " + all, src.Name());

    std::string judge = "SELECT id" + hex + " FROM hostile ORDER BY id";
    std::string before = Client(judge, src.Name());
    EXPECT_EQ(std::count(before.begin(), before.end(), '\n'), 9);

    // By arrays of parameters in the server's binary form, then by the bulk
    // load's text (what a server without such arrays gets).
    Ran r;
    for (bool batches : {false, true}) {
        SCOPED_TRACE(batches ? "by batches" : "by bulk load");
        ScratchDb by(batches ? "tr_bulk_batch" : "tr_bulk_load");
        if (!batches) setenv("ZOL_ROW_BATCHES", "off", 1);
        r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", MyAttrs(by.Name())});
        unsetenv("ZOL_ROW_BATCHES");
        ASSERT_EQ(r.code, 0) << r.output;
        EXPECT_NE(r.output.find("1 of 1 tables copied and verified"), std::string::npos) << r.output;
        EXPECT_EQ(Client(judge, by.Name()), before);
    }
    r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", MyAttrs(dst.Name())});
    ASSERT_EQ(r.code, 0) << r.output;

    // Nothing was announced as changed: the table went as the server's text.
    EXPECT_EQ(r.output.find("dropped"), std::string::npos) << r.output;
    EXPECT_EQ(r.output.find("as Null"), std::string::npos) << r.output;

    // The verification sees what the copy carries: a millionth of a second
    // changed on the target is a difference.
    Client("UPDATE hostile SET c13 = c13 + INTERVAL 1 MICROSECOND WHERE id = 0", dst.Name());
    r = Zol({"verify", "--from", MyAttrs(src.Name()), "--to", MyAttrs(dst.Name())});
    EXPECT_EQ(r.code, 1) << r.output;
    EXPECT_NE(r.output.find("hostile: MISMATCH"), std::string::npos) << r.output;
}

TEST(BulkLoad, ATableWithBitsGoesByValuesAndSaysWhatItCannotCarry) {
    // A BIT column's text is its raw bits: such a table is read as values,
    // which hold neither fractions of a second nor zero dates; the plan says
    // so before a row moves, and the rest arrives whole.
    ScratchDb src("tr_bits"), dst("tr_bits_to");
    Client("CREATE TABLE bits (id INT PRIMARY KEY, b BIT(5), t DATETIME(3), d DATE, s VARCHAR(10)) DEFAULT CHARSET utf8mb4",
           src.Name());
    Client("INSERT INTO bits VALUES (1, b'10101', '2020-01-01 00:00:00', '2020-01-01', 'tab\there'),"
           " (2, b'0', '2020-01-01 00:00:01', '0000-00-00', NULL), (3, NULL, NULL, NULL, '\\\\N')",
           src.Name());
    Ran r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", MyAttrs(dst.Name())});
    ASSERT_EQ(r.code, 0) << r.output;
    EXPECT_NE(r.output.find("t: fractions of a second are dropped"), std::string::npos) << r.output;
    EXPECT_NE(r.output.find("d: 1 zero date arrives as Null ('0000-00-00' or a zero month or day)"), std::string::npos)
        << r.output;
    EXPECT_NE(r.output.find("1 of 1 tables copied and verified"), std::string::npos) << r.output;
    const std::string judge = "SELECT id, BIN(b), t, d, HEX(s) FROM bits ORDER BY id";
    EXPECT_EQ(Client(judge, dst.Name()),
              "1\t10101\t2020-01-01 00:00:00.000\t2020-01-01\t7461620968657265\n"
              "2\t0\t2020-01-01 00:00:01.000\tNULL\tNULL\n"
              "3\tNULL\tNULL\tNULL\t5C4E\n");
}
