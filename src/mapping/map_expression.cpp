#include "zolsdk/mapping/map_expression.hpp"

#include <cmath>
#include <limits>

#include "mapping/object_cast.hpp"
#include "mapping/regex_search.hpp"
#include "zolsdk/data/blob.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/schema/column.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

// The operand a variable stands for: the row's cell of its column, or the
// constant itself.
Variant ReadVariable(const DbMapVariable& variable, const Ref<DbDataRow>& row) {
    if (variable.VariableType() == mtColumnValue)
        return row->Item(Variant(CastObject<DbColumn>(variable.Value())->ColumnName()));
    return variable.Value();
}

// A cell as text; a large cell holds a DbBlob, and a blob cell without one
// fails (91) rather than reading as empty text.
String CellText(const Variant& cell) {
    if (cell.IsObject()) return CastObject<DbBlob>(cell)->text();
    return cell.ToString();
}

// Children first, asked for `childGroup`, then variables, each in order.
// `take` gets every operand and answers false to stop the walk.
template <class Take>
void WalkOperands(const DbMapExpressions& children, const DbMapVariables& variables, const Ref<DbDataRow>& row,
                  DataTypeGroupEnum childGroup, Take take) {
    for (const Ref<DbMapExpression>& child : children)
        if (!take(child->GetValue(row, childGroup))) return;
    for (const Ref<DbMapVariable>& variable : variables)
        if (!take(ReadVariable(*variable, row))) return;
}

// One step of the numeric fold, accumulator on the left. Operators that
// mean nothing to numbers leave the accumulator as it is.
template <class T>
bool Step(DbExpressionOperatorEnum op, T acc, T operand, T& out) {
    switch (op) {
    case oAdd: out = acc + operand; return true;
    case oSubtract: out = acc - operand; return true;
    case oMultiply: out = acc * operand; return true;
    default: return false;
    }
}

int32_t FoldLong(DbExpressionOperatorEnum op, int32_t acc, int32_t operand) {
    int64_t r;
    if (!Step<int64_t>(op, acc, operand, r)) return acc;
    if (r < std::numeric_limits<int32_t>::min() || r > std::numeric_limits<int32_t>::max())
        RaisePlatform(err::Overflow);
    return static_cast<int32_t>(r);
}

template <class F>
F FoldFloat(DbExpressionOperatorEnum op, F acc, F operand) {
    F r;
    if (!Step<F>(op, acc, operand, r)) return acc;
    if (!std::isfinite(r)) RaisePlatform(err::Overflow);
    return r;
}

Currency FoldCurrency(DbExpressionOperatorEnum op, Currency acc, Currency operand) {
    __int128 r;
    switch (op) {
    case oAdd: r = static_cast<__int128>(acc.raw) + operand.raw; break;
    case oSubtract: r = static_cast<__int128>(acc.raw) - operand.raw; break;
    case oMultiply: {
        // Both sides carry four decimals: scale the product back, half to even.
        const __int128 p = static_cast<__int128>(acc.raw) * operand.raw;
        r = p / 10000;
        const __int128 rest = p % 10000;
        const __int128 twice = (rest < 0 ? -rest : rest) * 2;
        if (twice > 10000 || (twice == 10000 && (r % 2) != 0)) r += p < 0 ? -1 : 1;
        break;
    }
    default: return acc;
    }
    if (r < std::numeric_limits<int64_t>::min() || r > std::numeric_limits<int64_t>::max())
        RaisePlatform(err::Overflow);
    return Currency::FromRaw(static_cast<int64_t>(r));
}

Decimal FoldDecimal(DbExpressionOperatorEnum op, const Decimal& acc, const Decimal& operand) {
    switch (op) {
    case oAdd: return acc.Add(operand);
    case oSubtract: return acc.Sub(operand);
    case oMultiply: return acc.Mul(operand);
    default: return acc;
    }
}

// 1-based piece of a text as the platform cuts it: what is there when the
// text is shorter, nothing when the start lies behind its end.
String Mid(StringView text, int32_t start, int32_t length) {
    if (start < 1 || length < 0) RaisePlatform(err::InvalidCall);
    if (static_cast<size_t>(start) > text.size()) return {};
    return String(text.substr(static_cast<size_t>(start) - 1, static_cast<size_t>(length)));
}

bool IsNoSuchItem(const DbError& e) {
    return e.Number() == err::InvalidCall || e.Number() == err::SubscriptOutOfRange;
}

} // namespace

// ---- DbMapVariables -------------------------------------------------------

void DbMapVariables::Add(const Ref<DbMapVariable>& poVariable) {
    ZOL_ROUTINE(u"DbMapVariables:Add Ln ");
    try {
        ZOL_LN; m_oCol.Add(Variant(poVariable));
    } ZOL_RERAISE
}

bool DbMapVariables::Exist(const Variant& vntIndexKey) {
    ZOL_ROUTINE(u"DbMapVariables:Item Ln ");
    try {
        ZOL_LN; return !Item(vntIndexKey).IsNothing();
    } catch (const DbError& e) {
        if (IsNoSuchItem(e)) return false;
        zol_mark_.Reraise();
    } ZOL_RERAISE
}

Ref<DbMapVariable> DbMapVariables::Item(const Variant& vntIndexKey) {
    ZOL_ROUTINE(u"DbMapVariables:Item Ln ");
    try {
        // Nothing is stored under a key, so a text can only fail.
        if (vntIndexKey.IsString()) {
            ZOL_LN; return m_oCol.Item(vntIndexKey).As<DbMapVariable>();
        }
        ZOL_LN; const int64_t position = static_cast<int64_t>(vntIndexKey.ToLong()) + 1;
        if (position > std::numeric_limits<int32_t>::max()) RaisePlatform(err::Overflow);
        ZOL_LN; return m_oCol.Item(Variant(static_cast<int32_t>(position))).As<DbMapVariable>();
    } ZOL_RERAISE
}

// ---- DbMapExpressions -----------------------------------------------------

void DbMapExpressions::Add(const Ref<DbMapExpression>& poMapExpression) {
    ZOL_ROUTINE(u"DbMapExpressions:Add Ln ");
    try {
        ZOL_LN; m_oCol.Add(Variant(poMapExpression));
    } ZOL_RERAISE
}

bool DbMapExpressions::Exist(const Variant& vntIndexKey) {
    ZOL_ROUTINE(u"DbMapExpressions:Item Ln ");
    try {
        ZOL_LN; return !Item(vntIndexKey).IsNothing();
    } catch (const DbError& e) {
        if (IsNoSuchItem(e)) return false;
        zol_mark_.Reraise();
    } ZOL_RERAISE
}

Ref<DbMapExpression> DbMapExpressions::Item(const Variant& vntIndexKey) {
    ZOL_ROUTINE(u"DbMapExpressions:Item Ln ");
    try {
        ZOL_LN; return m_oCol.Item(vntIndexKey).As<DbMapExpression>();
    } ZOL_RERAISE
}

// ---- DbMapExpression ------------------------------------------------------

DbMapExpression::DbMapExpression()
    : m_oVariables(Ref<DbMapVariables>::New()), m_oMapExpressions(Ref<DbMapExpressions>::New()) {}

Variant DbMapExpression::GetValue(const Ref<DbDataRow>& poDataRow, DataTypeGroupEnum peDataTypeGroup) {
    ZOL_ROUTINE(u"DbMapExpression:GetValue Ln ");
    try {
        switch (peDataTypeGroup) {
        case dtVarChar:
            ZOL_LN; return Variant(m_eOperator == oRegx ? GetSearchString(poDataRow) : GetStringValue(poDataRow));
        case dtCharBLOB: {
            ZOL_LN; const String text = m_eOperator == oRegx ? GetSearchString(poDataRow) : GetStringValue(poDataRow);
            auto blob = Ref<DbBlob>::New();
            blob->text(text);
            return Variant(blob);
        }
        case dtInteger:
        case dtUnsignedInteger:
            ZOL_LN; return Variant(GetIntegerValue(poDataRow));
        case dtDate:
            ZOL_LN; return Variant::FromDate(GetDateValue(poDataRow));
        case dtTime: {
            // The time of day alone, to the second, as the date's text form
            // read back as a time would give it.
            ZOL_LN; const DateParts p = SplitDate(GetDateValue(poDataRow));
            return Variant::FromDate(TimeSerial(p.hour, p.minute, p.second));
        }
        case dtDateTime:
            // The day alone: a date-and-time map gets no time of day from an
            // expression. Mappings rely on this; dtDate keeps the time.
            ZOL_LN; return Variant::FromDate(DatePart(GetDateValue(poDataRow)));
        case dtBoolean:
            ZOL_LN; return Variant(GetBooleanValue(poDataRow));
        case dtDouble:
            ZOL_LN; return Variant(GetDoubleValue(poDataRow));
        case dtSingle:
            ZOL_LN; return Variant(GetSingleValue(poDataRow));
        case dtDecimal:
            ZOL_LN; return Variant(GetDecimalValue(poDataRow));
        case dtCurrency:
            ZOL_LN; return Variant(GetCurrencyValue(poDataRow));
        default:
            return Variant::Null();
        }
    } ZOL_RERAISE
}

bool DbMapExpression::GetBooleanValue(const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbMapExpression:GetBooleanValue Ln ");
    try {
        bool result = false;
        int32_t count = 0;
        ZOL_LN; WalkOperands(*m_oMapExpressions, *m_oVariables, poDataRow, dtBoolean, [&](const Variant& operand) {
            ZOL_LN; const bool value = operand.ToBoolean();
            if (count == 0) result = value;
            bool stop = false;
            switch (m_eOperator) {
            case oAnd: result = result && value; stop = !result; break;
            case oOr: result = result || value; stop = result; break;
            case oXor: if (count > 0) result = result != value; break;
            // The last operand decides.
            case oNot: result = !value; break;
            default: result = false; stop = true; break;
            }
            ++count;
            return !stop;
        });
        return result;
    } ZOL_RERAISE
}

String DbMapExpression::GetSearchString(const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbMapExpression:GetSearchString Ln ");
    try {
        ZOL_LN; const String pattern = m_oVariables->Item(Variant(int32_t{0}))->Value().ToString();
        ZOL_LN; const Ref<DbMapVariable> source = m_oVariables->Item(Variant(int32_t{1}));
        String subject;
        if (poDataRow->HasBlob() && source->VariableType() == mtColumnValue) {
            ZOL_LN; subject = CellText(poDataRow->Item(Variant(CastObject<DbColumn>(source->Value())->ColumnName())));
        } else {
            // Without blobs the subject variable names its column as text.
            ZOL_LN; subject = poDataRow->Item(Variant(source->Value().ToString())).ToString();
        }
        RegexSearch search;
        ZOL_LN; search.Compile(pattern, 0);
        ZOL_LN; search.Match(subject);
        if (!search.IsMatched()) return {};
        ZOL_LN; return Mid(subject, search.ResultStart(), search.ResultEnd() - search.ResultStart());
    } ZOL_RERAISE
}

String DbMapExpression::GetStringValue(const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbMapExpression:GetStringValue Ln ");
    try {
        // Text knows one operation: every operand is appended, whatever the
        // operator.
        String value;
        for (const Ref<DbMapExpression>& child : *m_oMapExpressions) {
            ZOL_LN; value += child->GetValue(poDataRow, dtVarChar).ToString();
        }
        for (const Ref<DbMapVariable>& variable : *m_oVariables) {
            if (variable->VariableType() == mtColumnValue) {
                ZOL_LN; value += CellText(ReadVariable(*variable, poDataRow));
            } else {
                ZOL_LN; value += variable->Value().ToString();
            }
        }
        return value;
    } ZOL_RERAISE
}

Currency DbMapExpression::GetCurrencyValue(const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbMapExpression:GetCurrencyValue Ln ");
    try {
        Currency acc;
        ZOL_LN; WalkOperands(*m_oMapExpressions, *m_oVariables, poDataRow, dtCurrency, [&](const Variant& operand) {
            ZOL_LN; acc = FoldCurrency(m_eOperator, acc, operand.ToCurrency());
            return true;
        });
        return acc;
    } ZOL_RERAISE
}

Decimal DbMapExpression::GetDecimalValue(const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbMapExpression:GetDecimalValue Ln ");
    try {
        Decimal acc;
        ZOL_LN; WalkOperands(*m_oMapExpressions, *m_oVariables, poDataRow, dtDecimal, [&](const Variant& operand) {
            ZOL_LN; acc = FoldDecimal(m_eOperator, acc, operand.ToDecimal());
            return true;
        });
        return acc;
    } ZOL_RERAISE
}

double DbMapExpression::GetDoubleValue(const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbMapExpression:GetDoubleValue Ln ");
    try {
        double acc = 0;
        ZOL_LN; WalkOperands(*m_oMapExpressions, *m_oVariables, poDataRow, dtDouble, [&](const Variant& operand) {
            ZOL_LN; acc = FoldFloat<double>(m_eOperator, acc, operand.ToDouble());
            return true;
        });
        return acc;
    } ZOL_RERAISE
}

int32_t DbMapExpression::GetIntegerValue(const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbMapExpression:GetIntegerValue Ln ");
    try {
        int32_t acc = 0;
        ZOL_LN; WalkOperands(*m_oMapExpressions, *m_oVariables, poDataRow, dtInteger, [&](const Variant& operand) {
            ZOL_LN; acc = FoldLong(m_eOperator, acc, operand.ToLong());
            return true;
        });
        return acc;
    } ZOL_RERAISE
}

float DbMapExpression::GetSingleValue(const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbMapExpression:GetSingleValue Ln ");
    try {
        float acc = 0;
        ZOL_LN; WalkOperands(*m_oMapExpressions, *m_oVariables, poDataRow, dtSingle, [&](const Variant& operand) {
            ZOL_LN; acc = FoldFloat<float>(m_eOperator, acc, operand.ToSingle());
            return true;
        });
        return acc;
    } ZOL_RERAISE
}

double DbMapExpression::GetDateValue(const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbMapExpression:GetDateValue Ln ");
    try {
        // Children are asked for dtDateTime, so a child's time of day is
        // gone before it gets here; a variable's is kept.
        double acc = 0;
        ZOL_LN; WalkOperands(*m_oMapExpressions, *m_oVariables, poDataRow, dtDateTime, [&](const Variant& operand) {
            ZOL_LN; acc = FoldFloat<double>(m_eOperator, acc, operand.ToDate());
            return true;
        });
        ZOL_LN; return Variant(acc).ToDate();
    } ZOL_RERAISE
}

} // namespace zolsdk
