#include "arrow_stream.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

namespace zolsdk::py {

namespace {

int64_t DaysFromCivil(int y, unsigned m, unsigned d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const auto yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

using i128 = __int128;
constexpr i128 Pow10(int n) {
    i128 r = 1;
    while (n-- > 0) r *= 10;
    return r;
}

// The Arrow type each type group is carried as.
enum class Kind { Utf8, Binary, Int64, Date32, Time32, Timestamp, Bool, Float64, Float32, Decimal };

struct ColumnBuilder {
    Kind kind;
    std::string name, format;
    int32_t group = 0;
    int precision = 38, scale = 0;
    int64_t length = 0, nulls = 0;
    std::vector<uint8_t> validity, data;
    std::vector<int32_t> offsets;

    explicit ColumnBuilder(const CursorColumn& c) : name(ToUtf8(c.name)), group(c.group) {
        switch (c.group) {
        case dtVarChar: case dtCharBLOB: kind = Kind::Utf8; format = "u"; break;
        case dtBinaryBLOB: kind = Kind::Binary; format = "z"; break;
        case dtInteger: case dtUnsignedInteger: kind = Kind::Int64; format = "l"; break;
        case dtDate: kind = Kind::Date32; format = "tdD"; break;
        case dtTime: kind = Kind::Time32; format = "tts"; break;
        case dtDateTime: kind = Kind::Timestamp; format = "tss:"; break;
        case dtBoolean: kind = Kind::Bool; format = "b"; break;
        case dtDouble: kind = Kind::Float64; format = "g"; break;
        case dtSingle: kind = Kind::Float32; format = "f"; break;
        case dtCurrency: kind = Kind::Decimal; precision = 19; scale = 4; break;
        case dtDecimal:
            kind = Kind::Decimal;
            scale = std::clamp(c.scale, 0, Decimal::MaxScale);
            precision = c.precision >= 1 && c.precision <= 38 ? std::max(c.precision, scale) : 38;
            break;
        default: kind = Kind::Utf8; format = "u"; break;   // unknown groups arrive as nulls
        }
        if (kind == Kind::Decimal) format = "d:" + std::to_string(precision) + "," + std::to_string(scale);
        Reset();
    }

    void Reset() {
        length = nulls = 0;
        validity.clear();
        data.clear();
        offsets.assign(1, 0);
    }

    template <class T>
    void Put(T v) {
        const size_t at = data.size();
        data.resize(at + sizeof(T));
        std::memcpy(data.data() + at, &v, sizeof(T));
    }
    void PutBytes(const void* p, size_t n) {
        const auto* b = static_cast<const uint8_t*>(p);
        data.insert(data.end(), b, b + n);
        if (data.size() > static_cast<size_t>(INT32_MAX))
            Fail(err::Overflow, u"the column " + FromUtf8(name) + u" holds more than 2 GiB in one batch");
        offsets.push_back(static_cast<int32_t>(data.size()));
    }
    void SetBit(std::vector<uint8_t>& bits, int64_t i, bool on) {
        if (static_cast<size_t>(i / 8) >= bits.size()) bits.push_back(0);
        if (on) bits[static_cast<size_t>(i / 8)] |= static_cast<uint8_t>(1u << (i % 8));
    }

    void AppendNull() {
        SetBit(validity, length, false);
        ++nulls;
        switch (kind) {
        case Kind::Utf8: case Kind::Binary: offsets.push_back(offsets.back()); break;
        case Kind::Int64: case Kind::Timestamp: case Kind::Float64: Put<int64_t>(0); break;
        case Kind::Date32: case Kind::Time32: case Kind::Float32: Put<int32_t>(0); break;
        case Kind::Bool: SetBit(data, length, false); break;
        case Kind::Decimal: Put<i128>(0); break;
        }
        ++length;
    }

    void Append(const Variant& v) {
        SetBit(validity, length, true);
        switch (kind) {
        case Kind::Utf8:
        case Kind::Binary: AppendVarLength(v); break;
        case Kind::Int64: Put<int64_t>(v.ToLong()); break;
        case Kind::Date32: {
            DateParts p = SplitDate(v.ToDate());
            Put<int32_t>(static_cast<int32_t>(DaysFromCivil(p.year, p.month, p.day)));
            break;
        }
        case Kind::Time32: {
            DateParts p = SplitDate(v.ToDate());
            Put<int32_t>(p.hour * 3600 + p.minute * 60 + p.second);
            break;
        }
        case Kind::Timestamp: {
            DateParts p = SplitDate(v.ToDate());
            Put<int64_t>(DaysFromCivil(p.year, p.month, p.day) * 86400 + p.hour * 3600 + p.minute * 60 + p.second);
            break;
        }
        case Kind::Bool: SetBit(data, length, v.ToBoolean()); break;
        case Kind::Float64: Put<double>(v.ToDouble()); break;
        case Kind::Float32: Put<float>(v.ToSingle()); break;
        case Kind::Decimal: Put<i128>(Unscaled(v)); break;
        }
        ++length;
    }

    void AppendVarLength(const Variant& v) {
        if (group == dtCharBLOB || group == dtBinaryBLOB) {
            Ref<DbBlob> blob = v.As<DbBlob>();
            if (kind == Kind::Binary || blob->IsBinary()) {
                Bytes b = blob->DataBytes();
                PutBytes(b.data(), b.size());
            } else {
                std::string s = ToUtf8(blob->text());
                PutBytes(s.data(), s.size());
            }
            return;
        }
        std::string s = ToUtf8(v.ToString());
        PutBytes(s.data(), s.size());
    }

    // The value as an integer of the column's scale; a value that would
    // lose digits or not fit the precision fails instead of changing.
    i128 Unscaled(const Variant& v) {
        if (group == dtCurrency) return v.ToCurrency().raw;
        Decimal d = v.ToDecimal();
        if (d.Scale() > scale) {
            Decimal r = d.Round(scale);
            if (r.Compare(d) != 0)
                Fail(err::Overflow, u"the value " + d.ToText() + u" of column " + FromUtf8(name) +
                                        u" has more fraction digits than its scale");
            d = r;
        }
        i128 m = static_cast<i128>(d.Mantissa()) * Pow10(scale - d.Scale());
        if (m >= Pow10(precision))
            Fail(err::Overflow, u"the value " + d.ToText() + u" of column " + FromUtf8(name) +
                                    u" does not fit its precision");
        return d.IsNegative() ? -m : m;
    }
};

// ---- exported memory: each array owns its buffers through private_data ----

struct ArrayData {
    std::vector<uint8_t> validity, data;
    std::vector<int32_t> offsets;
    std::vector<const void*> buffers;
    std::vector<ArrowArray*> children;
};

void ReleaseArray(ArrowArray* a) {
    if (!a->release) return;
    auto* d = static_cast<ArrayData*>(a->private_data);
    for (ArrowArray* c : d->children) {
        if (c->release) c->release(c);
        delete c;
    }
    delete d;
    a->release = nullptr;
}

void ExportColumn(ColumnBuilder& b, ArrowArray* out) {
    auto* d = new ArrayData;
    d->validity.swap(b.validity);
    d->data.swap(b.data);
    d->offsets.swap(b.offsets);
    d->buffers.push_back(b.nulls ? d->validity.data() : nullptr);
    if (b.kind == Kind::Utf8 || b.kind == Kind::Binary) d->buffers.push_back(d->offsets.data());
    // Readers may refuse a null data buffer even when it holds no bytes.
    static const uint64_t none = 0;
    d->buffers.push_back(d->data.empty() ? static_cast<const void*>(&none) : d->data.data());
    *out = ArrowArray{b.length, b.nulls, 0, static_cast<int64_t>(d->buffers.size()), 0, d->buffers.data(),
                      nullptr, nullptr, &ReleaseArray, d};
    b.Reset();
}

struct SchemaData {
    std::vector<std::string> text;   // format and name of this node
    std::vector<ArrowSchema*> children;
};

void ReleaseSchema(ArrowSchema* s) {
    if (!s->release) return;
    auto* d = static_cast<SchemaData*>(s->private_data);
    for (ArrowSchema* c : d->children) {
        if (c->release) c->release(c);
        delete c;
    }
    delete d;
    s->release = nullptr;
}

void MakeSchema(ArrowSchema* out, const std::string& format, const std::string& name, int64_t flags,
                std::vector<ArrowSchema*> children) {
    auto* d = new SchemaData{{format, name}, std::move(children)};
    *out = ArrowSchema{d->text[0].c_str(), d->text[1].c_str(), nullptr, flags,
                       static_cast<int64_t>(d->children.size()), d->children.data(), nullptr, &ReleaseSchema, d};
}

// ---- the stream -------------------------------------------------------------

struct Stream {
    std::unique_ptr<RowCursor> cursor;
    std::vector<ColumnBuilder> columns;
    int64_t batchRows;
    std::string error;
};

// Lets the walk's objects go under the catalog's lock, like any other use;
// the handle is held here so that the lock outlives the cursor.
void DropCursor(Stream* st) {
    if (!st->cursor) return;
    CatalogPtr h = st->cursor->Shared();
    std::lock_guard<std::mutex> g(h->lock);
    st->cursor.reset();
}

std::string FailureText(const DbError& e) {
    return ToUtf8(e.Description()) + " (number " + std::to_string(e.Number()) + ")\n" + ToUtf8(e.Source());
}

int GetSchema(ArrowArrayStream* s, ArrowSchema* out) {
    auto* st = static_cast<Stream*>(s->private_data);
    std::vector<ArrowSchema*> children;
    for (const auto& c : st->columns) {
        auto* child = new ArrowSchema;
        MakeSchema(child, c.format, c.name, ARROW_FLAG_NULLABLE, {});
        children.push_back(child);
    }
    MakeSchema(out, "+s", "", 0, std::move(children));
    return 0;
}

int GetNext(ArrowArrayStream* s, ArrowArray* out) {
    auto* st = static_cast<Stream*>(s->private_data);
    try {
        int64_t rows = 0;
        if (st->cursor) {
            std::lock_guard<std::mutex> g(st->cursor->Handle().lock);
            const auto width = static_cast<int32_t>(st->columns.size());
            for (; rows < st->batchRows; ++rows) {
                DbDataRow* row = st->cursor->Next();
                if (!row) break;
                for (int32_t i = 0; i < width; ++i) {
                    if (RowCursor::IsNull(*row, i)) st->columns[i].AppendNull();
                    else st->columns[i].Append(RowCursor::Value(*row, i));
                }
            }
        }
        if (rows == 0) {
            DropCursor(st);
            out->release = nullptr;   // the end of the stream
            return 0;
        }
        auto* d = new ArrayData;
        for (auto& c : st->columns) {
            auto* child = new ArrowArray;
            ExportColumn(c, child);
            d->children.push_back(child);
        }
        d->buffers.push_back(nullptr);
        *out = ArrowArray{rows, 0, 0, 1, static_cast<int64_t>(d->children.size()), d->buffers.data(),
                          d->children.data(), nullptr, &ReleaseArray, d};
        return 0;
    } catch (const DbError& e) {
        st->error = FailureText(e);
    } catch (...) {
        st->error = FailureText(CurrentFailure());
    }
    DropCursor(st);
    return EIO;
}

const char* LastError(ArrowArrayStream* s) {
    auto* st = static_cast<Stream*>(s->private_data);
    return st->error.empty() ? nullptr : st->error.c_str();
}

void ReleaseStream(ArrowArrayStream* s) {
    if (!s->release) return;
    auto* st = static_cast<Stream*>(s->private_data);
    DropCursor(st);
    delete st;
    s->release = nullptr;
}

} // namespace

void ExportArrowStream(std::unique_ptr<RowCursor> cursor, int64_t batchRows, ArrowArrayStream* out) {
    auto* st = new Stream{std::move(cursor), {}, batchRows > 0 ? batchRows : 65536, {}};
    for (const auto& c : st->cursor->Columns()) st->columns.emplace_back(c);
    *out = ArrowArrayStream{&GetSchema, &GetNext, &LastError, &ReleaseStream, st};
}

} // namespace zolsdk::py
