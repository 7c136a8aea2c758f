// zol drop: removes the database that an attribute string names.
#include <iostream>

#include "commands.hpp"
#include "zolsdk/zolsdk.hpp"

namespace zol {

Command AddDropCommand(CLI::App& zol) {
    auto attrs = std::make_shared<std::string>();
    CLI::App* app = zol.add_subcommand("drop", "Drop the database that ATTRS names, with all it holds.");
    AddAttributeString(*app, "ATTRS", *attrs, "the database to drop")->required();
    return {app, [attrs] {
                auto cat = OpenCatalog(*attrs);
                cat->Drop();
                std::cout << "dropped " << zolsdk::ToUtf8(cat->Name()) << "\n";
                return 0;
            }};
}

} // namespace zol
