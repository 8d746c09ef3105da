#include "app/view_options.h"

#include <gtest/gtest.h>

namespace {

using Words = std::vector<std::string>;

/// Why a command line of `tessora view` is refused; empty if it is not.
std::string refusal(const Words& words) {
    app::ViewRequest request;
    std::string error;
    const bool good = app::parse_view_request(words, request, error);
    EXPECT_EQ(good, error.empty()) << error;
    return error;
}

TEST(ViewOptions, GoodOnesAreNotRefused) {
    EXPECT_EQ("", refusal({}));
    EXPECT_EQ("", refusal({"m.obj", "--size", "640x480", "--display", "stretch", "--screenshot",
                           "s.png"}));
}

TEST(ViewOptions, OneFileIsOpened) {
    EXPECT_EQ("view takes one file", refusal({"a.obj", "b.obj"}));
}

TEST(ViewOptions, SizesHaveTwoNumbersAndALeast) {
    for (const char* size : {"big", "640", "639x480", "640x479", "640x480x2"})
        EXPECT_EQ(std::string("--size takes WIDTHxHEIGHT, from 640x480 on: ") + size,
                  refusal({"--size", size}));
}

TEST(ViewOptions, DisplaysHaveNames) {
    EXPECT_EQ("--display takes plain, charts, checker, stretch or density, not chart",
              refusal({"--display", "chart"}));
}

TEST(ViewOptions, ResultsNeverReplaceTheFileOrEachOther) {
    EXPECT_EQ("./m.png would be written over the open file",
              refusal({"m.png", "--screenshot", "./m.png"}));
    EXPECT_EQ("m.obj would be written over the open file", refusal({"m.obj", "--places", "m.obj"}));
    EXPECT_EQ("--screenshot and --places would be the same file",
              refusal({"--screenshot", "s.png", "--places", "./s.png"}));
}

} // namespace
