/// Parses words of the command line `tessora unwrap` for a test.
#pragma once

#include "app/unwrap_options.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace test {

using Words = std::vector<std::string>;

/// The request that the words make; the test fails if they are refused.
inline app::UnwrapRequest parsed(const Words& words) {
    app::UnwrapRequest request;
    std::string error;
    EXPECT_TRUE(app::parse_unwrap_request(words, request, error)) << error;
    return request;
}

/// The sentence with which the words are refused; the test fails if they are accepted.
inline std::string refusal(const Words& words) {
    app::UnwrapRequest request;
    std::string error;
    EXPECT_FALSE(app::parse_unwrap_request(words, request, error));
    return error;
}

} // namespace test
