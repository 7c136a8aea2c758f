// Stands in for the Access (Jet) provider until it is built; the file goes when
// the real provider arrives.
#include "platform/ado/backend.hpp"

namespace zolsdk::ado::detail {

std::shared_ptr<Backend> MakeJetBackend() {
    RaisePlatformFrom(3706, kConnectionSource,
                      u"Provider cannot be found. It may not be properly installed. (the Access (Jet) provider is not part of this build)");
}

} // namespace zolsdk::ado::detail
