// Rows of a text stream sent on as arrays of parameters: in the server's
// binary form while the stream has it, as text for rows kept aside while
// another statement used the source connection; judged by the server
// comparing the stored values.
#include "common/failure.hpp"
#include "mysql_fixture.hpp"

namespace zolsdk::mysqltest {
namespace {

using namespace ado;
using zoltest::Failure;

int64_t Count(Connection& c, const String& sql) {
    return c.Execute(sql)->Fields().Item(int32_t{0}).Value().ToLong();
}

TEST(MySqlRowBatches, RowsArriveInTheirBinaryFormAndAsTextWhenKeptAside) {
    ScratchDb db("batch");
    db.Run(u"CREATE TABLE src (id BIGINT PRIMARY KEY, u BIGINT UNSIGNED, s VARCHAR(20), b VARBINARY(8), "
           u"d DATETIME(2), z DATE, t TIME(1), f DOUBLE, x DECIMAL(30,10), y YEAR, e ENUM('a','b c')) "
           u"DEFAULT CHARSET utf8mb4");
    db.Run(u"INSERT INTO src SELECT seq, 18446744073709551615 - seq, "
           u"IF(seq % 7 = 0, NULL, CONCAT('a', CHAR(0 USING utf8mb4), '\U0001F600', seq)), "
           u"UNHEX(CONCAT('00FF', HEX(seq))), '2020-01-02 03:04:05.25' + INTERVAL seq SECOND, "
           u"IF(seq % 5 = 0, '0000-00-00', '2024-02-29'), SEC_TO_TIME(CAST(seq AS SIGNED) * 997 - 1500000) + INTERVAL 0.5 SECOND, "
           u"seq / 3e0, -seq / 7, IF(seq % 11 = 0, 0, 1901 + seq % 250), IF(seq % 2, 'a', 'b c') "
           u"FROM seq_1_to_3000");
    db.Run(u"CREATE TABLE dst LIKE src");
    auto source = ServerConnection(db.Name()), target = ServerConnection(db.Name());
    ASSERT_TRUE(target->TakesRowBatches());
    const String insert = u"INSERT INTO dst VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
    std::unique_ptr<RowBatch> batch = target->NewRowBatch(insert);

    // A batch is only ever sent on its own connection.
    DbError e = Failure([&] { source->SendRowBatch(*batch); });
    EXPECT_TRUE(Contains(e.Description(), u"another connection")) << ToUtf8(e.Description());

    std::unique_ptr<Connection::TextStream> rows = source->OpenTextStream(u"SELECT * FROM src ORDER BY id");
    std::unique_ptr<Connection::RowStream> other;
    TextRow row;
    int64_t read = 0, taken = 0, switched = 0;
    while (rows->Next(row)) {
        EXPECT_EQ(row.wire != nullptr, other == nullptr) << "row " << read + 1;
        if (!batch->Add(row)) {
            // Rows of the other form wait for the batch to be sent.
            ++switched;
            taken += target->SendRowBatch(*batch);
            batch->Clear();
            ASSERT_TRUE(batch->Add(row));
        }
        if (batch->Rows() == 250) {
            taken += target->SendRowBatch(*batch);
            batch->Clear();
        }
        // Another statement on the source: the rest of the rows are kept aside.
        if (++read == 1100) other = source->OpenRowStream(u"SELECT 1");
    }
    if (batch->Rows()) taken += target->SendRowBatch(*batch);
    EXPECT_EQ(read, 3000);
    EXPECT_EQ(taken, 3000);
    EXPECT_EQ(switched, 1);
    EXPECT_EQ(Count(*target, u"SELECT COUNT(*) FROM dst"), 3000);
    EXPECT_EQ(Count(*target, u"SELECT COUNT(*) FROM src JOIN dst USING (id) WHERE BINARY src.s <=> BINARY dst.s AND "
                             u"src.u = dst.u AND src.b <=> dst.b AND src.d = dst.d AND src.z = dst.z AND src.t = dst.t "
                             u"AND src.f = dst.f AND src.x = dst.x AND src.y = dst.y AND src.e = dst.e"),
              3000);
    // The times of over a day and below zero are there as they were.
    EXPECT_EQ(Count(*target, u"SELECT COUNT(*) FROM dst WHERE t > '24:00:00' OR t < '00:00:00'"),
              Count(*target, u"SELECT COUNT(*) FROM src WHERE t > '24:00:00' OR t < '00:00:00'"));
}

TEST(MySqlRowBatches, AValueTheTableRefusesFailsTheBatchWithTheServersText) {
    ScratchDb db("batch_refused");
    db.Run(u"CREATE TABLE src (id INT PRIMARY KEY, v VARCHAR(30))");
    db.Run(u"INSERT INTO src VALUES (1, 'short'), (2, 'far too long for it')");
    db.Run(u"CREATE TABLE dst (id INT PRIMARY KEY, v VARCHAR(5))");
    auto source = ServerConnection(db.Name()), target = ServerConnection(db.Name());
    int32_t n = 0;
    target->Execute(u"SET SESSION sql_mode = 'STRICT_ALL_TABLES'", n);
    std::unique_ptr<RowBatch> batch = target->NewRowBatch(u"INSERT INTO dst VALUES (?, ?)");
    std::unique_ptr<Connection::TextStream> rows = source->OpenTextStream(u"SELECT * FROM src ORDER BY id");
    TextRow row;
    while (rows->Next(row)) ASSERT_TRUE(batch->Add(row));
    DbError e = Failure([&] { target->SendRowBatch(*batch); });
    EXPECT_TRUE(Contains(e.Description(), u"Data too long for column 'v'")) << ToUtf8(e.Description());
    // Without strict mode the server cuts the value with a warning, which fails the batch as well.
    target->Execute(u"SET SESSION sql_mode = ''", n);
    e = Failure([&] { target->SendRowBatch(*batch); });
    EXPECT_TRUE(Contains(e.Description(), u"Data truncated for column 'v'")) << ToUtf8(e.Description());
}

} // namespace
} // namespace zolsdk::mysqltest
