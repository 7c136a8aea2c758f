#pragma once
// The platform's keyed collection: ordered, 1-based, keys compared without
// regard to case. Unknown key: 5; position out of range: 9; a key that is
// already there: 457.
#include <cstdint>
#include <optional>
#include <vector>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk {

class ZOLSDK_API Collection : public Object {
public:
    // Appends, or inserts before/after the item named by a position or key.
    void Add(const Variant& item, const String& key = {}, const Variant& before = {}, const Variant& after = {});
    // By 1-based position (a number) or by key (a text).
    const Variant& Item(const Variant& index) const;
    void Remove(const Variant& index);
    int32_t Count() const { return static_cast<int32_t>(items_.size()); }
    bool Contains(const String& key) const { return Find(key).has_value(); }

    // Range-for over the values in order.
    auto begin() const { return Values().begin(); }
    auto end() const { return Values().end(); }

private:
    struct Entry {
        Variant value;
        String key; // lower-cased, empty for none
    };
    std::vector<Entry> items_;
    mutable std::vector<Variant> values_;

    const std::vector<Variant>& Values() const;
    std::optional<size_t> Find(const String& key) const;
    size_t IndexOf(const Variant& index) const;
};

} // namespace zolsdk
