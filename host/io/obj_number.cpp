#include "host/io/obj_number.h"

#include <charconv>
#include <cmath>

namespace host {
namespace {

std::string_view without_plus(std::string_view word) {
    if (word.size() > 1 && word[0] == '+' && word[1] != '-' && word[1] != '+')
        word.remove_prefix(1);
    return word;
}

/// Whether the magnitude of a decimal number is below one; tells underflow from overflow, for which
/// from_chars returns the same error.
bool below_one(std::string_view word) {
    int64_t power = 0; // decimal exponent of the first digit that is not zero
    bool seen_point = false, seen_digit = false;
    size_t i = word.empty() || word[0] != '-' ? 0 : 1;
    for (; i < word.size() && word[i] != 'e' && word[i] != 'E'; ++i) {
        if (word[i] == '.')
            seen_point = true;
        else if (seen_digit || word[i] != '0') {
            power += seen_digit && !seen_point ? 1 : 0;
            power -= !seen_digit && seen_point ? 1 : 0;
            seen_digit = true;
        } else if (seen_point)
            --power;
    }
    if (i < word.size()) {
        const bool negative = i + 1 < word.size() && word[i + 1] == '-';
        const std::string_view digits = without_plus(word.substr(i + 1));
        int64_t exponent = 0;
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
        if (read.ec == std::errc::result_out_of_range)
            return negative;
        power += exponent;
    }
    return power < 0;
}

} // namespace

NumberFault parse_number(std::string_view word, float& value) {
    word = without_plus(word);
    const char* end = word.data() + word.size();
    const auto read = std::from_chars(word.data(), end, value);
    if (read.ec == std::errc::invalid_argument || read.ptr != end)
        return NumberFault::not_a_number;
    if (read.ec == std::errc::result_out_of_range) {
        if (!below_one(word))
            return NumberFault::too_large;
        value = word[0] == '-' ? -0.0f : 0.0f;
        return NumberFault::none;
    }
    return std::isfinite(value) ? NumberFault::none : NumberFault::not_finite;
}

double exact_number(std::string_view word) {
    word = without_plus(word);
    double value = 0.0;
    std::from_chars(word.data(), word.data() + word.size(), value);
    return value;
}

NumberFault parse_integer(std::string_view word, int64_t& value) {
    word = without_plus(word);
    const char* end = word.data() + word.size();
    const auto read = std::from_chars(word.data(), end, value);
    if (read.ec == std::errc::invalid_argument || read.ptr != end)
        return NumberFault::not_a_number;
    return read.ec == std::errc() ? NumberFault::none : NumberFault::too_large;
}

const char* fault_text(NumberFault fault) {
    switch (fault) {
    case NumberFault::not_finite:
        return "is not a finite number";
    case NumberFault::too_large:
        return "is too large";
    default:
        return "is not a number";
    }
}

} // namespace host
