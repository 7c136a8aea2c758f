#include "transfer_output.hpp"

#include <chrono>
#include <memory>

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

std::function<void(const transfer::Progress&)> ProgressPrinter(std::ostream& out) {
    using Clock = std::chrono::steady_clock;
    struct State {
        String table;
        Clock::time_point start;
    };
    auto st = std::make_shared<State>();
    return [st, &out](const transfer::Progress& p) {
        if (p.table != st->table) {
            st->table = p.table;
            st->start = Clock::now();
        }
        double s = std::chrono::duration<double>(Clock::now() - st->start).count();
        out << "\r  " << ToUtf8(p.table) << ": " << p.rows << " rows, "
            << static_cast<int64_t>(s > 0 ? static_cast<double>(p.rows) / s : 0.0) << " rows/s   " << std::flush;
    };
}

} // namespace zol
