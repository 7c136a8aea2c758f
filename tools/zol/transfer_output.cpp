#include "transfer_output.hpp"

using namespace zolsdk;

namespace zol {

namespace {
const char* EngineText(transfer::Engine e) {
    switch (e) {
    case transfer::Engine::Access: return "Access";
    case transfer::Engine::SqlServer: return "SQL Server";
    case transfer::Engine::MySql: return "MariaDB";
    case transfer::Engine::Xml: return "XML";
    }
    return "?";
}
} // namespace

void PrintPlan(const transfer::Plan& plan, std::ostream& out) {
    out << "plan: " << plan.tables.size() << " tables from " << EngineText(plan.source) << " into "
        << EngineText(plan.target) << "\n";
    for (const auto& t : plan.tables)
        for (const auto& c : t.changes) out << "  " << ToUtf8(t.name) << ": " << ToUtf8(c) << "\n";
}

} // namespace zol
