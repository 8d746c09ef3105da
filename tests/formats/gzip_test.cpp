#include "formats/gzip.h"
#include "formats/json_text.h"

#include <gtest/gtest.h>

namespace {

const std::string k_triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

/// Why the bytes are refused.
std::string refusal(const std::string& bytes, uint64_t limit = 1u << 20) {
    std::string inflated, error;
    bool is_too_large = false;
    EXPECT_FALSE(formats::inflate_gzip(bytes, limit, inflated, is_too_large, error));
    return error;
}

std::string inflated(const std::string& bytes) {
    std::string text, error;
    bool is_too_large = false;
    EXPECT_TRUE(formats::inflate_gzip(bytes, 1u << 30, text, is_too_large, error)) << error;
    return text;
}

TEST(Gzip, InflatesWhatItDeflated) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += std::to_string(i * 7919 % 1000) + ' ';
    const std::string bytes = formats::deflate_gzip(text);
    EXPECT_LT(bytes.size(), text.size() / 2);
    EXPECT_EQ(text, inflated(bytes));
    EXPECT_EQ(bytes, formats::deflate_gzip(text));
    EXPECT_EQ("", inflated(formats::deflate_gzip("")));
}

TEST(Gzip, SeveralMembersAreOneFile) {
    EXPECT_EQ("onetwo", inflated(formats::deflate_gzip("one") + formats::deflate_gzip("two")));
}

TEST(GzipRefuses, FilesThatAreCutOff) {
    const std::string bytes = formats::deflate_gzip(k_triangle);
    for (size_t size = 2; size < bytes.size(); ++size)
        EXPECT_EQ("the gzip data are cut off", refusal(bytes.substr(0, size))) << size;
}

TEST(GzipRefuses, DamagedData) {
    std::string bytes = formats::deflate_gzip(k_triangle);
    bytes[bytes.size() - 6] ^= 1; // the checksum
    EXPECT_EQ("the gzip data are damaged", refusal(bytes));
    bytes = formats::deflate_gzip(k_triangle);
    bytes[bytes.size() - 1] ^= 1; // the length
    EXPECT_EQ("the gzip data are damaged", refusal(bytes));
}

TEST(GzipRefuses, BytesBehindTheData) {
    EXPECT_EQ("3 bytes follow the gzip data", refusal(formats::deflate_gzip("x") + "abc"));
}

TEST(GzipRefuses, MoreThanTheLimitWhenInflated) {
    const std::string bytes = formats::deflate_gzip(std::string(1u << 24, 'x'));
    EXPECT_LT(bytes.size(), 100000u);
    EXPECT_EQ("more than 1048576 bytes when inflated; --max_input allows more", refusal(bytes));
}

TEST(JsonText, RefusesWhatIsTooDeepOrNoJson) {
    const auto refused = [](const std::string& text) {
        formats::Json json;
        std::string error;
        EXPECT_FALSE(formats::parse_json(text, json, error));
        return error;
    };
    EXPECT_EQ("JSON: more than 64 arrays and objects inside each other",
              refused(std::string(65, '[') + std::string(65, ']')));
    EXPECT_EQ("JSON: not valid at byte 5", refused("{\"a\"}"));
    EXPECT_EQ("JSON: a number is out of range", refused("[1e999]"));
    formats::Json json;
    std::string error;
    EXPECT_TRUE(formats::parse_json(R"({"a": "[[\"[[", "b": [1]})", json, error)) << error;
    EXPECT_TRUE(formats::parse_json(std::string(64, '[') + std::string(64, ']'), json, error));
}

} // namespace
