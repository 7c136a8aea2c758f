#pragma once
// The engines an attribute string can name, the keys each one reads and an
// example of each: the one table behind the help texts and the check of
// ATTRS arguments.
#include <string>
#include <vector>

namespace zol {

struct EngineKey {
    const char* key;
    const char* meaning;
};

struct Engine {
    const char* dbtype;
    const char* what;
    std::vector<EngineKey> keys;
    const char* example;
};

const std::vector<Engine>& Engines();

// "Attribute strings (ATTRS): ..." with every engine's keys and an example.
std::string EngineHelp();

// The value of `key` in an attribute string (keys case-blind), empty when absent.
std::string AttributeValue(const std::string& attrs, const std::string& key);

// Why `attrs` cannot name a catalog, or empty when it can: it must be
// key=value items separated by ';' and name one of the engines above.
std::string AttributeStringProblem(const std::string& attrs);

// `attrs` with the password's value replaced by "***", for reports and logs.
std::string WithoutPassword(const std::string& attrs);

} // namespace zol
