#pragma once
// The walk of a mapping collection: a snapshot in the order of adding.
#include "zolsdk/platform/snapshot_enum.hpp"

namespace zolsdk {

template <class T>
using DbMapEnum = SnapshotEnum<T>;

} // namespace zolsdk
