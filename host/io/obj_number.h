/// Parses the numbers of an OBJ file independently of the locale: a decimal comma is always an
/// error, and floats are rounded to the nearest value.
#pragma once

#include <maya/MTypes.h>

#include <cstdint>
#include <string_view>

namespace host {

enum class NumberFault {
    none,
    not_a_number, ///< the word is not entirely a decimal number
    not_finite,   ///< "nan", "inf" in any spelling
    too_large     ///< overflows single precision (integers: 64 bits)
};

/// Parses a decimal number, with an optional sign, to the nearest values in single and in double
/// precision. Values too small for single precision become zero there, with the same sign.
MHOST_EXPORT NumberFault parse_number(std::string_view word, float& value, double& exact);

/// Parses a decimal integer with an optional sign.
MHOST_EXPORT NumberFault parse_integer(std::string_view word, int64_t& value);

/// "is not a number" and the like, to append to the quoted word in a message.
const char* fault_text(NumberFault fault);

} // namespace host
