#pragma once
// Public objects are shared by reference count. Ref<T> is the reference:
// a call through an empty Ref raises DbError 91 ("Object variable or With
// block variable not set") instead of crashing, because callers (and the
// library itself) trap that failure.
#include <memory>
#include <type_traits>
#include <utility>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk {

// Root of every object a Variant can hold.
class ZOLSDK_API Object : public std::enable_shared_from_this<Object> {
public:
    virtual ~Object() = default;
};

template <class T>
class ZOLSDK_API Ref {
public:
    Ref() = default;
    Ref(std::nullptr_t) {}
    Ref(std::shared_ptr<T> p) : p_(std::move(p)) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    Ref(const Ref<U>& o) : p_(o.shared()) {}

    template <class... A>
    static Ref New(A&&... a) { return Ref(std::make_shared<T>(std::forward<A>(a)...)); }

    T* operator->() const { return &Get(); }
    T& operator*() const { return Get(); }
    T& Get() const {
        if (!p_) RaisePlatform(err::ObjectNotSet);
        return *p_;
    }

    bool IsNothing() const { return !p_; }
    explicit operator bool() const { return static_cast<bool>(p_); }
    T* get() const { return p_.get(); }
    const std::shared_ptr<T>& shared() const { return p_; }
    void Release() { p_.reset(); }

    // Cast to another interface of the same object: empty when it has none.
    template <class U>
    Ref<U> As() const { return Ref<U>(std::dynamic_pointer_cast<U>(p_)); }

    friend bool operator==(const Ref& a, const Ref& b) { return a.p_ == b.p_; }

    // Range-for over a referenced collection keeps the collection alive for
    // the walk: `for (auto col : table->Columns())`.
    auto begin() const
        requires requires(T& t) { t.NewEnum(); }
    {
        return Get().NewEnum()->begin();
    }
    auto end() const
        requires requires(T& t) { t.NewEnum(); }
    {
        return decltype(Get().NewEnum()->begin())();
    }

private:
    std::shared_ptr<T> p_;
};

// A Ref to `self` from inside a member function of an Object-derived class.
template <class T>
Ref<T> SelfRef(T* self) {
    return Ref<T>(std::dynamic_pointer_cast<T>(self->shared_from_this()));
}

} // namespace zolsdk
