/// Reads the numbers of an OBJ file exactly and without the locale: a decimal comma is an error on
/// every machine, and the nearest single-precision value is the one that comes back.
#pragma once

#include <cstdint>
#include <string_view>

namespace host {

enum class NumberFault {
    none,
    not_a_number, ///< not a decimal number from the first character to the last
    not_finite,   ///< "nan", "inf" in any of their spellings
    too_large     ///< a number, but beyond single precision (or beyond 64 bits for integers)
};

/// A number too small for single precision becomes zero with its sign. One leading "+" is allowed.
NumberFault parse_number(std::string_view word, float& value);

/// The nearest double-precision value of a word that the other one has accepted.
double exact_number(std::string_view word);

/// A whole decimal number with an optional sign.
NumberFault parse_integer(std::string_view word, int64_t& value);

/// "is not a number", ... as the end of a sentence that starts with the quoted word.
const char* fault_text(NumberFault fault);

} // namespace host
