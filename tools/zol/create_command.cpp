// zol create: a new, empty database where an attribute string points.
#include <iostream>

#include "commands.hpp"
#include "zolsdk/zolsdk.hpp"

namespace zol {

Command AddCreateCommand(CLI::App& zol) {
    auto attrs = std::make_shared<std::string>();
    CLI::App* app = zol.add_subcommand("create", "Create the database that ATTRS names (a server database or a file).");
    AddAttributeString(*app, "ATTRS", *attrs, "the database to create")->required();
    return {app, [attrs] {
                auto cat = OpenCatalog(*attrs);
                cat->Create();
                std::cout << "created " << zolsdk::ToUtf8(cat->Name()) << "\n";
                return 0;
            }};
}

} // namespace zol
