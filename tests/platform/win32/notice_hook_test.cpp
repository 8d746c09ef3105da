#include "faultpoint/faultpoint.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

std::vector<std::string> shown;
int answer = 0;

} // namespace

extern "C" __attribute__((visibility("default"))) int host_show_notice(const char* caption,
                                                                       const char* text) {
    shown.push_back(std::string(caption) + "|" + text);
    return answer;
}

namespace {

std::string standard_error_of_box(const char* text, const char* caption) {
    shown.clear();
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr, text, caption, MB_OK), IDOK);
    return testing::internal::GetCapturedStderr();
}

TEST(MessageBoxWithHook, HandledNoticeGoesNowhereElse) {
    answer = 1;
    EXPECT_EQ(standard_error_of_box("text", "Message"), "");
    EXPECT_EQ(shown, std::vector<std::string>{"Message|text"});
}

TEST(MessageBoxWithHook, UnhandledNoticeFallsBackToStandardError) {
    answer = 0;
    EXPECT_EQ(standard_error_of_box("text", "Message"), "Message: text\n");
    EXPECT_EQ(shown, std::vector<std::string>{"Message|text"});
}

TEST(MessageBoxWithHook, NullTextsAreShownAsEmpty) {
    answer = 1;
    standard_error_of_box(nullptr, nullptr);
    EXPECT_EQ(shown, std::vector<std::string>{"|"});
}

TEST(MessageBoxWithHook, FailureShowsNothing) {
    shown.clear();
    const faultpoint::Scope fault("MessageBoxA", 1);
    EXPECT_EQ(MessageBoxA(nullptr, "text", "Message", MB_OK), 0);
    EXPECT_TRUE(shown.empty());
}

} // namespace
