#pragma once
// The record of a run kept in a small text file, one line per step, each
// line written and flushed to disk as the step ends, so a run killed at any
// moment leaves a record of what it finished:
//
//   zol-transfer-state 1
//   from <source attributes, password left out>
//   to <target attributes, password left out>
//   split <table> <kind> <bound> <bound> ...   the key ranges' inner bounds
//   created <table>
//   range <table> <index> <rows>               range verified
//   table <table> <rows>                       table verified
//   foreign-keys
//
// Fields are separated by tabs; tabs, line ends and backslashes inside a
// field are escaped with a backslash.
#include <cstdio>
#include <map>
#include <mutex>
#include <optional>
#include <set>

#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

struct TableState {
    bool created = false;
    std::optional<int64_t> verifiedRows;       // the whole table verified
    std::optional<std::vector<Variant>> bounds; // its key ranges' inner bounds, once cut
    std::map<int32_t, int64_t> rangesVerified;  // range index -> rows
};

class ResumeState {
public:
    // Reads `path` when resuming (a missing file is an empty record) and
    // starts the file anew otherwise. Refuses a record of other catalogs.
    ResumeState(const String& path, const Plan& plan, bool resume);
    ~ResumeState();
    ResumeState(const ResumeState&) = delete;
    ResumeState& operator=(const ResumeState&) = delete;

    TableState Table(const String& table) const;
    bool ForeignKeysAdded() const;

    void Split(const String& table, Kind kind, const std::vector<Variant>& bounds);
    void Created(const String& table);
    void RangeVerified(const String& table, int32_t index, int64_t rows);
    void TableVerified(const String& table, int64_t rows);
    void ForeignKeysDone();
    // Drops what is known of a table that is made again from nothing.
    void Forget(const String& table);

private:
    void Append(const std::vector<String>& fields);
    void Apply(const std::vector<String>& fields);

    mutable std::mutex mutex_;
    std::FILE* file_ = nullptr;
    std::map<String, TableState> tables_;
    bool foreignKeys_ = false;
};

// The text of attribute strings in the record: the password's value left out.
String WithoutPassword(StringView attributes);

} // namespace zolsdk::transfer
