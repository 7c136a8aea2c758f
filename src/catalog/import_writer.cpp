#include "catalog/import_writer.hpp"

#include <cstdio>
#include <utility>

#include "support/replace_text.hpp"

namespace zolsdk {

namespace {
String RowMark() {
    // "%" and the hexadecimal code of ";": the three characters %3B.
    char buf[8];
    std::snprintf(buf, sizeof buf, "%%%X", static_cast<unsigned>(';'));
    return Ascii(buf);
}

int32_t ByteLength(const String& s) { return static_cast<int32_t>(s.size() * 2); }
} // namespace

ImportWriter::ImportWriter(Ref<IDBSession> session, String table)
    : session_(std::move(session)), table_(std::move(table)), parameters_(Ref<Collection>::New()),
      rowMark_(RowMark()) {
    builder_ = session_->DbSqlBuilder();
}

ImportWriter::~ImportWriter() {
    // A failure of the caller's own ends the import; the batch in flight is
    // waited for, so that nothing runs on the session after the import ends.
    if (sender_.joinable()) sender_.join();
}

void ImportWriter::AddColumn(int32_t group, const String& name, const String& parameterName) {
    char two[16];
    std::snprintf(two, sizeof two, "%02d", group);
    if (!columnSet_.empty()) columnSet_ += u",";
    columnSet_ += Ascii(two) + name;
    if (!parameterName.empty()) {
        auto p = Ref<ado::Parameter>::New();
        p->Name(parameterName);
        p->Type(group == 10 ? ado::adType::LongVarBinary : ado::adType::LongVarChar);
        parameters_->Add(Variant(p), parameterName);
    }
}

ImportWriter::Way ImportWriter::ChooseWay(int32_t mode) {
    if (mode != 0 && mode != 3) return Way::Bound;
    if (session_->IsFeatureSupported(u"multi_row_insert")) return Way::Batched;
    return parameters_->Count() == 0 ? Way::Text : Way::TextOrBound;
}

void ImportWriter::BindRow(const Ref<DbDataRow>& row) {
    // The same parameter objects serve every row.
    for (const Variant& v : *parameters_) {
        Ref<ado::Parameter> p = v.As<ado::Parameter>();
        if (row->IsNullValue(Variant(p->Name()))) {
            p->Size(4); // the length of "NULL"
            p->Value(Variant::Null());
            continue;
        }
        Ref<DbBlob> blob = row->Item(Variant(p->Name())).As<DbBlob>();
        if (blob->IsBinary()) {
            p->Size(blob->size() + 1);
            p->Value(Variant(blob->DataBytes()));
        } else {
            p->Size(blob->size());
            p->Value(Variant(blob->text()));
        }
    }
}

void ImportWriter::WriteBound(const Ref<DbDataRow>& row, const String& sql) {
    BindRow(row);
    session_->ExecuteNoQueryEx(sql, parameters_);
}

void ImportWriter::InsertBound(const Ref<DbDataRow>& row, const RowText& text) {
    String values = text(row, u"?");
    WriteBound(row, builder_->InsertSql(table_, columnSet_, values, u"?"));
}

void ImportWriter::Write(Way way, const Ref<DbDataRow>& row, const RowText& text) {
    switch (way) {
    case Way::Bound:
        InsertBound(row, text);
        return;
    case Way::Text: {
        String values = text(row, u"=");
        session_->ExecuteNoQuery(builder_->InsertSql(table_, columnSet_, values, u"="));
        return;
    }
    case Way::TextOrBound: {
        String values = text(row, u"=");
        if (ByteLength(values) < kByteLimit) session_->ExecuteNoQuery(builder_->InsertSql(table_, columnSet_, values, u"="));
        else InsertBound(row, text);
        return;
    }
    case Way::Batched: {
        // The row mark cannot occur inside a row: the builder turns %3%B back.
        String values = ReplaceAll(text(row, u"="), rowMark_, u"%3%B");
        int32_t bytes = ByteLength(values);
        ++batchRows_;
        if (bytes + batchBytes_ < kByteLimit) {
            if (batchRows_ > 1) batch_.Append(rowMark_);
            batch_.Append(values);
            batchBytes_ += bytes;
            return;
        }
        if (batchBytes_ > 0) Flush();
        if (bytes < kByteLimit) {
            batch_.Append(values);
            ++batchRows_;
            batchBytes_ = bytes;
        } else {
            Settle(); // statements reach the engine in the order of the rows
            InsertBound(row, text);
            batchRows_ = 0;
            batchBytes_ = 0;
        }
        return;
    }
    }
}

void ImportWriter::Flush() {
    if (batchRows_ <= 0) return;
    String rows = batch_.ToString();
    batchRows_ = 0;
    batchBytes_ = 0;
    batch_.Length(0);
    // One batch at a time: the one before must have gone in first.
    Settle();
    sentLine_ = mark_ ? mark_->line : 0;
    // The engine works on this batch while the caller renders the next one.
    sender_ = std::thread([this, rows = std::move(rows)] {
        try {
            session_->ExecuteNoQuery(builder_->BulkInsertSql(table_, columnSet_, rows, u"="));
        } catch (...) {
            sendFailure_ = std::current_exception();
        }
    });
}

void ImportWriter::Settle() {
    if (sender_.joinable()) sender_.join();
    if (!sendFailure_) return;
    std::exception_ptr failure = std::exchange(sendFailure_, nullptr);
    if (mark_) mark_->line = sentLine_;
    std::rethrow_exception(failure);
}

} // namespace zolsdk
