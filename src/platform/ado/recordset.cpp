#include "zolsdk/platform/ado/recordset.hpp"

#include <algorithm>

#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::ado {

// ---- criteria of Filter and Find -------------------------------------------

struct Recordset::Term {
    size_t field = 0;
    enum Op { Eq, Ne, Lt, Gt, Le, Ge, Like } op = Eq;
    Variant value; // Null for NULL
};

struct Recordset::Criteria {
    // Disjunction of conjunctions: OR binds looser than AND, as in the
    // platform's filter strings.
    std::vector<std::vector<Term>> any;
};

namespace {

[[noreturn]] void BadCriteria() { RaisePlatform(err::AdoArguments); }

struct Lexer {
    StringView t;
    size_t i = 0;
    void Blanks() { while (i < t.size() && (t[i] == u' ' || t[i] == u'\t')) ++i; }
    bool AtEnd() { Blanks(); return i >= t.size(); }
    bool Word(StringView w) {
        Blanks();
        if (i + w.size() > t.size() || !EqualsNoCase(t.substr(i, w.size()), w)) return false;
        size_t e = i + w.size();
        if (e < t.size() && (t[e] == u'_' || (t[e] >= u'0' && t[e] <= u'9') || LowerChar(t[e]) != UpperChar(t[e]))) return false;
        i = e;
        return true;
    }
    String Name() {
        Blanks();
        if (i < t.size() && t[i] == u'[') {
            size_t e = t.find(u']', i);
            if (e == StringView::npos) BadCriteria();
            String n(t.substr(i + 1, e - i - 1));
            i = e + 1;
            return n;
        }
        size_t s = i;
        while (i < t.size() && t[i] != u' ' && t[i] != u'=' && t[i] != u'<' && t[i] != u'>' && t[i] != u'\t') ++i;
        if (i == s) BadCriteria();
        return String(t.substr(s, i - s));
    }
};

bool LikeMatch(StringView s, StringView p) {
    // '*' and '%' for any run, '_' and '?' for one character; case-blind.
    size_t si = 0, pi = 0, star = StringView::npos, mark = 0;
    while (si < s.size()) {
        if (pi < p.size() && (p[pi] == u'*' || p[pi] == u'%')) { star = pi++; mark = si; }
        else if (pi < p.size() && (p[pi] == u'_' || p[pi] == u'?' || LowerChar(p[pi]) == LowerChar(s[si]))) { ++pi; ++si; }
        else if (star != StringView::npos) { pi = star + 1; si = ++mark; }
        else return false;
    }
    while (pi < p.size() && (p[pi] == u'*' || p[pi] == u'%')) ++pi;
    return pi == p.size();
}

} // namespace

Recordset::Criteria Recordset::Parse(StringView text) const {
    Lexer lx{text};
    Criteria c;
    std::vector<Term> all;
    for (;;) {
        bool paren = false;
        lx.Blanks();
        if (lx.i < text.size() && text[lx.i] == u'(') { paren = true; ++lx.i; }
        Term term;
        String name = lx.Name();
        int32_t idx = fields_.IndexOf(name);
        if (idx < 0) BadCriteria();
        term.field = static_cast<size_t>(idx);
        lx.Blanks();
        auto two = text.substr(lx.i, 2);
        if (two == u"<>") { term.op = Term::Ne; lx.i += 2; }
        else if (two == u"<=") { term.op = Term::Le; lx.i += 2; }
        else if (two == u">=") { term.op = Term::Ge; lx.i += 2; }
        else if (lx.i < text.size() && text[lx.i] == u'=') { term.op = Term::Eq; ++lx.i; }
        else if (lx.i < text.size() && text[lx.i] == u'<') { term.op = Term::Lt; ++lx.i; }
        else if (lx.i < text.size() && text[lx.i] == u'>') { term.op = Term::Gt; ++lx.i; }
        else if (lx.Word(u"LIKE")) term.op = Term::Like;
        else BadCriteria();
        lx.Blanks();
        if (lx.i >= text.size()) BadCriteria();
        char16_t q = text[lx.i];
        if (q == u'\'' || q == u'#') {
            String v;
            size_t j = lx.i + 1;
            for (;;) {
                if (j >= text.size()) BadCriteria();
                if (text[j] == q) {
                    if (q == u'\'' && j + 1 < text.size() && text[j + 1] == u'\'') { v.push_back(u'\''); j += 2; continue; }
                    break;
                }
                v.push_back(text[j++]);
            }
            lx.i = j + 1;
            if (q == u'#') {
                double d;
                if (!TryParseDate(v, d)) BadCriteria();
                term.value = Variant::FromDate(d);
            } else {
                term.value = Variant(v);
            }
        } else if (lx.Word(u"NULL")) {
            term.value = Variant::Null();
        } else {
            size_t s = lx.i;
            while (lx.i < text.size() && text[lx.i] != u' ' && text[lx.i] != u')') ++lx.i;
            // Numbers in criteria are written with a point whatever the locale.
            Decimal dec;
            if (!Decimal::TryParse(text.substr(s, lx.i - s), u'.', dec)) BadCriteria();
            double d = dec.ToDouble();
            term.value = Variant(d);
        }
        lx.Blanks();
        if (paren) {
            if (lx.i >= text.size() || text[lx.i] != u')') BadCriteria();
            ++lx.i;
        }
        all.push_back(std::move(term));
        if (lx.AtEnd()) break;
        if (lx.Word(u"AND")) continue;
        if (lx.Word(u"OR")) { c.any.push_back(std::move(all)); all.clear(); continue; }
        BadCriteria();
    }
    c.any.push_back(std::move(all));
    return c;
}

bool Recordset::Matches(const Criteria& c, const Row& r) const {
    for (const auto& conj : c.any) {
        bool ok = true;
        for (const auto& t : conj) {
            const Variant& v = r.cells[t.field];
            bool hit;
            if (t.value.IsNull()) {
                bool isNull = v.IsNull() || v.IsEmpty();
                hit = t.op == Term::Eq ? isNull : (t.op == Term::Ne ? !isNull : false);
            } else if (v.IsNull() || v.IsEmpty()) {
                hit = false;
            } else if (t.op == Term::Like) {
                hit = LikeMatch(v.ToString(), t.value.ToString());
            } else {
                int cmp;
                try {
                    cmp = Variant::Compare(v, t.value, true);
                } catch (const DbError&) {
                    cmp = 2; // not comparable: only <> holds
                }
                switch (t.op) {
                case Term::Eq: hit = cmp == 0; break;
                case Term::Ne: hit = cmp != 0; break;
                case Term::Lt: hit = cmp == -1; break;
                case Term::Gt: hit = cmp == 1; break;
                case Term::Le: hit = cmp == -1 || cmp == 0; break;
                case Term::Ge: hit = cmp == 1 || cmp == 0; break;
                default: hit = false;
                }
            }
            if (!hit) { ok = false; break; }
        }
        if (ok) return true;
    }
    return false;
}

// ---- fields ---------------------------------------------------------------------

const Variant& Field::Value() const {
    rs_->RequireCurrent();
    return rs_->rows_[rs_->view_[static_cast<size_t>(rs_->pos_)]].cells[index_];
}

namespace {
bool IsLong(int32_t t) {
    return t == adType::LongVarChar || t == adType::LongVarWChar || t == adType::LongVarBinary;
}

Variant Coerce(const Variant& v, int32_t type, int32_t size) {
    if (v.IsNull() || v.IsEmpty()) return Variant::Null();
    switch (type) {
    case adType::SmallInt: return Variant(v.ToInteger());
    case adType::Integer: case adType::UnsignedSmallInt: return Variant(v.ToLong());
    case adType::TinyInt: case adType::UnsignedTinyInt: return Variant(v.ToByte());
    case adType::Single: return Variant(v.ToSingle());
    case adType::Double: return Variant(v.ToDouble());
    case adType::Currency: return Variant(v.ToCurrency());
    case adType::Date: case adType::DBDate: case adType::DBTime: case adType::DBTimeStamp:
        return Variant::FromDate(v.ToDate());
    case adType::Boolean: return Variant(v.ToBoolean());
    case adType::Decimal: case adType::Numeric: case adType::BigInt: case adType::UnsignedBigInt:
    case adType::UnsignedInt:
        if (v.Type() == VarType::Long || v.Type() == VarType::Integer) return v;
        return Variant(v.ToDecimal());
    case adType::BSTR: case adType::Char: case adType::WChar: case adType::VarChar: case adType::VarWChar:
    case adType::LongVarChar: case adType::LongVarWChar: case adType::GUID: {
        String s = v.ToString();
        if (!IsLong(type) && size > 0 && static_cast<int64_t>(s.size()) > size) RaisePlatform(err::AdoMultipleStep);
        return Variant(std::move(s));
    }
    case adType::Binary: case adType::VarBinary: case adType::LongVarBinary: {
        Bytes b = v.ToBytes();
        if (!IsLong(type) && size > 0 && static_cast<int64_t>(b.size()) > size) RaisePlatform(err::AdoMultipleStep);
        return Variant(std::move(b));
    }
    default: return v;
    }
}
} // namespace

void Field::Value(const Variant& v) {
    rs_->RequireCurrent();
    Variant c = Coerce(v, type_, size_);
    rs_->rows_[rs_->view_[static_cast<size_t>(rs_->pos_)]].cells[index_] = std::move(c);
}

void Fields::Append(StringView name, int32_t type, int32_t definedSize, int32_t attributes) {
    if (rs_->open_) RaisePlatform(err::AdoNotAllowedOpen);
    auto f = std::make_unique<Field>();
    f->rs_ = rs_;
    f->index_ = fields_.size();
    f->name_ = String(name);
    f->type_ = type;
    f->size_ = definedSize;
    f->attributes_ = attributes;
    fields_.push_back(std::move(f));
}

int32_t Fields::IndexOf(StringView name) const {
    for (size_t i = 0; i < fields_.size(); ++i)
        if (EqualsNoCase(fields_[i]->name_, name)) return static_cast<int32_t>(i);
    return -1;
}

Field& Fields::Item(StringView name) {
    int32_t i = IndexOf(name);
    if (i < 0) RaisePlatform(err::AdoItemNotFound);
    return *fields_[static_cast<size_t>(i)];
}

Field& Fields::Item(int32_t index) {
    if (index < 0 || index >= Count()) RaisePlatform(err::AdoItemNotFound);
    return *fields_[static_cast<size_t>(index)];
}

Field& Fields::Item(const Variant& key) {
    if (key.IsString()) return Item(StringView(key.ToString()));
    return Item(key.ToLong());
}

// ---- rowset ----------------------------------------------------------------------

Recordset::Recordset() { fields_.rs_ = this; }

void Recordset::RequireOpen() const {
    if (!open_) RaisePlatform(err::AdoNotAllowedClosed);
}

void Recordset::RequireCurrent() const {
    RequireOpen();
    if (pos_ < 0 || static_cast<size_t>(pos_) >= view_.size()) RaisePlatform(err::AdoNoCurrentRecord);
}

void Recordset::Open() {
    if (open_) RaisePlatform(err::AdoNotAllowedOpen);
    open_ = true;
    rows_.clear();
    view_.clear();
    pos_ = 0; // on an empty rowset this is EOF and BOF at once
    dropped_ = 0;
    filter_ = Variant(int32_t{0});
    sort_.clear();
}

void Recordset::Close() {
    RequireOpen();
    open_ = false;
    pendingNew_ = false;
    rows_.clear();
    view_.clear();
    feed_ = nullptr;
    extraState_ = 0;
    pos_ = -1;
}

int32_t Recordset::State() const { return open_ ? (adStateOpen | (feed_ ? extraState_ : 0)) : adStateClosed; }

void Recordset::SetRowFeed(RowFeed feed, int32_t extraState) {
    feed_ = std::move(feed);
    extraState_ = extraState;
}

void Recordset::FeedComplete() {
    feed_ = nullptr;
    extraState_ = 0;
}

void Recordset::Pull(size_t rows) const {
    // The feed appends rows through AppendRow on this thread.
    auto* self = const_cast<Recordset*>(this);
    while (self->feed_ && self->view_.size() < rows) {
        RowFeed f = self->feed_;
        if (!f(rows)) { self->FeedComplete(); break; }
    }
}

void Recordset::PullAll() const { Pull(static_cast<size_t>(-1)); }

void Recordset::AppendRow(std::vector<Variant> cells) {
    RequireOpen();
    cells.resize(fields_.fields_.size());
    rows_.push_back(Row{std::move(cells)});
    // Rows arriving under a filter are kept out of view unless they match.
    if (filter_.IsString() && !filter_.ToString().empty()) {
        Criteria c = Parse(filter_.ToString());
        if (!Matches(c, rows_.back())) return;
    }
    view_.push_back(rows_.size() - 1);
}

void Recordset::AddNew() {
    RequireOpen();
    if (pendingNew_) Update();
    posBeforeNew_ = pos_;
    std::vector<Variant> cells(fields_.fields_.size(), Variant::Null());
    rows_.push_back(Row{std::move(cells)});
    view_.push_back(rows_.size() - 1);
    pos_ = static_cast<long>(view_.size()) - 1;
    pendingNew_ = true;
}

void Recordset::Update() {
    RequireOpen();
    pendingNew_ = false;
}

void Recordset::UpdateBatch(int32_t) {
    RequireOpen();
    pendingNew_ = false;
}

void Recordset::Cancel() {
    if (!open_ || !pendingNew_) return;
    size_t row = rows_.size() - 1;
    rows_.pop_back();
    view_.erase(std::remove(view_.begin(), view_.end(), row), view_.end());
    pendingNew_ = false;
    pos_ = std::min(posBeforeNew_, static_cast<long>(view_.size()));
}

bool Recordset::Eof() const {
    RequireOpen();
    if (pos_ >= 0 && static_cast<size_t>(pos_) >= view_.size()) Pull(static_cast<size_t>(pos_) + 1);
    return view_.empty() || (pos_ >= 0 && static_cast<size_t>(pos_) >= view_.size());
}

bool Recordset::Bof() const {
    RequireOpen();
    if (view_.empty()) Pull(1);
    return view_.empty() || pos_ < 0;
}

void Recordset::MoveFirst() {
    RequireOpen();
    RequireNothingDropped();
    if (view_.empty()) Pull(1);
    if (view_.empty()) RaisePlatform(err::AdoNoCurrentRecord);
    if (pendingNew_) Update();
    pos_ = 0;
}

void Recordset::MoveLast() {
    RequireOpen();
    PullAll();
    if (view_.empty()) RaisePlatform(err::AdoNoCurrentRecord);
    if (pendingNew_) Update();
    pos_ = static_cast<long>(view_.size()) - 1;
}

void Recordset::MoveNext() {
    if (Eof()) RaisePlatform(err::AdoNoCurrentRecord);
    if (pendingNew_) Update();
    ++pos_;
    if (releasePassed_) DropPassedRows();
    Pull(static_cast<size_t>(pos_) + 1);
}

void Recordset::DropPassedRows() {
    // In batches, so that the rows ahead move down rarely.
    constexpr long kBatch = 1024;
    bool plain = !(filter_.IsString() && !filter_.ToString().empty()) && sort_.empty();
    if (!plain || pos_ < kBatch || pendingNew_) return;
    size_t n = static_cast<size_t>(pos_);
    rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(n));
    view_.resize(rows_.size());
    for (size_t i = 0; i < view_.size(); ++i) view_[i] = i;
    dropped_ += n;
    pos_ = 0;
}

void Recordset::RequireNothingDropped() const {
    if (dropped_ > 0) RaisePlatform(err::AdoNoCurrentRecord, u"the rows before the cursor were released");
}

void Recordset::MovePrevious() {
    if (Bof()) RaisePlatform(err::AdoNoCurrentRecord);
    if (pendingNew_) Update();
    --pos_;
}

void Recordset::Move(int32_t count, const Variant& start) {
    RequireOpen();
    long base = pos_;
    if (!start.IsEmpty() && start.ToLong() == adBookmarkFirst) {
        RequireNothingDropped();
        base = 0;
    }
    long target = base + count;
    if (target >= 0) Pull(static_cast<size_t>(target) + 1);
    if (view_.empty()) RaisePlatform(err::AdoNoCurrentRecord);
    if (pendingNew_) Update();
    // Moving past either end leaves the cursor at EOF or BOF.
    if (target < 0) pos_ = -1;
    else if (static_cast<size_t>(target) >= view_.size()) pos_ = static_cast<long>(view_.size());
    else pos_ = target;
}

Variant Recordset::Bookmark() const {
    RequireCurrent();
    return Variant(static_cast<double>(view_[static_cast<size_t>(pos_)] + dropped_ + 1));
}

void Recordset::Bookmark(const Variant& mark) {
    RequireOpen();
    double d = mark.ToDouble() - static_cast<double>(dropped_);
    if (d < 1 && dropped_ > 0) RequireNothingDropped();
    if (d < 1 || d > static_cast<double>(rows_.size())) RaisePlatform(err::AdoArguments);
    size_t row = static_cast<size_t>(d) - 1;
    auto it = std::find(view_.begin(), view_.end(), row);
    if (it == view_.end()) RaisePlatform(err::AdoArguments);
    pos_ = static_cast<long>(it - view_.begin());
}

int32_t Recordset::RecordCount() const {
    RequireOpen();
    PullAll();
    return static_cast<int32_t>(view_.size());
}

void Recordset::Rebuild(long keepRow) {
    view_.clear();
    bool filtered = filter_.IsString() && !filter_.ToString().empty();
    Criteria c;
    if (filtered) c = Parse(filter_.ToString());
    for (size_t i = 0; i < rows_.size(); ++i)
        if (!filtered || Matches(c, rows_[i])) view_.push_back(i);
    if (!sort_.empty()) {
        // Parse "a [ASC|DESC], b ..." and sort stably.
        std::vector<std::pair<size_t, bool>> keys;
        StringView s = sort_;
        size_t i = 0;
        while (i < s.size()) {
            size_t e = s.find(u',', i);
            if (e == StringView::npos) e = s.size();
            String part = Trim(s.substr(i, e - i));
            bool desc = false;
            String upper = UCase(part);
            if (upper.size() > 5 && upper.ends_with(u" DESC")) { desc = true; part = Trim(StringView(part).substr(0, part.size() - 5)); }
            else if (upper.size() > 4 && upper.ends_with(u" ASC")) part = Trim(StringView(part).substr(0, part.size() - 4));
            if (!part.empty() && part.front() == u'[' && part.back() == u']') part = part.substr(1, part.size() - 2);
            int32_t idx = fields_.IndexOf(part);
            if (idx < 0) RaisePlatform(err::AdoArguments);
            keys.emplace_back(static_cast<size_t>(idx), desc);
            i = e + 1;
        }
        std::stable_sort(view_.begin(), view_.end(), [&](size_t a, size_t b) {
            for (auto& [f, desc] : keys) {
                int cmp;
                try {
                    cmp = Variant::Compare(rows_[a].cells[f], rows_[b].cells[f], true);
                } catch (const DbError&) {
                    cmp = 0;
                }
                if (cmp != 0) return desc ? cmp > 0 : cmp < 0;
            }
            return false;
        });
    }
    pos_ = 0;
    if (keepRow >= 0) {
        auto it = std::find(view_.begin(), view_.end(), static_cast<size_t>(keepRow));
        if (it != view_.end()) pos_ = static_cast<long>(it - view_.begin());
    }
}

void Recordset::Filter(const Variant& criteria) {
    RequireOpen();
    PullAll();
    if (pendingNew_) Update();
    if (criteria.IsString() && !criteria.ToString().empty()) {
        Parse(criteria.ToString()); // malformed criteria fail before anything changes
        filter_ = criteria;
    } else if (criteria.IsString() || criteria.IsEmpty() || criteria.ToLong() == adFilterNone) {
        filter_ = Variant(int32_t{0});
    } else {
        RaisePlatform(err::AdoArguments);
    }
    Rebuild(-1);
}

void Recordset::Sort(StringView fields) {
    RequireOpen();
    PullAll();
    if (pendingNew_) Update();
    String old = sort_;
    sort_ = Trim(fields);
    try {
        Rebuild(-1);
    } catch (...) {
        sort_ = old;
        Rebuild(-1);
        throw;
    }
}

void Recordset::Find(StringView criteria, int32_t skipRecords, int32_t searchDirection) {
    RequireOpen();
    Criteria c = Parse(criteria);
    if (c.any.size() != 1 || c.any[0].size() != 1) RaisePlatform(err::AdoArguments);
    if (pos_ < 0 || static_cast<size_t>(pos_) >= view_.size()) {
        if (!Eof() && !Bof()) {} // cursor must stand on a row
        if (view_.empty() || pos_ < 0 || static_cast<size_t>(pos_) >= view_.size()) RaisePlatform(err::AdoNoCurrentRecord);
    }
    if (pendingNew_) Update();
    long p = pos_ + (searchDirection < 0 ? -skipRecords : skipRecords);
    if (searchDirection < 0) {
        for (; p >= 0; --p)
            if (static_cast<size_t>(p) < view_.size() && Matches(c, rows_[view_[static_cast<size_t>(p)]])) { pos_ = p; return; }
        pos_ = -1;
        return;
    }
    for (;; ++p) {
        Pull(static_cast<size_t>(p) + 1);
        if (static_cast<size_t>(p) >= view_.size()) break;
        if (Matches(c, rows_[view_[static_cast<size_t>(p)]])) { pos_ = p; return; }
    }
    pos_ = static_cast<long>(view_.size());
}

String Recordset::GetString(int32_t, int32_t numRows, StringView columnDelimiter, StringView rowDelimiter,
                            StringView nullExpr) {
    RequireOpen();
    if (Eof()) RaisePlatform(err::AdoNoCurrentRecord);
    String out;
    int32_t done = 0;
    while (!Eof() && (numRows < 0 || done < numRows)) {
        const Row& r = rows_[view_[static_cast<size_t>(pos_)]];
        for (size_t f = 0; f < r.cells.size(); ++f) {
            if (f) out += columnDelimiter;
            const Variant& v = r.cells[f];
            if (v.IsNull() || v.IsEmpty()) out += nullExpr;
            else out += v.ToString();
        }
        out += rowDelimiter;
        ++pos_;
        ++done;
    }
    return out;
}

Ref<Recordset> NewRowset(std::initializer_list<std::tuple<const char16_t*, int32_t, int32_t>> fields) {
    auto rs = Ref<Recordset>::New();
    rs->CursorLocation(adUseClient);
    for (auto& [n, t, s] : fields) rs->Fields().Append(n, t, s, -1);
    rs->Open();
    return rs;
}

} // namespace zolsdk::ado
