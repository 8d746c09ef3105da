/// Values of the script language: int (32 bits), float (a double), string, vector, matrix, and
/// arrays of the first four.
///
/// Scalars are copied with the Value. Copies of an array Value share the array, because the
/// language passes arrays to procedures by reference; assignment copies it with `converted`.
/// Conversions that the language does not have throw ScriptFault.
#pragma once

#include <maya/MTypes.h>

#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace host::script {

/// An error without a position; the interpreter adds file, line and column.
class MHOST_EXPORT ScriptFault : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

enum class Basic { none, integer, real, string, vector, matrix };

/// A variable's type: `int $a[]` is {integer, true}.
struct Type {
    Basic basic = Basic::none;
    bool array = false;
    bool operator==(const Type& other) const {
        return basic == other.basic && array == other.array;
    }
    bool operator!=(const Type& other) const { return !(*this == other); }
};

/// As the language spells it: "int", "string[]"; "void" for Basic::none.
MHOST_EXPORT std::string to_text(Type type);

struct Vector {
    double x = 0, y = 0, z = 0;
    bool operator==(const Vector& o) const { return x == o.x && y == o.y && z == o.z; }
};

struct Matrix {
    uint32_t rows = 0, columns = 0;
    std::vector<double> cells; ///< row by row
};

using IntArray = std::vector<int32_t>;
using RealArray = std::vector<double>;
using StringArray = std::vector<std::string>;
using VectorArray = std::vector<Vector>;

class MHOST_EXPORT Value {
public:
    Value() = default;
    Value(int32_t value) : data_(value) {}
    Value(bool value) : data_(int32_t(value)) {}
    Value(double value) : data_(value) {}
    Value(std::string value) : data_(std::move(value)) {}
    Value(const char* value) : data_(std::string(value)) {}
    Value(Vector value) : data_(value) {}
    Value(Matrix value) : data_(std::make_shared<Matrix>(std::move(value))) {}
    Value(IntArray value) : data_(std::make_shared<IntArray>(std::move(value))) {}
    Value(RealArray value) : data_(std::make_shared<RealArray>(std::move(value))) {}
    Value(StringArray value) : data_(std::make_shared<StringArray>(std::move(value))) {}
    Value(VectorArray value) : data_(std::make_shared<VectorArray>(std::move(value))) {}

    /// The default value of a type: 0, 0.0, "", <<0,0,0>>, or an empty array.
    static Value zero(Type type);

    Type type() const;
    bool is_none() const { return std::holds_alternative<std::monostate>(data_); }
    bool is_string() const { return std::holds_alternative<std::string>(data_); }
    bool is_number() const;
    /// Number of elements of an array; 1 for any other value.
    size_t size() const;

    /// A string converts to the number in its longest numeric prefix, 0 if it has no such prefix; a
    /// float is truncated to an int.
    int32_t to_int() const;
    double to_real() const;
    /// Floats have up to ten significant digits. Throws for an array.
    std::string to_string() const;
    Vector to_vector() const;
    bool truth() const;
    /// Returns a copy converted to `type`; its array is not shared. Throws "Cannot convert data of
    /// type A to type B."
    Value converted(Type type) const;
    /// Reads or writes an element. Past the end a read returns the type's zero and a write grows
    /// the array.
    Value element(int32_t index) const;
    void set_element(int32_t index, const Value& value);
    void append(const Value& value);
    void resize(size_t count);

    template <class T>
    T& as() {
        return *std::get<std::shared_ptr<T>>(data_);
    }
    template <class T>
    const T& as() const {
        return *std::get<std::shared_ptr<T>>(data_);
    }
    /// The text of a string value. Throws std::bad_variant_access for any other type.
    const std::string& text() const { return std::get<std::string>(data_); }
    std::string& text() { return std::get<std::string>(data_); }

    /// The output of `print`: an array as one line per element, each ending in a newline.
    std::string printed() const;
    /// Each element as text; one entry for a scalar, an empty array for void.
    StringArray flattened() const;

private:
    std::variant<std::monostate, int32_t, double, std::string, Vector, std::shared_ptr<Matrix>,
                 std::shared_ptr<IntArray>, std::shared_ptr<RealArray>,
                 std::shared_ptr<StringArray>, std::shared_ptr<VectorArray>>
        data_;
};

/// Returns a text as a string literal of the language, with quotes and escapes.
MHOST_EXPORT std::string quoted(const std::string& text);

/// A float as the language prints it, with up to ten significant digits.
MHOST_EXPORT std::string real_to_text(double value);

} // namespace host::script
