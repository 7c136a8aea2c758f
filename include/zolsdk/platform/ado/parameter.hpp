#pragma once
// A bound parameter of a statement: what IDBSession::ExecuteNoQueryEx takes,
// one per "?" mark of the statement, in order.
#include <cstdint>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk::ado {

// Parameter directions.
constexpr int32_t adParamInput = 1;

class ZOLSDK_API Parameter : public Object {
public:
    Parameter() = default;
    Parameter(String name, int32_t type, int32_t direction, int32_t size, Variant value)
        : name_(std::move(name)), type_(type), direction_(direction), size_(size), value_(std::move(value)) {}

    const String& Name() const { return name_; }
    void Name(String n) { name_ = std::move(n); }
    int32_t Type() const { return type_; }
    void Type(int32_t t) { type_ = t; }
    int32_t Direction() const { return direction_; }
    void Direction(int32_t d) { direction_ = d; }
    int32_t Size() const { return size_; }
    void Size(int32_t s) { size_ = s; }
    const Variant& Value() const { return value_; }
    void Value(Variant v) { value_ = std::move(v); }

private:
    String name_;
    int32_t type_ = adType::VarWChar, direction_ = adParamInput, size_ = 0;
    Variant value_ = Variant::Null();
};

} // namespace zolsdk::ado
