#include "host/graph/plug_value.h"

#include "host/graph/data.h"

#include <cstring>
#include <limits>

namespace host::graph {

namespace {

/// Truncates towards zero and clamps to the range of T; NaN becomes 0.
template <class T>
T clamped(double number) {
    if (number != number)
        return T(0);
    if (number <= static_cast<double>(std::numeric_limits<T>::min()))
        return std::numeric_limits<T>::min();
    if (number >= static_cast<double>(std::numeric_limits<T>::max()))
        return std::numeric_limits<T>::max();
    return static_cast<T>(number);
}

} // namespace

PlugValue::PlugValue(const PlugValue& other) : kind_(other.kind_), integer_(0) {
    switch (kind_) {
    case ValueKind::text:
        text_ = new MString(*other.text_);
        break;
    case ValueKind::data:
        data_ = other.data_;
        data_->retain();
        break;
    default:
        real64_ = 0;
        std::memcpy(&real64_, &other.real64_, sizeof(real64_));
    }
}

PlugValue::PlugValue(PlugValue&& other) noexcept : kind_(other.kind_), integer_(0) {
    std::memcpy(&real64_, &other.real64_, sizeof(real64_));
    other.kind_ = ValueKind::none;
}

PlugValue& PlugValue::operator=(const PlugValue& other) {
    if (this != &other)
        *this = PlugValue(other);
    return *this;
}

PlugValue& PlugValue::operator=(PlugValue&& other) noexcept {
    if (this != &other) {
        reset();
        kind_ = other.kind_;
        std::memcpy(&real64_, &other.real64_, sizeof(real64_));
        other.kind_ = ValueKind::none;
    }
    return *this;
}

void PlugValue::reset() {
    if (kind_ == ValueKind::text)
        delete text_;
    else if (kind_ == ValueKind::data)
        data_->release();
    kind_ = ValueKind::none;
    real64_ = 0;
}

PlugValue PlugValue::zero(ValueKind kind) {
    PlugValue value;
    value.real64_ = 0;
    if (kind == ValueKind::text)
        value.text_ = new MString;
    value.kind_ = kind == ValueKind::data ? ValueKind::none : kind;
    return value;
}

PlugValue PlugValue::of_bool(bool v) { return of(ValueKind::boolean, &PlugValue::boolean_, v); }
PlugValue PlugValue::of_byte(char v) { return of(ValueKind::byte, &PlugValue::byte_, v); }
PlugValue PlugValue::of_short(short v) { return of(ValueKind::short_, &PlugValue::short_, v); }
PlugValue PlugValue::of_int(int32_t v) { return of(ValueKind::integer, &PlugValue::integer_, v); }
PlugValue PlugValue::of_float(float v) { return of(ValueKind::real32, &PlugValue::real32_, v); }
PlugValue PlugValue::of_double(double v) { return of(ValueKind::real64, &PlugValue::real64_, v); }

PlugValue PlugValue::of_text(const MString& v) {
    PlugValue value = zero(ValueKind::text);
    *value.text_ = v;
    return value;
}

PlugValue PlugValue::of_data(Object* v) {
    PlugValue value;
    if (v != nullptr) {
        v->retain();
        value.data_ = v;
        value.kind_ = ValueKind::data;
    }
    return value;
}

double PlugValue::number() const {
    switch (kind_) {
    case ValueKind::boolean:
        return boolean_ ? 1.0 : 0.0;
    case ValueKind::byte:
        return byte_;
    case ValueKind::short_:
        return short_;
    case ValueKind::integer:
        return integer_;
    case ValueKind::real32:
        return static_cast<double>(real32_);
    case ValueKind::real64:
        return real64_;
    default:
        return 0.0;
    }
}

bool PlugValue::assign_number(double number) {
    switch (kind_) {
    case ValueKind::boolean:
        boolean_ = number != 0.0;
        return true;
    case ValueKind::byte:
        byte_ = clamped<char>(number);
        return true;
    case ValueKind::short_:
        short_ = clamped<short>(number);
        return true;
    case ValueKind::integer:
        integer_ = clamped<int32_t>(number);
        return true;
    case ValueKind::real32:
        real32_ = static_cast<float>(number);
        return true;
    case ValueKind::real64:
        real64_ = number;
        return true;
    default:
        return false;
    }
}

PlugValue PlugValue::deep_copy() const {
    if (kind_ == ValueKind::data)
        return PlugValue::of_data(copy_of_data(*data_).get());
    return *this;
}

} // namespace host::graph
