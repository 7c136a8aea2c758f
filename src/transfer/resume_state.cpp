#include "transfer/resume_state.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "support/split.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::transfer {

namespace {

constexpr char16_t kHeader[] = u"zol-transfer-state 1";

DbError StateFailure(const String& what) { return DbError(err::InvalidCall, u"zolsdk.transfer", what); }

String Escaped(StringView s) {
    String out;
    for (char16_t c : s) {
        if (c == u'\\') out += u"\\\\";
        else if (c == u'\t') out += u"\\t";
        else if (c == u'\n') out += u"\\n";
        else if (c == u'\r') out += u"\\r";
        else out += c;
    }
    return out;
}

std::vector<String> Fields(const String& line) {
    std::vector<String> fields(1);
    for (size_t i = 0; i < line.size(); ++i) {
        char16_t c = line[i];
        if (c == u'\t') {
            fields.emplace_back();
        } else if (c == u'\\' && i + 1 < line.size()) {
            char16_t n = line[++i];
            fields.back() += n == u't' ? u'\t' : n == u'n' ? u'\n' : n == u'r' ? u'\r' : n;
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

bool IsIntegerKind(Kind k) { return k >= Kind::Int8 && k <= Kind::UInt64; }

Variant BoundValue(Kind k, const String& text) {
    if (IsIntegerKind(k)) return Variant::FromInt64(std::stoll(ToUtf8(text)));
    return Variant(text);
}

int64_t Number(const String& text) { return std::stoll(ToUtf8(text)); }

// Where the value of a password item ("password=...", any case) starts;
// npos for any other item.
size_t PasswordValueAt(StringView item) {
    size_t eq = item.find(u'=');
    if (eq == StringView::npos || !EqualsNoCase(Trim(item.substr(0, eq)), u"password")) return StringView::npos;
    return eq + 1;
}

// What names the catalog in an attribute string: every item but the
// password, which may change between runs without naming another catalog.
String Identity(StringView attributes) {
    String out;
    for (const String& item : Split(attributes, u";"))
        if (PasswordValueAt(item) == StringView::npos && !Trim(item).empty())
            out += (out.empty() ? u"" : u";") + Trim(item);
    return out;
}

} // namespace

String WithoutPassword(StringView attributes) {
    std::vector<String> items = Split(attributes, u";");
    for (String& item : items)
        if (size_t at = PasswordValueAt(item); at != StringView::npos && at < item.size())
            item = item.substr(0, at) + u"***";
    return Join(items, u";");
}

ResumeState::ResumeState(const String& path, const Plan& plan, bool resume) {
    std::string file = ToUtf8(path);
    String from = WithoutPassword(plan.from), to = WithoutPassword(plan.to);
    std::vector<String> kept; // the complete lines of an earlier record
    if (resume) {
        std::ifstream in(file, std::ios::binary);
        std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        // Text after the last line end was cut short by a crash: it recorded nothing.
        all.erase(all.find_last_of('\n') == std::string::npos ? 0 : all.find_last_of('\n') + 1);
        size_t at = 0;
        while (at < all.size()) {
            size_t end = all.find('\n', at);
            kept.push_back(FromUtf8(std::string_view(all).substr(at, end - at)));
            at = end + 1;
        }
        if (!kept.empty() && kept[0] != kHeader) throw StateFailure(u"the file " + path + u" is no record of a zol run");
        for (size_t i = 1; i < kept.size(); ++i) {
            std::vector<String> f = Fields(kept[i]);
            if (f[0] == u"from" && f.size() == 2 && Identity(f[1]) != Identity(from))
                throw StateFailure(u"the record " + path + u" is of a run from " + f[1] + u", not from " + from);
            if (f[0] == u"to" && f.size() == 2 && Identity(f[1]) != Identity(to))
                throw StateFailure(u"the record " + path + u" is of a run into " + f[1] + u", not into " + to);
            try {
                Apply(f);
            } catch (const std::exception&) {
                throw StateFailure(u"the record " + path + u" is damaged at line " + IntText(static_cast<int64_t>(i + 1)));
            }
        }
    }
    // Written anew (the kept lines first) and then renamed over the old
    // record, so the record is whole at every moment.
    std::string temp = file + ".new";
    file_ = std::fopen(temp.c_str(), "wb");
    if (!file_) throw StateFailure(u"cannot write the record " + path + u": " + FromUtf8(std::strerror(errno)));
    if (kept.empty()) kept = {kHeader, u"from\t" + Escaped(from), u"to\t" + Escaped(to)};
    for (const String& line : kept) {
        std::string text = ToUtf8(line) + "\n";
        std::fwrite(text.data(), 1, text.size(), file_);
    }
    if (std::fflush(file_) != 0 || std::rename(temp.c_str(), file.c_str()) != 0)
        throw StateFailure(u"cannot write the record " + path + u": " + FromUtf8(std::strerror(errno)));
}

ResumeState::~ResumeState() {
    if (file_) std::fclose(file_);
}

void ResumeState::Apply(const std::vector<String>& f) {
    const String& what = f[0];
    if (what == u"foreign-keys") {
        foreignKeys_ = true;
    } else if (what == u"created" && f.size() == 2) {
        tables_[f[1]].created = true;
    } else if (what == u"table" && f.size() == 3) {
        tables_[f[1]].verifiedRows = Number(f[2]);
    } else if (what == u"range" && f.size() == 4) {
        tables_[f[1]].rangesVerified[static_cast<int32_t>(Number(f[2]))] = Number(f[3]);
    } else if (what == u"split" && f.size() >= 3) {
        Kind k = Kind::Text;
        for (int i = 0; i <= static_cast<int>(Kind::Guid); ++i)
            if (f[2] == FromUtf8(KindName(static_cast<Kind>(i)))) k = static_cast<Kind>(i);
        std::vector<Variant> bounds;
        for (size_t i = 3; i < f.size(); ++i) bounds.push_back(BoundValue(k, f[i]));
        TableState& t = tables_[f[1]];
        t = TableState{};
        t.created = true;
        t.bounds = std::move(bounds);
    } else if (what == u"forget" && f.size() == 2) {
        tables_.erase(f[1]);
    } else if (what != u"from" && what != u"to") {
        throw StateFailure(u"unknown line");
    }
}

void ResumeState::Append(const std::vector<String>& fields) {
    String line;
    for (size_t i = 0; i < fields.size(); ++i) line += (i ? u"\t" : u"") + Escaped(fields[i]);
    std::string text = ToUtf8(line) + "\n";
    if (std::fwrite(text.data(), 1, text.size(), file_) != text.size() || std::fflush(file_) != 0)
        throw StateFailure(u"cannot write the run's record: " + FromUtf8(std::strerror(errno)));
    ::fdatasync(::fileno(file_));
}

TableState ResumeState::Table(const String& table) const {
    std::lock_guard lock(mutex_);
    auto it = tables_.find(table);
    return it == tables_.end() ? TableState{} : it->second;
}

bool ResumeState::ForeignKeysAdded() const {
    std::lock_guard lock(mutex_);
    return foreignKeys_;
}

void ResumeState::Split(const String& table, Kind kind, const std::vector<Variant>& bounds) {
    std::lock_guard lock(mutex_);
    std::vector<String> f = {u"split", table, FromUtf8(KindName(kind))};
    for (const Variant& b : bounds) f.push_back(b.ToString());
    Append(f);
    TableState& t = tables_[table];
    t = TableState{};
    t.created = true;
    t.bounds = bounds;
}

void ResumeState::Created(const String& table) {
    std::lock_guard lock(mutex_);
    Append({u"created", table});
    tables_[table].created = true;
}

void ResumeState::RangeVerified(const String& table, int32_t index, int64_t rows) {
    std::lock_guard lock(mutex_);
    Append({u"range", table, IntText(index), IntText(rows)});
    tables_[table].rangesVerified[index] = rows;
}

void ResumeState::TableVerified(const String& table, int64_t rows) {
    std::lock_guard lock(mutex_);
    Append({u"table", table, IntText(rows)});
    tables_[table].verifiedRows = rows;
}

void ResumeState::ForeignKeysDone() {
    std::lock_guard lock(mutex_);
    Append({u"foreign-keys"});
    foreignKeys_ = true;
}

void ResumeState::Forget(const String& table) {
    std::lock_guard lock(mutex_);
    Append({u"forget", table});
    tables_.erase(table);
}

} // namespace zolsdk::transfer
