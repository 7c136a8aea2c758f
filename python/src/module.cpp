#include "binding.hpp"

NB_MODULE(_native, m) {
    using namespace zolsdk::py;
    m.doc() = "The native half of the zolsdk package; use the zolsdk module.";
    BindErrors(m);
    BindCatalog(m);
    BindRows(m);
    BindArrow(m);
    BindTransfer(m);
}
