#pragma once
// The value of a large cell: text or bytes, by its last assignment.
#include <cstdint>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk {

class ZOLSDK_API DbBlob : public Object {
public:
    bool IsBinary() const { return kind_ == 2; }
    int32_t size() const { return size_; }
    void text(StringView value);
    String text() const;
    void DataBytes(const Bytes& value);
    Bytes DataBytes() const { return bytes_; }

private:
    String text_;
    Bytes bytes_;
    int32_t size_ = 0;
    int32_t kind_ = 0; // 0 nothing yet, 1 text, 2 bytes
};

} // namespace zolsdk
