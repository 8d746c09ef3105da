/// Parses the numbers of an OBJ file independently of the locale: a decimal comma is always an
/// error, and floats are rounded to the nearest value.
#pragma once

#include <cstdint>
#include <string_view>

namespace host {

enum class NumberFault {
    none,
    not_a_number, ///< the word is not entirely a decimal number
    not_finite,   ///< "nan", "inf" in any spelling
    too_large     ///< overflows single precision (integers: 64 bits)
};

/// Parses a decimal number, with an optional sign. Values too small for single precision become
/// zero with the same sign.
NumberFault parse_number(std::string_view word, float& value);

/// The nearest double-precision value of a word that `parse_number` has accepted.
double exact_number(std::string_view word);

/// Parses a decimal integer with an optional sign.
NumberFault parse_integer(std::string_view word, int64_t& value);

/// "is not a number" and the like, to append to the quoted word in a message.
const char* fault_text(NumberFault fault);

} // namespace host
