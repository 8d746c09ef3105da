#include "host/script/value.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace host::script {

namespace {

/// Limit on array indices, so that a typing error does not exhaust the memory.
constexpr int32_t k_max_array_index = 100'000'000;

[[noreturn]] void no_conversion(Type from, Type to) {
    throw ScriptFault("Cannot convert data of type " + to_text(from) + " to type " + to_text(to) +
                      ".");
}

double prefix_number(const std::string& text) {
    char* end = nullptr;
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    if (hex)
        return double(std::strtoll(text.c_str(), &end, 16));
    const double value = std::strtod(text.c_str(), &end);
    return end == text.c_str() ? 0.0 : value;
}

int32_t truncated(double value) {
    if (std::isnan(value))
        return 0;
    if (value >= 2147483647.0)
        return std::numeric_limits<int32_t>::max();
    if (value <= -2147483648.0)
        return std::numeric_limits<int32_t>::min();
    return int32_t(value);
}

std::string vector_to_text(const Vector& v) {
    return real_to_text(v.x) + " " + real_to_text(v.y) + " " + real_to_text(v.z);
}

std::string matrix_to_text(const Matrix& m) {
    std::string text = "<<";
    for (size_t i = 0; i < m.cells.size(); ++i) {
        if (i != 0)
            text += i % m.columns == 0 ? "; " : ", ";
        text += real_to_text(m.cells[i]);
    }
    return text + ">>";
}

template <class T>
void grow_to(std::vector<T>& values, int32_t index) {
    if (size_t(index) >= values.size())
        values.resize(size_t(index) + 1);
}

} // namespace

std::string to_text(Type type) {
    static const char* const names[] = {"void", "int", "float", "string", "vector", "matrix"};
    return std::string(names[size_t(type.basic)]) + (type.array ? "[]" : "");
}

std::string real_to_text(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            result += '\\';
        if (c == '\n')
            result += "\\n";
        else if (c == '\t')
            result += "\\t";
        else if (c == '\r')
            result += "\\r";
        else
            result += c;
    }
    return result + "\"";
}

Value Value::zero(Type type) {
    switch (type.basic) {
    case Basic::integer:
        return type.array ? Value(IntArray()) : Value(int32_t(0));
    case Basic::real:
        return type.array ? Value(RealArray()) : Value(0.0);
    case Basic::string:
        return type.array ? Value(StringArray()) : Value(std::string());
    case Basic::vector:
        return type.array ? Value(VectorArray()) : Value(Vector());
    case Basic::matrix:
        return Value(Matrix());
    case Basic::none:
        break;
    }
    return Value();
}

Type Value::type() const {
    static constexpr Type types[] = {{Basic::none, false},   {Basic::integer, false},
                                     {Basic::real, false},   {Basic::string, false},
                                     {Basic::vector, false}, {Basic::matrix, false},
                                     {Basic::integer, true}, {Basic::real, true},
                                     {Basic::string, true},  {Basic::vector, true}};
    return types[data_.index()];
}

bool Value::is_number() const {
    return std::holds_alternative<int32_t>(data_) || std::holds_alternative<double>(data_);
}

size_t Value::size() const {
    switch (type().array ? type().basic : Basic::none) {
    case Basic::integer:
        return as<IntArray>().size();
    case Basic::real:
        return as<RealArray>().size();
    case Basic::string:
        return as<StringArray>().size();
    case Basic::vector:
        return as<VectorArray>().size();
    default:
        return 1;
    }
}

int32_t Value::to_int() const {
    if (const auto* value = std::get_if<int32_t>(&data_))
        return *value;
    return truncated(to_real());
}

double Value::to_real() const {
    if (const auto* value = std::get_if<int32_t>(&data_))
        return *value;
    if (const auto* value = std::get_if<double>(&data_))
        return *value;
    if (const auto* value = std::get_if<std::string>(&data_))
        return prefix_number(*value);
    if (const auto* value = std::get_if<Vector>(&data_))
        return std::sqrt(value->x * value->x + value->y * value->y + value->z * value->z);
    no_conversion(type(), {Basic::real, false});
}

std::string Value::to_string() const {
    if (is_none())
        return std::string();
    if (const auto* value = std::get_if<std::string>(&data_))
        return *value;
    if (const auto* value = std::get_if<int32_t>(&data_))
        return std::to_string(*value);
    if (const auto* value = std::get_if<double>(&data_))
        return real_to_text(*value);
    if (const auto* value = std::get_if<Vector>(&data_))
        return vector_to_text(*value);
    if (type().basic == Basic::matrix)
        return matrix_to_text(as<Matrix>());
    no_conversion(type(), {Basic::string, false});
}

Vector Value::to_vector() const {
    if (const auto* value = std::get_if<Vector>(&data_))
        return *value;
    if (type().array && size() == 3 && type().basic == Basic::real)
        return {as<RealArray>()[0], as<RealArray>()[1], as<RealArray>()[2]};
    if (type().array || type().basic == Basic::matrix || is_none())
        no_conversion(type(), {Basic::vector, false});
    const double value = to_real();
    return {value, value, value};
}

bool Value::truth() const {
    if (type().array || type().basic == Basic::matrix || is_none())
        no_conversion(type(), {Basic::integer, false});
    return to_real() != 0.0;
}

Value Value::converted(Type to) const {
    const Type from = type();
    if (to.array != from.array)
        no_conversion(from, to);
    if (!to.array) {
        switch (to.basic) {
        case Basic::integer:
            return to_int();
        case Basic::real:
            return to_real();
        case Basic::string:
            return to_string();
        case Basic::vector:
            return to_vector();
        case Basic::matrix:
            if (from.basic == Basic::matrix)
                return as<Matrix>();
            break;
        case Basic::none:
            break;
        }
        no_conversion(from, to);
    }
    Value result = zero(to);
    result.resize(size());
    for (size_t i = 0; i < size(); ++i)
        result.set_element(int32_t(i), element(int32_t(i)));
    return result;
}

Value Value::element(int32_t index) const {
    if (index < 0)
        throw ScriptFault("Array index " + std::to_string(index) + " is negative.");
    const Type kind = type();
    if (size_t(index) >= size())
        return zero({kind.basic, false});
    switch (kind.basic) {
    case Basic::integer:
        return as<IntArray>()[size_t(index)];
    case Basic::real:
        return as<RealArray>()[size_t(index)];
    case Basic::string:
        return as<StringArray>()[size_t(index)];
    default:
        return as<VectorArray>()[size_t(index)];
    }
}

void Value::set_element(int32_t index, const Value& value) {
    if (index < 0)
        throw ScriptFault("Array index " + std::to_string(index) + " is negative.");
    if (index > k_max_array_index)
        throw ScriptFault("Array index " + std::to_string(index) + " is too large.");
    switch (type().basic) {
    case Basic::integer:
        grow_to(as<IntArray>(), index);
        as<IntArray>()[size_t(index)] = value.to_int();
        break;
    case Basic::real:
        grow_to(as<RealArray>(), index);
        as<RealArray>()[size_t(index)] = value.to_real();
        break;
    case Basic::string:
        grow_to(as<StringArray>(), index);
        as<StringArray>()[size_t(index)] = value.to_string();
        break;
    default:
        grow_to(as<VectorArray>(), index);
        as<VectorArray>()[size_t(index)] = value.to_vector();
        break;
    }
}

void Value::append(const Value& value) { set_element(int32_t(size()), value); }

void Value::resize(size_t count) {
    switch (type().basic) {
    case Basic::integer:
        as<IntArray>().resize(count);
        break;
    case Basic::real:
        as<RealArray>().resize(count);
        break;
    case Basic::string:
        as<StringArray>().resize(count);
        break;
    default:
        as<VectorArray>().resize(count);
        break;
    }
}

std::string Value::printed() const {
    if (!type().array)
        return to_string();
    std::string text;
    for (const std::string& line : flattened())
        text += line + "\n";
    return text;
}

StringArray Value::flattened() const {
    if (is_none())
        return {};
    if (!type().array)
        return {to_string()};
    StringArray texts;
    texts.reserve(size());
    for (size_t i = 0; i < size(); ++i)
        texts.push_back(element(int32_t(i)).to_string());
    return texts;
}

} // namespace host::script
