#pragma once
// Casting a Variant that should hold an object of one class, as a typed
// assignment of the platform does it: no object at all is a type mismatch
// (13), an object of another class too, and an object reference that is not
// set comes through as an empty Ref, which fails with 91 at its first use.
#include "zolsdk/platform/variant.hpp"

namespace zolsdk {

template <class T>
Ref<T> CastObject(const Variant& value) {
    Ref<Object> object = value.ToObject();
    if (object.IsNothing()) return {};
    Ref<T> typed = object.As<T>();
    if (typed.IsNothing()) RaisePlatform(err::TypeMismatch);
    return typed;
}

} // namespace zolsdk
