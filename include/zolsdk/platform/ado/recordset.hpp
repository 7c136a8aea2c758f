#pragma once
// The in-memory rowset: a table of Variants with one cursor, a filter view,
// a sort order and bookmarks that survive filter changes. Providers fill it
// through AddNew/Update and hand it out disconnected.
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk::ado {

class Recordset;

class ZOLSDK_API Field {
public:
    const String& Name() const { return name_; }
    int32_t Type() const { return type_; }
    int32_t DefinedSize() const { return size_; }
    int32_t Attributes() const { return attributes_; }
    uint8_t Precision() const { return precision_; }
    uint8_t NumericScale() const { return scale_; }
    void Precision(uint8_t p) { precision_ = p; }
    void NumericScale(uint8_t s) { scale_ = s; }
    // The cell of the current row; 3021 when there is none.
    const Variant& Value() const;
    void Value(const Variant& v);

private:
    friend class Recordset;
    friend class Fields;
    Recordset* rs_ = nullptr;
    size_t index_ = 0;
    String name_;
    int32_t type_ = 0, size_ = 0, attributes_ = -1;
    uint8_t precision_ = 0, scale_ = 0;
};

class ZOLSDK_API Fields {
public:
    // Defines a field; only while the rowset is closed (3705 otherwise).
    void Append(StringView name, int32_t type, int32_t definedSize = 0, int32_t attributes = -1);
    // By name (case-blind) or by 0-based position; 3265 when there is none.
    Field& Item(StringView name);
    // Literals and Strings convert to both StringView and Variant: these
    // pick the name lookup for them.
    Field& Item(const char16_t* name) { return Item(StringView(name)); }
    Field& Item(const String& name) { return Item(StringView(name)); }
    Field& Item(int32_t index);
    Field& Item(const Variant& key);
    int32_t Count() const { return static_cast<int32_t>(fields_.size()); }
    // -1 when absent.
    int32_t IndexOf(StringView name) const;

private:
    friend class Recordset;
    Recordset* rs_ = nullptr;
    std::vector<std::unique_ptr<Field>> fields_;
};

class ZOLSDK_API Recordset : public Object {
public:
    Recordset();
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;

    void CursorLocation(int32_t v) { cursorLocation_ = v; }
    int32_t CursorLocation() const { return cursorLocation_; }

    ado::Fields& Fields() { return fields_; }
    const ado::Fields& Fields() const { return fields_; }
    // Shorthands for Fields().Item(name).Value().
    const Variant& Value(StringView field) { return fields_.Item(field).Value(); }
    void Value(StringView field, const Variant& v) { fields_.Item(field).Value(v); }

    // Opens an empty rowset of the defined fields.
    void Open();
    void Close();
    int32_t State() const;

    // Appends a row and moves to it; the row is pending until Update.
    void AddNew();
    void Update();
    void UpdateBatch(int32_t affectRecords = adAffectAllChapters);
    // Drops a pending new row; the cursor returns to the row that was
    // current before AddNew.
    void Cancel();
    void CancelUpdate() { Cancel(); }

    // EOF and BOF of the platform (EOF is a C macro, hence the spelling).
    bool Eof() const;
    bool Bof() const;
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    // `count` rows on from the first row when start is adBookmarkFirst (1),
    // from the current row when start is empty/0.
    void Move(int32_t count, const Variant& start = Variant());

    Variant Bookmark() const;
    void Bookmark(const Variant& mark);

    int32_t RecordCount() const;

    // "name = 'value'" (AND/OR of such terms; = <> < > <= >= LIKE) or a
    // number 0 (adFilterNone) / an empty text to lift it.
    void Filter(const Variant& criteria);
    const Variant& Filter() const { return filter_; }
    // "field [ASC|DESC], ..."; an empty text restores the order of entry.
    void Sort(StringView fields);
    const String& Sort() const { return sort_; }
    // Moves to the next row (from the current one, after skipping
    // `skipRecords`) that meets a single "name op value" criterion; EOF when
    // none does. A negative direction searches backwards (BOF when none).
    void Find(StringView criteria, int32_t skipRecords = 0, int32_t searchDirection = 1);

    // The rows in view from the cursor on, as text; the cursor ends at EOF.
    String GetString(int32_t format = adClipString, int32_t numRows = -1, StringView columnDelimiter = u"\t",
                     StringView rowDelimiter = u"\r", StringView nullExpr = u"");

private:
    friend class Field;
    friend class ado::Fields;
    // The providers' side of the rowset (filling it, streaming into it) is
    // reached through RowsetFeed inside the library only.
    friend class RowsetFeed;

    using RowFeed = std::function<bool(size_t rows)>;
    ZOLSDK_LOCAL void AppendRow(std::vector<Variant> cells);
    ZOLSDK_LOCAL void SetRowFeed(RowFeed feed, int32_t extraState);
    void ReleasePassedRows(bool on) { releasePassed_ = on; }
    ZOLSDK_LOCAL void FeedComplete();

    struct Row {
        std::vector<Variant> cells;
    };
    ado::Fields fields_;
    std::vector<Row> rows_;
    std::vector<size_t> view_;     // indexes into rows_, in view order
    long pos_ = -1;                // cursor in view_: -1 before first, size() after last
    bool releasePassed_ = false;
    size_t dropped_ = 0;           // rows released from the front (bookmarks count them)
    bool open_ = false;
    bool pendingNew_ = false;
    long posBeforeNew_ = -1;       // where Cancel of a new row returns to
    int32_t cursorLocation_ = 2;
    Variant filter_ = Variant(int32_t{0});
    String sort_;
    RowFeed feed_;
    int32_t extraState_ = 0;

    struct Term;
    struct Criteria;

    ZOLSDK_LOCAL void RequireOpen() const;
    ZOLSDK_LOCAL void RequireCurrent() const;
    ZOLSDK_LOCAL void Rebuild(long keepRow);
    ZOLSDK_LOCAL void Pull(size_t rows) const;
    ZOLSDK_LOCAL void DropPassedRows();
    ZOLSDK_LOCAL void RequireNothingDropped() const;
    ZOLSDK_LOCAL void PullAll() const;
    size_t ViewSize() const { return view_.size(); }
    ZOLSDK_LOCAL bool Matches(const Criteria& c, const Row& r) const;
    ZOLSDK_LOCAL Criteria Parse(StringView text) const;
};

// A new, open, disconnected rowset with the given fields (name, type, size).
ZOLSDK_API Ref<Recordset> NewRowset(std::initializer_list<std::tuple<const char16_t*, int32_t, int32_t>> fields);

} // namespace zolsdk::ado
