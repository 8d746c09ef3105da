#include "host/io/obj_number.h"

#include <charconv>
#include <cmath>
#include <cstring>

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

/// A decimal number that both precisions can be computed from: digits * 10^power.
struct Decimal {
    uint64_t digits = 0;
    int power = 0;
};

/// Reads a word of digits with at most one point and no exponent. False if it is anything else or
/// has more than 19 digits.
bool read_plain_decimal(std::string_view word, Decimal& decimal) {
    size_t count = 0;
    bool seen_point = false;
    for (const char c : word) {
        if (c == '.' && !seen_point) {
            seen_point = true;
            continue;
        }
        const auto digit = static_cast<unsigned>(c - '0');
        if (digit > 9)
            return false;
        decimal.digits = 10 * decimal.digits + digit;
        decimal.power -= seen_point ? 1 : 0;
        ++count;
    }
    return count > 0 && count <= 19;
}

/// Computes the nearest values of plain decimals, which nearly all numbers in a file are. False if
/// rounding could go wrong; the standard library's parser, which takes ten times as long, has to
/// read the word then.
///
/// Digits up to 2^53 and powers of ten up to 10^22 are exact in double precision, so their quotient
/// is rounded once (W. D. Clinger, "How to read floating point numbers accurately", 1990). Rounding
/// it again to single precision is right unless it lies half-way between two such values.
bool compute_number(std::string_view word, float& value, double& exact) {
    constexpr double k_powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const bool is_negative = !word.empty() && word[0] == '-';
    Decimal decimal;
    if (!read_plain_decimal(word.substr(is_negative ? 1 : 0), decimal) ||
        decimal.digits > (uint64_t{1} << 53))
        return false;
    const double size = static_cast<double>(decimal.digits) / k_powers[-decimal.power];
    if (size != 0.0 && (size < 1e-37 || size > 1e38))
        return false;
    uint64_t bits = 0;
    std::memcpy(&bits, &size, sizeof bits);
    if ((bits & 0x1FFFFFFF) == 0x10000000)
        return false;
    exact = is_negative ? -size : size;
    value = static_cast<float>(exact);
    return true;
}

} // namespace

NumberFault parse_number(std::string_view word, float& value, double& exact) {
    word = without_plus(word);
    if (compute_number(word, value, exact))
        return NumberFault::none;
    const char* end = word.data() + word.size();
    const auto read = std::from_chars(word.data(), end, value);
    if (read.ec == std::errc::invalid_argument || read.ptr != end)
        return NumberFault::not_a_number;
    exact = 0.0;
    std::from_chars(word.data(), end, exact);
    if (read.ec == std::errc::result_out_of_range) {
        if (!below_one(word))
            return NumberFault::too_large;
        value = word[0] == '-' ? -0.0f : 0.0f;
        return NumberFault::none;
    }
    return std::isfinite(value) ? NumberFault::none : NumberFault::not_finite;
}

NumberFault parse_integer(std::string_view word, int64_t& value) {
    Decimal decimal;
    if (word.size() <= 18 && read_plain_decimal(word, decimal) && word.find('.') == word.npos) {
        value = static_cast<int64_t>(decimal.digits);
        return NumberFault::none;
    }
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
