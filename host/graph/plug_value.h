/// The value of a plug: empty, a number of a fixed type, a string, or a data object (mesh, matrix).
///
/// Numbers keep their type, because data handles return references to them: a float attribute
/// stores a float. Only `assign_number` converts between number types. Data objects are shared:
/// copying a PlugValue that holds a mesh copies a handle. `deep_copy` makes an independent copy;
/// for meshes this is cheap, because their storage is shared until written.
#pragma once

#include "host/base/ref.h"

#include <cstdint>
#include <string>

namespace host::graph {

enum class ValueKind : uint8_t { none, boolean, byte, short_, integer, real32, real64, text, data };

class MHOST_EXPORT PlugValue {
public:
    PlugValue() : integer_(0) {}
    PlugValue(const PlugValue& other);
    PlugValue(PlugValue&& other) noexcept;
    PlugValue& operator=(const PlugValue& other);
    PlugValue& operator=(PlugValue&& other) noexcept;
    ~PlugValue() { reset(); }

    static PlugValue of_bool(bool v);
    static PlugValue of_byte(char v);
    static PlugValue of_short(short v);
    static PlugValue of_int(int32_t v);
    static PlugValue of_float(float v);
    static PlugValue of_double(double v);
    static PlugValue of_text(const MString& v);
    static PlugValue of_data(Object* v);
    /// The zero of a kind: false, 0, "", or no object.
    static PlugValue zero(ValueKind kind);

    ValueKind kind() const { return kind_; }
    bool is_none() const { return kind_ == ValueKind::none; }
    bool is_number() const { return kind_ >= ValueKind::boolean && kind_ <= ValueKind::real64; }

    /// Direct access; the kind must match.
    bool& as_bool() { return boolean_; }
    char& as_byte() { return byte_; }
    short& as_short() { return short_; }
    int32_t& as_int() { return integer_; }
    float& as_float() { return real32_; }
    double& as_double() { return real64_; }
    MString& as_text() { return *text_; }
    const MString& as_text() const { return *text_; }
    Object* as_data() const { return kind_ == ValueKind::data ? data_ : nullptr; }

    /// The number converted to double; 0 if the value is not a number.
    double number() const;
    /// Stores a number, converted to this value's kind: narrowed, truncated towards zero and
    /// clamped to the kind's range. Returns false if this value is not a number.
    bool assign_number(double number);

    /// Returns a copy that shares no data object with this value.
    PlugValue deep_copy() const;
    void reset();

private:
    template <class T>
    static PlugValue of(ValueKind kind, T PlugValue::*member, T v) {
        PlugValue value = zero(kind);
        value.*member = v;
        return value;
    }

    ValueKind kind_ = ValueKind::none;
    union {
        bool boolean_;
        char byte_;
        short short_;
        int32_t integer_;
        float real32_;
        double real64_;
        MString* text_;
        Object* data_;
    };
};

} // namespace host::graph
