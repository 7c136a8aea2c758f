#pragma once
// The walk of a collection of objects: the items as they stood when NewEnum
// was asked, in order, as typed references. Adding or removing items during
// a walk does not disturb it, and the iterators share the snapshot, so the
// enumeration object itself may go out of scope while a range-for runs.
#include <cstddef>
#include <iterator>
#include <memory>
#include <vector>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/collection.hpp"

namespace zolsdk {

template <class T>
class ZOLSDK_API SnapshotEnum : public Object {
    using Items = std::vector<Ref<T>>;

public:
    explicit SnapshotEnum(Items items) : items_(std::make_shared<const Items>(std::move(items))) {}
    explicit SnapshotEnum(const Collection& items) {
        auto list = std::make_shared<Items>();
        list->reserve(static_cast<size_t>(items.Count()));
        for (const Variant& v : items) list->push_back(v.template As<T>());
        items_ = std::move(list);
    }

    class iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Ref<T>;
        using difference_type = std::ptrdiff_t;
        using pointer = const Ref<T>*;
        using reference = const Ref<T>&;

        iterator() = default; // the end
        iterator(std::shared_ptr<const Items> items, size_t position)
            : items_(std::move(items)), position_(position) {
            if (position_ >= items_->size()) items_.reset();
        }
        reference operator*() const { return (*items_)[position_]; }
        pointer operator->() const { return &(*items_)[position_]; }
        iterator& operator++() {
            if (++position_ >= items_->size()) items_.reset();
            return *this;
        }
        iterator operator++(int) {
            iterator old = *this;
            ++*this;
            return old;
        }
        friend bool operator==(const iterator& a, const iterator& b) {
            if (!a.items_ || !b.items_) return !a.items_ && !b.items_;
            return a.items_ == b.items_ && a.position_ == b.position_;
        }

    private:
        std::shared_ptr<const Items> items_; // none at the end
        size_t position_ = 0;
    };

    iterator begin() const { return iterator(items_, 0); }
    iterator end() const { return iterator(); }
    int32_t Count() const { return static_cast<int32_t>(items_->size()); }

private:
    std::shared_ptr<const Items> items_;
};

} // namespace zolsdk
