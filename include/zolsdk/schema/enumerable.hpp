#pragma once
// Enumeration of the schema collections. A collection implements
// IVBEnumerable (GetNext/Reset/Skip); DbEnumerator turns that into C++
// range-for. GetNext hands out one reused item object, refilled at every
// step: read it before the next step, or copy what you need.
#include <cstdint>
#include <iterator>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk {

class ZOLSDK_API IVBEnumerable : public Object {
public:
    // 0 with `value` holding an item, -1 at the end (then `value` is no item).
    virtual int32_t GetNext(Variant& value) = 0;
    virtual int32_t Reset() = 0;
    virtual int32_t Skip(int32_t count) = 0;
};

// The enumeration object of NewEnum: walks from the first row to the last.
template <class Item>
class ZOLSDK_API DbEnumerator : public Object {
public:
    DbEnumerator(Ref<IVBEnumerable> source, int32_t firstStatus) : source_(std::move(source)), status_(firstStatus) {}

    class iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Ref<Item>;
        using difference_type = std::ptrdiff_t;
        using pointer = const Ref<Item>*;
        using reference = const Ref<Item>&;

        iterator() = default;
        explicit iterator(Ref<IVBEnumerable> src) : src_(std::move(src)) { Step(); }
        reference operator*() const { return current_; }
        pointer operator->() const { return &current_; }
        iterator& operator++() { Step(); return *this; }
        void operator++(int) { Step(); }
        friend bool operator==(const iterator& a, const iterator& b) { return a.done() == b.done(); }

    private:
        Ref<IVBEnumerable> src_;
        Ref<Item> current_;
        bool done() const { return !src_; }
        void Step() {
            Variant v;
            if (src_->GetNext(v) == -1) { src_.Release(); current_.Release(); return; }
            current_ = v.As<Item>();
        }
    };

    iterator begin() {
        // Nothing to walk when Reset found no rows.
        if (status_ == -1) return iterator();
        status_ = -1; // a second walk needs a new enumerator
        return iterator(source_);
    }
    iterator end() { return iterator(); }

private:
    Ref<IVBEnumerable> source_;
    int32_t status_;
};

} // namespace zolsdk
