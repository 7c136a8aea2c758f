#pragma once
// The writing side of a data import: the typed column set, one parameter
// per large-value column, and the three ways a row reaches the engine
// (batched multi-row text, row by row as text, bound parameters).
#include <exception>
#include <functional>
#include <thread>

#include "support/string_builder.hpp"
#include "zolsdk/data/data_row.hpp"
#include "zolsdk/dialects/sql_builder.hpp"
#include "platform/ado/connection.hpp"
#include "platform/failure_chain.hpp"
#include "zolsdk/platform/collection.hpp"
#include "zolsdk/sessions/session.hpp"

namespace zolsdk {

class ImportWriter {
public:
    // Statement text of at most this many bytes (two a character) may carry
    // a row's values inline; beyond it the row goes with bound parameters.
    static constexpr int32_t kByteLimit = 0x80000;

    // A row's value record for a substitute mark ("=" inline, "?" bound).
    using RowText = std::function<String(const Ref<DbDataRow>& row, const String& mark)>;

    ImportWriter(Ref<IDBSession> session, String table);
    ~ImportWriter();
    ImportWriter(const ImportWriter&) = delete;
    ImportWriter& operator=(const ImportWriter&) = delete;

    // Adds a column to the column set; `parameterName` non-empty gives the
    // column a bound parameter of the type for its group (2 text, 10 bytes).
    void AddColumn(int32_t group, const String& name, const String& parameterName);
    const String& ColumnSet() const { return columnSet_; }

    // How the rows of a data set of this fill mode are written.
    enum class Way { Bound, Text, TextOrBound, Batched };
    Way ChooseWay(int32_t mode);

    // Writes one row in the given way (Batched keeps it for the next flush).
    void Write(Way way, const Ref<DbDataRow>& row, const RowText& text);
    // Sends what the batch holds. The statement is built and runs on a
    // thread of its own while the caller reads the next rows; Settle waits
    // for it.
    void Flush();
    // Waits for the batch still being sent; its failure is raised here, with
    // the line of `mark` the flush was called from, as if it had failed then.
    void Settle();
    // The caller's routine mark, whose line a late failure restores.
    void TrackLines(RoutineMark* mark) { mark_ = mark; }

    // One statement for one row, text or bound, with a given builder call.
    void WriteBound(const Ref<DbDataRow>& row, const String& sql);
    void BindRow(const Ref<DbDataRow>& row);
    const Ref<Collection>& Parameters() const { return parameters_; }
    IDbSqlBuilder& Builder() { return *builder_; }

private:
    Ref<IDBSession> session_;
    Ref<IDbSqlBuilder> builder_;
    String table_;
    String columnSet_;
    Ref<Collection> parameters_;
    CStringBuilder batch_;
    int32_t batchRows_ = 0;
    int32_t batchBytes_ = 0;
    const String rowMark_;
    // The batch in flight, and how it ended.
    std::thread sender_;
    std::exception_ptr sendFailure_;
    RoutineMark* mark_ = nullptr;
    int sentLine_ = 0;

    void InsertBound(const Ref<DbDataRow>& row, const RowText& text);
};

} // namespace zolsdk
