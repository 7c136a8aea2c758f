#pragma once
// Reading a whole table through a connection of the test's own, as sorted
// lines of canonical value texts, so that two tables can be compared.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "mysql/mysql_fixture.hpp"
#include "zolsdk/platform/datetime.hpp"

namespace zolsdk::migrationtest {

inline std::string Canonical(const Variant& v) {
    if (v.IsNull() || v.IsEmpty()) return "NULL";
    switch (v.Type()) {
    case VarType::ByteArray: {
        std::string hex = "0x";
        char b[4];
        for (uint8_t c : v.ToBytes()) {
            std::snprintf(b, sizeof b, "%02x", c);
            hex += b;
        }
        return hex;
    }
    case VarType::Date: return "D" + ToUtf8(DateText(v.ToDate()));
    case VarType::Boolean: return v.ToBoolean() ? "true" : "false";
    default: return ToUtf8(v.ToString());
    }
}

inline std::vector<std::string> TableLines(const String& database, const String& table) {
    auto c = mysqltest::ServerConnection(database);
    Ref<ado::Recordset> rs = c->Execute(u"SELECT * FROM `" + table + u"`");
    std::vector<std::string> lines;
    if (rs->Eof() && rs->Bof()) return lines;
    rs->MoveFirst();
    while (!rs->Eof()) {
        std::string line;
        for (int32_t i = 0; i < rs->Fields().Count(); ++i) {
            ado::Field& f = rs->Fields().Item(i);
            line += ToUtf8(f.Name()) + "=" + Canonical(f.Value()) + "|";
        }
        lines.push_back(std::move(line));
        rs->MoveNext();
    }
    c->Close();
    std::sort(lines.begin(), lines.end());
    return lines;
}

// A binary value as a blob carries it: the bytes with the last one zeroed
// (a blob keeps its highest index as its size and does not copy the last
// byte). Applied to the source's lines to say what the target must hold.
inline void ZeroLastByte(std::vector<std::string>& lines, const std::string& field) {
    for (std::string& line : lines) {
        size_t at = line.find("|" + field + "=0x");
        if (at == std::string::npos && line.rfind(field + "=0x", 0) == 0) at = 0;
        else if (at != std::string::npos) ++at;
        if (at == std::string::npos) continue;
        size_t end = line.find('|', at);
        if (end - at > field.size() + 3) line.replace(end - 2, 2, "00");
    }
    std::sort(lines.begin(), lines.end());
}

// The first field that differs, shortened, for a readable failure.
inline std::string FirstDifference(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    if (a.size() != b.size()) return "row counts " + std::to_string(a.size()) + " and " + std::to_string(b.size());
    auto cut = [](const std::string& s) { return s.size() > 120 ? s.substr(0, 120) + "...(" + std::to_string(s.size()) + ")" : s; };
    for (size_t i = 0; i < a.size(); ++i) {
        if (a[i] == b[i]) continue;
        size_t from = 0;
        while (from < a[i].size()) {
            size_t end = a[i].find('|', from);
            std::string fa = a[i].substr(from, end - from);
            std::string fb = b[i].substr(from, b[i].find('|', from) - from);
            if (fa != fb) return "row " + std::to_string(i) + " source " + cut(fa) + " target " + cut(fb);
            from = end + 1;
        }
        return "row " + std::to_string(i) + " differs";
    }
    return "";
}

} // namespace zolsdk::migrationtest
