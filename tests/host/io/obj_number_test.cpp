#include "host/io/obj_number.h"

#include <charconv>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using namespace host;

template <class Number>
bool same_bits(Number a, Number b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Expects both precisions as the standard library reads them.
void expect_nearest(const std::string& word) {
    float value = 0.0f, nearest_value = 0.0f;
    double exact = 0.0, nearest = 0.0;
    ASSERT_EQ(parse_number(word, value, exact), NumberFault::none) << word;
    std::from_chars(word.data(), word.data() + word.size(), nearest_value);
    std::from_chars(word.data(), word.data() + word.size(), nearest);
    EXPECT_TRUE(same_bits(value, nearest_value)) << word;
    EXPECT_TRUE(same_bits(exact, nearest)) << word;
}

TEST(ObjNumber, DecimalsAreRoundedToTheNearestValues) {
    std::mt19937_64 random(3);
    for (int run = 0; run < 200000; ++run) {
        std::string word = random() % 2 ? "-" : "";
        const auto digits = 1 + random() % 20, point = random() % (digits + 1);
        for (size_t i = 0; i < digits; ++i) {
            if (i == point)
                word += '.';
            word += static_cast<char>('0' + random() % 10);
        }
        if (random() % 8 == 0)
            word += "e" + std::to_string(static_cast<int>(random() % 30) - 15);
        expect_nearest(word);
    }
}

TEST(ObjNumber, ValuesHalfWayBetweenTwoFloatsAreRoundedToTheNearest) {
    // 1 + 2^-24 lies half-way; the digits beyond double precision decide.
    for (const char* word :
         {"1.000000059604644775", "1.0000000596046447753906250", "1.00000005960464477539062501",
          "1.000000059604644776", "16777217", "16777217.0", "33554434", "0.1", "8388609.5"})
        expect_nearest(word);
}

TEST(ObjNumber, ZeroKeepsItsSign) {
    for (const char* word : {"0", "-0", "-0.000", "0.0", "-.0"})
        expect_nearest(word);
}

TEST(ObjNumber, VerySmallAndVeryLargeValuesAreRead) {
    for (const char* word : {"0.0000000000000000001", "9999999999999999999", "1e38", "1.2e-38",
                             "123456789012345678901234567890"})
        expect_nearest(word);
}

TEST(ObjNumber, WholeNumbersAreReadWithTheirSign) {
    for (const int64_t expected :
         {int64_t{0}, int64_t{7}, int64_t{-7}, int64_t{123456789012345678}, INT64_MAX, INT64_MIN}) {
        int64_t value = 1;
        EXPECT_EQ(parse_integer(std::to_string(expected), value), NumberFault::none);
        EXPECT_EQ(value, expected);
    }
    int64_t value = 1;
    EXPECT_EQ(parse_integer("+12", value), NumberFault::none);
    EXPECT_EQ(value, 12);
    for (const char* word : {"", "1.", "1.0", "1e3", "x", "-", "--1"})
        EXPECT_EQ(parse_integer(word, value), NumberFault::not_a_number) << word;
    EXPECT_EQ(parse_integer("9223372036854775808", value), NumberFault::too_large);
}

} // namespace
