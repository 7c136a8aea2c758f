#include "transfer/defaults.hpp"

#include "transfer/type_map.hpp"
#include "transfer/values.hpp"
#include "transfer/xml_schema.hpp"

namespace zolsdk::transfer {

namespace {

String Unwrap(StringView s) {
    String t = Trim(s);
    // SQL Server keeps defaults in parentheses, often two deep.
    while (t.size() >= 2 && t.front() == u'(' && t.back() == u')') t = Trim(StringView(t).substr(1, t.size() - 2));
    if (!t.empty() && t.front() == u'=') t = Trim(StringView(t).substr(1)); // Access expressions may start with "="
    return t;
}

// The body of a quoted text, its doubled (or escaped) quotes made single.
bool Unquote(StringView t, bool backslashes, String& out) {
    if (t.size() < 2) return false;
    char16_t q = t.front();
    if ((q != u'\'' && q != u'"') || t.back() != q) return false;
    if (t.size() >= 3 && t[0] == u'N' ) return false;
    out.clear();
    for (size_t i = 1; i + 1 < t.size(); ++i) {
        char16_t c = t[i];
        if (backslashes && c == u'\\' && i + 2 < t.size()) {
            char16_t n = t[++i];
            out += n == u'0' ? u'\0' : n == u'n' ? u'\n' : n == u't' ? u'\t' : n == u'r' ? u'\r' : n;
            continue;
        }
        if (c == q && i + 2 < t.size() && t[i + 1] == q) ++i;
        out += c;
    }
    return true;
}

bool IsNumberText(StringView t) {
    if (t.empty()) return false;
    size_t i = (t[0] == u'-' || t[0] == u'+') ? 1 : 0;
    bool digit = false, dot = false;
    for (; i < t.size(); ++i) {
        if (t[i] >= u'0' && t[i] <= u'9') digit = true;
        else if (t[i] == u'.' && !dot) dot = true;
        else return false;
    }
    return digit;
}

} // namespace

DefaultValue ParseDefault(Engine source, StringView text) {
    DefaultValue d;
    if (source == Engine::Xml) {
        // The file holds the neutral form: "now", "today" or the constant itself.
        if (!text.empty() && text.front() == kXmlExpression) {
            d.form = DefaultValue::Expression;
            d.value = String(text.substr(1));
        } else if (text == u"now") d.form = DefaultValue::Now;
        else if (text == u"today") d.form = DefaultValue::Today;
        else d.value = String(text);
        return d;
    }
    String t = Unwrap(text);
    String u = UCase(t);
    if (u == u"NOW()" || u == u"CURRENT_TIMESTAMP" || u == u"CURRENT_TIMESTAMP()" || u == u"GETDATE()" ||
        u.rfind(u"CURRENT_TIMESTAMP(", 0) == 0 || u == u"NOW") {
        d.form = DefaultValue::Now;
        return d;
    }
    if (u == u"DATE()" || u == u"CURDATE()" || u == u"CURRENT_DATE" || u == u"CURRENT_DATE()" || u == u"TODAY") {
        d.form = DefaultValue::Today;
        return d;
    }
    if (source == Engine::SqlServer && !t.empty() && t[0] == u'N') t = t.substr(1);
    String body;
    if (Unquote(t, source == Engine::MySql, body)) {
        d.value = body;
        return d;
    }
    if (IsNumberText(t)) {
        d.value = t;
        return d;
    }
    if (u == u"YES" || u == u"TRUE" || u == u"ON") {
        d.value = u"1";
        return d;
    }
    if (u == u"NO" || u == u"FALSE" || u == u"OFF") {
        d.value = u"0";
        return d;
    }
    // MariaDB states a text default of an older server without quotes, and
    // files made through the Access provider keep text defaults bare.
    if ((source == Engine::MySql || source == Engine::Access) && u != u"NULL" && t.find(u'(') == String::npos &&
        t.find(u'"') == String::npos && t.find(u'\'') == String::npos) {
        d.value = t;
        return d;
    }
    d.form = DefaultValue::Expression;
    d.value = t;
    return d;
}

std::optional<String> TargetDefault(Engine target, const ColumnPlan& c, const DefaultValue& d,
                                    std::vector<String>& changes) {
    auto drop = [&](StringView why) -> std::optional<String> {
        changes.push_back(c.name + u": default " + d.value + u" dropped (" + String(why) + u")");
        return std::nullopt;
    };
    bool dateKind = c.kind == Kind::Date || c.kind == Kind::DateTime || c.kind == Kind::Time;
    switch (d.form) {
    case DefaultValue::Now:
        if (!dateKind) return drop(u"the current time on a column that is no date");
        if (target == Engine::Access) return String(u"Now()");
        if (target == Engine::SqlServer) return String(u"getdate()");
        if (target == Engine::Xml) return String(u"now");
        return String(c.kind == Kind::DateTime ? u"CURRENT_TIMESTAMP" : c.kind == Kind::Date ? u"(CURRENT_DATE)" : u"(CURRENT_TIME)");
    case DefaultValue::Today:
        if (!dateKind) return drop(u"today on a column that is no date");
        if (target == Engine::Access) return String(u"Date()");
        if (target == Engine::SqlServer) return String(u"CONVERT(date, getdate())");
        if (target == Engine::Xml) return String(u"today");
        return String(u"(CURRENT_DATE)");
    case DefaultValue::Expression:
        if (target == Engine::Xml) return String(1, kXmlExpression) + d.value;
        return drop(u"an expression of the source engine");
    case DefaultValue::Constant:
        break;
    }
    if (target == Engine::Xml) return d.value;
    if (IsLong(c.kind) && target == Engine::MySql) return u"(" + TextLiteral(target, d.value) + u")";
    if (IsNumber(c.kind) || c.kind == Kind::Boolean) {
        if (!IsNumberText(d.value)) return drop(u"not a number");
        if (c.kind == Kind::Boolean && target == Engine::Access && d.value != u"0") return String(u"-1");
        return d.value;
    }
    if (dateKind) return TextLiteral(target == Engine::Access ? Engine::SqlServer : target, d.value);
    return (target == Engine::SqlServer ? u"N" : u"") + TextLiteral(target, d.value);
}

} // namespace zolsdk::transfer
