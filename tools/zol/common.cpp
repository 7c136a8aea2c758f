#include <cstdio>
#include <iostream>

#include "commands.hpp"
#include "engines.hpp"
#include "zolsdk/zolsdk.hpp"

namespace zol {

CLI::Option* AddAttributeString(CLI::App& app, const std::string& name, std::string& into,
                                const std::string& description) {
    app.footer(EngineHelp());
    return app.add_option(name, into, description)
        ->type_name(name.rfind("-", 0) == 0 ? "ATTRS" : "")
        ->check(CLI::Validator([](std::string& s) { return AttributeStringProblem(s); }, "", "attribute string"));
}

zolsdk::Ref<zolsdk::DbCatalog> OpenCatalog(const std::string& attrs) {
    using namespace zolsdk;
    auto cat = Ref<DbCatalog>::New();
    try {
        cat->Init(FromUtf8(attrs));
    } catch (DbError& e) {
        // The library's answers are terse here (91, 13): say what to change.
        std::string type = AttributeValue(attrs, "dbtype");
        if (e.Number() == err::ObjectNotSet)
            e.Description(e.Description() + FromUtf8(" (" + AttributeStringProblem(attrs) + ")"));
        else if (e.Number() == err::TypeMismatch && type == "mssql")
            e.Description(e.Description() + u" (a SQL Server attribute string needs protocol=1 for TCP/IP)");
        throw;
    }
    return cat;
}

std::string Describe(const zolsdk::DbError& e) {
    char num[16];
    std::snprintf(num, sizeof num, "0x%08X", static_cast<unsigned>(e.Number()));
    // Engine texts end their lines with CR LF; a captured log wants plain lines.
    std::string text = std::string(num) + " " + zolsdk::ToUtf8(e.Description()), clean;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || i + 1 >= text.size() || text[i + 1] != '\n') clean += text[i];
    return clean;
}

int ReportFailure(std::ostream& err, const std::exception& e) {
    if (auto* d = dynamic_cast<const zolsdk::DbError*>(&e)) {
        char num[16];
        std::snprintf(num, sizeof num, "0x%08X", static_cast<unsigned>(d->Number()));
        err << "zol: failed (" << num << ", " << d->Number() << "): " << zolsdk::ToUtf8(d->Description()) << "\n"
            << "  at: " << zolsdk::ToUtf8(d->Source()) << "\n";
    } else {
        err << "zol: failed: " << e.what() << "\n";
    }
    return 1;
}

} // namespace zol
