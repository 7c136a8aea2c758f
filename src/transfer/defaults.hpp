#pragma once
// Column defaults between engines: what the source's default means (a
// constant, the current date and time, today, or an expression of its
// own), and how each target writes that meaning.
#include <optional>

#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

struct DefaultValue {
    enum Form { Constant, Now, Today, Expression } form = Constant;
    String value;    // the constant's text (unquoted), or the expression
};

// Reads the default as `source` states it ("'abc'", "\"abc\"", "0", "Now()",
// "current_timestamp()", "((0))", "(getdate())").
DefaultValue ParseDefault(Engine source, StringView text);

// The DEFAULT clause's value for a column of `column.kind` on `target`, or
// nothing when the target cannot state it (said in `changes`).
std::optional<String> TargetDefault(Engine target, const ColumnPlan& column, const DefaultValue& d,
                                    std::vector<String>& changes);

} // namespace zolsdk::transfer
