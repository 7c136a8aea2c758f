#include "engines.hpp"

#include <algorithm>
#include <cctype>

namespace zol {

const std::vector<Engine>& Engines() {
    static const std::vector<Engine> engines = {
        {"mysql",
         "a MySQL or MariaDB database",
         {{"dblocation", "the server's host name or address"},
          {"dbname", "the database"},
          {"username", "the login"},
          {"password", "its password"},
          {"port", "the server's port (3306 when empty)"}},
         "dbtype=mysql;dbname=shop;dblocation=127.0.0.1;username=zol;password=zol"},
        {"mssql",
         "a SQL Server database",
         {{"dblocation", "the server, and its instance if any (host\\instance)"},
          {"dbname", "the database"},
          {"protocol", "1 for TCP/IP (required)"},
          {"port", "the server's port (1433 when empty)"},
          {"username", "the SQL login"},
          {"password", "its password"},
          {"auth_mode", "os to log in as the system's own user"}},
         "dbtype=mssql;dbname=shop;dblocation=db.example.com;protocol=1;username=sa;password=secret"},
        {"msaccess",
         "an Access 2000 (Jet 4) .mdb file",
         {{"dblocation", "the folder holding the file"},
          {"dbname", "the file's name, extension included"},
          {"password", "the database password, if the file has one"}},
         "dbtype=msaccess;dbname=shop.mdb;dblocation=/srv/data"},
        {"msxml",
         "an XML file holding a schema (no rows)",
         {{"dblocation", "the folder holding the file"}, {"dbname", "the file's name, extension included"}},
         "dbtype=msxml;dbname=shop.xml;dblocation=/tmp"},
    };
    return engines;
}

namespace {

std::string Lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::tolower(c); });
    return s;
}

std::string Trim(const std::string& s) {
    size_t a = s.find_first_not_of(" \t"), b = s.find_last_not_of(" \t");
    return a == std::string::npos ? std::string() : s.substr(a, b - a + 1);
}

struct Item {
    std::string key, value;
    size_t valueAt, valueLength;
};

// The key=value items of an attribute string; empty items are skipped.
std::vector<Item> Items(const std::string& attrs) {
    std::vector<Item> items;
    size_t at = 0;
    while (at <= attrs.size()) {
        size_t end = attrs.find(';', at);
        if (end == std::string::npos) end = attrs.size();
        std::string item = attrs.substr(at, end - at);
        if (!Trim(item).empty()) {
            size_t eq = item.find('=');
            if (eq == std::string::npos)
                items.push_back({Trim(item), "", std::string::npos, 0});
            else
                items.push_back({Lower(Trim(item.substr(0, eq))), item.substr(eq + 1), at + eq + 1, end - at - eq - 1});
        }
        at = end + 1;
    }
    return items;
}

std::string EngineNames() {
    std::string names;
    for (const Engine& e : Engines()) names += (names.empty() ? "" : ", ") + std::string(e.dbtype);
    return names;
}

} // namespace

std::string EngineHelp() {
    std::string text = "Attribute strings (ATTRS) are key=value items separated by ';'; keys are case-blind.\n"
                       "dbtype names the engine; the keys each engine reads:\n";
    for (const Engine& e : Engines()) {
        text += "\n  dbtype=" + std::string(e.dbtype) + ": " + e.what + "\n";
        for (const EngineKey& k : e.keys) {
            std::string key = k.key;
            text += "    " + key + std::string(key.size() < 12 ? 12 - key.size() : 1, ' ') + k.meaning + "\n";
        }
        text += "    example: \"" + std::string(e.example) + "\"\n";
    }
    return text;
}

std::string AttributeValue(const std::string& attrs, const std::string& key) {
    for (const Item& i : Items(attrs))
        if (i.key == Lower(key)) return i.value;
    return {};
}

std::string AttributeStringProblem(const std::string& attrs) {
    auto items = Items(attrs);
    for (const Item& i : items)
        if (i.valueAt == std::string::npos)
            return "'" + i.key + "' is no key=value item; an attribute string looks like \"" +
                   Engines().front().example + "\"";
    std::string type = Lower(Trim(AttributeValue(attrs, "dbtype")));
    for (const Engine& e : Engines())
        if (type == e.dbtype) return {};
    if (type.empty()) return "the attribute string names no engine: it has no dbtype (one of " + EngineNames() + ")";
    return "the attribute string names no engine: dbtype '" + type + "' is none of " + EngineNames();
}

std::string WithoutPassword(const std::string& attrs) {
    std::string out = attrs;
    auto items = Items(attrs);
    // From the back, so earlier offsets stay valid.
    for (auto i = items.rbegin(); i != items.rend(); ++i)
        if (i->key == "password" && i->valueLength) out.replace(i->valueAt, i->valueLength, "***");
    return out;
}

} // namespace zol
