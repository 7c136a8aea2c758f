#pragma once
// The lossless copy road: plan a migration between two catalogs, copy it
// table by table, verify every table by streaming both sides, and report
// what arrived and what the target forced to change.
//
//   auto plan = transfer::MakePlan(u"dbtype=mysql;dbname=sakila;...", u"dbtype=msaccess;...");
//   transfer::Report report = transfer::Run(plan, {});
//   return report.Ok() ? 0 : 1;
//
// Every entry point opens its own connections from the plan's attribute
// strings, so one table (CopyTable) or one key range of a table can be
// copied and verified from any thread or worker process on its own; a
// worker may also make the same plan again from the same two strings.
// Failures inside a table are caught and reported; a catalog that cannot
// be opened raises the library's DbError.
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/text.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk::transfer {

enum class Engine { Access, SqlServer, MySql, Xml };

// What a value is, as far as copying and comparing it goes.
enum class Kind {
    Boolean, Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Single, Double, Currency, Decimal,
    Date, Time, DateTime, Text, LongText, Binary, LongBinary, Guid,
};

struct ColumnPlan {
    String name;
    Kind kind = Kind::Text;
    int32_t group = 0;          // the library's type group of the source column
    int32_t sourceType = 0;     // the source's type number
    String sourceNative;        // the source engine's own type text, when it has one
    int32_t length = 0;         // characters or bytes; 0 for long types
    int32_t precision = 0, scale = 0;
    bool fixedLength = false;
    bool nullable = true;
    bool autoIncrement = false;
    std::optional<String> sourceDefault; // as the source states it
    String targetType;          // the column type the target gets
    std::optional<String> targetDefault; // the default clause's value on the target
    String targetExtra;         // engine words after the type (character set, ON UPDATE ...)
};

struct IndexColumnPlan {
    String name;
    bool descending = false;
    int32_t prefix = 0;         // leading characters indexed (MySQL), 0 for all
};

struct IndexPlan {
    String name;
    bool primaryKey = false, unique = false, fullText = false, spatial = false;
    std::vector<IndexColumnPlan> columns;
};

struct ForeignKeyPlan {
    String name, table, referencedTable;
    std::vector<String> columns, referencedColumns;
    String onUpdate, onDelete;  // "CASCADE", "SET NULL", "NO ACTION", "RESTRICT", ...
};

struct TablePlan {
    String name;
    std::vector<ColumnPlan> columns;
    std::vector<IndexPlan> indexes;
    std::vector<ForeignKeyPlan> foreignKeys; // added after every table has its rows
    String tableOptions;                     // words after the column list (MySQL: engine, character set)
    // Every change the target forces on this table, said before a row moves.
    std::vector<String> changes;
    // The columns that name a row in reports and key ranges: the primary
    // key, else the first unique index, else every column.
    std::vector<String> keyColumns;
};

struct ZOLSDK_API Plan {
    String from, to;
    Engine source = Engine::MySql, target = Engine::MySql;
    std::vector<TablePlan> tables;
    const TablePlan* Find(StringView table) const; // case-blind; nullptr when absent
};

// Rows whose first key column lies in [from, to); an Empty bound is open.
struct KeyRange {
    Variant from, to;
    bool IsWhole() const { return from.IsEmpty() && to.IsEmpty(); }
};

struct Progress {
    String table;
    int64_t rows = 0;           // rows written so far in this table (or range)
};

struct Options {
    std::vector<String> tables;      // empty: every table of the source
    bool schemaOnly = false;
    bool replace = false;            // drop and recreate tables that exist
    bool keepFailed = false;         // leave a failed table in place (reported as half-made)
    bool verify = true;
    int32_t lockTimeoutSeconds = 30; // bounded waits for locks on the target and the source
    size_t batchBytes = 1 << 20;     // statement text per multi-row insert
    std::function<void(const Progress&)> progress;
    int64_t progressEvery = 50000;
    const std::atomic<bool>* cancel = nullptr; // set to stop at the next batch
};

// The comparison of one table (or key range) between the two catalogs.
struct Verification {
    bool done = false;          // both sides were read to the end
    bool equal = false;
    int64_t sourceRows = 0, targetRows = 0;
    uint64_t sourceSum = 0, targetSum = 0;
    // When not equal: the first differing row's key ("id=7") and column,
    // or why it could not be told.
    String firstDifference;
    String failure;
};

enum class Outcome { Verified, Created, Mismatch, Failed, HalfMade, Cancelled };

struct TableResult {
    String table;
    Outcome outcome = Outcome::Failed;
    int64_t rowsRead = -1, rowsWritten = -1;
    Verification verification;
    std::vector<String> changes;     // what the target forced
    String failure;                  // the engine's or our words when it did not arrive
    double seconds = 0;
    bool Ok() const { return outcome == Outcome::Verified || outcome == Outcome::Created; }
};

struct ZOLSDK_API Report {
    std::vector<TableResult> tables;
    std::vector<String> notes;       // catalog-wide: foreign keys that could not be added, ...
    bool verifyOnly = false;         // made by VerifyAll: nothing was copied
    bool Ok() const;                 // every table arrived (and verified when rows moved)
    // One line a table, then "N of M tables copied and verified" (or
    // "created", or "verified").
    String Text() const;
};

// Reads both catalogs and plans every table (or the ones named): target
// types, keys, indexes, foreign keys and every change the target forces.
ZOLSDK_API Plan MakePlan(const String& fromAttributes, const String& toAttributes, const Options& options = {});

// Creates one table on the target (dropping it first with options.replace;
// a table that exists already fails the table otherwise).
ZOLSDK_API TableResult CreateTable(const Plan& plan, const TablePlan& table, const Options& options);
// Streams the table's rows (or one key range of them) into the target and
// verifies them. Does not create or drop anything.
ZOLSDK_API TableResult CopyRows(const Plan& plan, const TablePlan& table, const Options& options, const KeyRange& range = {});
// Create, copy, verify; a failed table is dropped again unless keepFailed.
ZOLSDK_API TableResult CopyTable(const Plan& plan, const TablePlan& table, const Options& options);
// Compares one table (or key range) of the two catalogs by row count and an
// order-independent checksum of normalised values.
ZOLSDK_API Verification Verify(const Plan& plan, const TablePlan& table, const Options& options, const KeyRange& range = {});
// Adds the foreign keys of every table that arrived; what could not be
// added is told in the report's notes and the table's changes.
ZOLSDK_API void AddForeignKeys(const Plan& plan, const Options& options, Report& report);
// The whole migration: every table, then the foreign keys.
ZOLSDK_API Report Run(const Plan& plan, const Options& options);
// Verification alone, for every table of the plan.
ZOLSDK_API Report VerifyAll(const Plan& plan, const Options& options);
// The schema of a catalog written as an XML schema file that the XML
// catalog reads (tables, columns, indexes, keys).
ZOLSDK_API void SaveSchema(const String& fromAttributes, const String& xmlFile);

ZOLSDK_API const char* KindName(Kind k);
ZOLSDK_API const char* OutcomeName(Outcome o);

} // namespace zolsdk::transfer
