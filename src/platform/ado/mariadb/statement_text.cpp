#include "platform/ado/mariadb/statement_text.hpp"

#include <charconv>
#include <cmath>

#include "platform/ado/backend.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/decimal.hpp"

namespace zolsdk::ado::detail {

namespace {

bool IsBinary(int32_t t) { return t == adType::Binary || t == adType::VarBinary || t == adType::LongVarBinary; }
bool IsInteger(int32_t t) {
    return t == adType::TinyInt || t == adType::SmallInt || t == adType::Integer || t == adType::BigInt ||
           t == adType::UnsignedTinyInt || t == adType::UnsignedSmallInt || t == adType::UnsignedInt ||
           t == adType::UnsignedBigInt;
}
bool IsDate(int32_t t) { return t == adType::Date || t == adType::DBDate || t == adType::DBTime || t == adType::DBTimeStamp; }

void AppendQuoted(MYSQL* db, std::string& out, std::string_view utf8) {
    size_t at = out.size();
    out.resize(at + utf8.size() * 2 + 2);
    out[at] = '\'';
    unsigned long n = mysql_real_escape_string(db, out.data() + at + 1, utf8.data(), static_cast<unsigned long>(utf8.size()));
    out.resize(at + 1 + n);
    out += '\'';
}

void AppendLiteral(MYSQL* db, std::string& out, const Parameter& p) {
    const Variant& v = p.Value();
    int32_t t = p.Type();
    if (v.IsNull() || v.IsEmpty()) {
        out += "NULL";
        return;
    }
    char buf[64];
    if (IsBinary(t)) {
        Bytes b = v.ToBytes();
        static constexpr char kHex[] = "0123456789ABCDEF";
        out += "X'";
        size_t at = out.size();
        out.resize(at + b.size() * 2);
        for (size_t i = 0; i < b.size(); ++i) {
            out[at + 2 * i] = kHex[b[i] >> 4];
            out[at + 2 * i + 1] = kHex[b[i] & 15];
        }
        out += '\'';
    } else if (t == adType::Boolean) {
        out += v.ToBoolean() ? "1" : "0";
    } else if (IsInteger(t)) {
        out.append(buf, std::to_chars(buf, buf + sizeof buf, v.ToDecimal().ToInt64()).ptr);
    } else if (t == adType::Single || t == adType::Double) {
        double d = v.ToDouble();
        if (!std::isfinite(d)) throw ProviderFailure({{0, u"22003", u"A number that is not finite has no value in the server."}});
        out.append(buf, std::to_chars(buf, buf + sizeof buf, d).ptr);
    } else if (IsDate(t)) {
        DateParts d = SplitDate(v.ToDate());
        char* e = buf;
        auto put = [&](int n, int width, char after) {
            char digits[16];
            char* end = std::to_chars(digits, digits + sizeof digits, n).ptr;
            for (int pad = width - static_cast<int>(end - digits); pad > 0; --pad) *e++ = '0';
            for (char* c = digits; c != end; ++c) *e++ = *c;
            if (after) *e++ = after;
        };
        *e++ = '\'';
        put(d.year, 4, '-'); put(d.month, 2, '-'); put(d.day, 2, ' ');
        put(d.hour, 2, ':'); put(d.minute, 2, ':'); put(d.second, 2, '\'');
        out.append(buf, e);
    } else if (t == adType::Currency || t == adType::Decimal || t == adType::Numeric) {
        out += ToUtf8(v.ToDecimal().ToText(u'.'));
    } else {
        AppendQuoted(db, out, ToUtf8(v.ToString()));
    }
}

} // namespace

std::string StatementText(MYSQL* db, StringView sql, const std::vector<Ref<Parameter>>& params) {
    if (params.empty()) return ToUtf8(sql);
    std::vector<size_t> marks = ParameterMarkPositions(sql);
    if (marks.size() != params.size())
        throw ProviderFailure({{0, u"07002", u"The statement's parameter marks and its parameters do not match."}});
    std::string out;
    size_t from = 0;
    for (size_t i = 0; i < marks.size(); ++i) {
        out += ToUtf8(sql.substr(from, marks[i] - from));
        AppendLiteral(db, out, *params[i]);
        from = marks[i] + 1;
    }
    out += ToUtf8(sql.substr(from));
    return out;
}

} // namespace zolsdk::ado::detail
