// zol verify: compares the tables of two catalogs by row count and an
// order-independent checksum of their normalised values, without copying.
#include <iostream>

#include "commands.hpp"
#include "zolsdk/transfer/transfer.hpp"

using namespace zolsdk;

namespace zol {

int VerifyCommand(const Args& args, std::ostream& out) {
    std::string from, to;
    transfer::Options options;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        bool hasValue = i + 1 < args.size();
        if (a == "--from" && hasValue) from = args[++i];
        else if (a == "--to" && hasValue) to = args[++i];
        else if (a == "--table" && hasValue) options.tables.push_back(FromUtf8(args[++i]));
        else if (a == "--lock-timeout" && hasValue) options.lockTimeoutSeconds = std::stoi(args[++i]);
        else {
            std::cerr << "zol verify: unexpected argument '" << a << "'\n";
            return Usage(std::cerr, 2);
        }
    }
    if (from.empty() || to.empty()) {
        std::cerr << "zol verify: --from and --to are required\n";
        return Usage(std::cerr, 2);
    }
    transfer::Plan plan = transfer::MakePlan(FromUtf8(from), FromUtf8(to), options);
    transfer::Report report = transfer::VerifyAll(plan, options);
    out << ToUtf8(report.Text());
    return report.Ok() ? 0 : 1;
}

} // namespace zol
