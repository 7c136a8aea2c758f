#include "zolsdk/platform/collection.hpp"

namespace zolsdk {

std::optional<size_t> Collection::Find(const String& key) const {
    String k = LCase(key);
    for (size_t i = 0; i < items_.size(); ++i)
        if (!items_[i].key.empty() && items_[i].key == k) return i;
    return std::nullopt;
}

size_t Collection::IndexOf(const Variant& index) const {
    if (index.IsString()) {
        auto i = Find(index.ToString());
        if (!i) RaisePlatform(err::InvalidCall);
        return *i;
    }
    int32_t n = index.ToLong();
    if (n < 1 || n > Count()) RaisePlatform(err::SubscriptOutOfRange);
    return static_cast<size_t>(n - 1);
}

void Collection::Add(const Variant& item, const String& key, const Variant& before, const Variant& after) {
    if (!key.empty() && Find(key)) RaisePlatform(err::DuplicateKey);
    Entry e{item, LCase(key)};
    size_t at = items_.size();
    if (!before.IsEmpty()) at = IndexOf(before);
    else if (!after.IsEmpty()) at = IndexOf(after) + 1;
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(at), std::move(e));
    values_.clear();
}

const Variant& Collection::Item(const Variant& index) const { return items_[IndexOf(index)].value; }

void Collection::Remove(const Variant& index) {
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(IndexOf(index)));
    values_.clear();
}

const std::vector<Variant>& Collection::Values() const {
    if (values_.size() != items_.size()) {
        values_.clear();
        for (auto& e : items_) values_.push_back(e.value);
    }
    return values_;
}

} // namespace zolsdk
