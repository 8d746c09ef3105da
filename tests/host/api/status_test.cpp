#include <maya/MStatus.h>
#include <maya/MString.h>

#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Status, IsSuccessByDefault) {
    const MStatus status;
    EXPECT_TRUE(status);
    EXPECT_FALSE(status.error());
    EXPECT_EQ(status.statusCode(), MStatus::kSuccess);
}

TEST(Status, IsFalseOnFailure) {
    const MStatus status(MS::kFailure);
    EXPECT_FALSE(status);
    EXPECT_TRUE(!status);
    EXPECT_TRUE(status.error());
}

TEST(Status, ComparesWithCodesOnEitherSide) {
    const MStatus status(MS::kNotFound);
    EXPECT_TRUE(status == MS::kNotFound);
    EXPECT_TRUE(MS::kNotFound == status);
    EXPECT_TRUE(status != MS::kFailure);
    EXPECT_TRUE(MS::kFailure != status);
}

TEST(Status, DifferentFailureCodesAreNotEqual) {
    EXPECT_FALSE(MStatus(MS::kFailure) == MStatus(MS::kNotFound));
}

TEST(Status, IsSuccessOnceCleared) {
    MStatus status(MS::kFailure);
    status.clear();
    EXPECT_TRUE(status == MS::kSuccess);
}

TEST(Status, TakesACodeByAssignment) {
    MStatus status;
    status = MS::kEndOfFile;
    EXPECT_EQ(status.statusCode(), MStatus::kEndOfFile);
}

class StatusText : public testing::TestWithParam<std::pair<MStatus::MStatusCode, const char*>> {};

TEST_P(StatusText, BeginsWithTheCodeInBrackets) {
    const std::string text = MStatus(GetParam().first).errorString().asChar();
    const std::string start = std::string("(") + GetParam().second + "): ";
    EXPECT_EQ(text.substr(0, start.size()), start);
    EXPECT_GT(text.size(), start.size());
}

INSTANTIATE_TEST_SUITE_P(
    Codes, StatusText,
    testing::Values(std::make_pair(MStatus::kSuccess, "kSuccess"),
                    std::make_pair(MStatus::kFailure, "kFailure"),
                    std::make_pair(MStatus::kInsufficientMemory, "kInsufficientMemory"),
                    std::make_pair(MStatus::kInvalidParameter, "kInvalidParameter"),
                    std::make_pair(MStatus::kLicenseFailure, "kLicenseFailure"),
                    std::make_pair(MStatus::kUnknownParameter, "kUnknownParameter"),
                    std::make_pair(MStatus::kNotImplemented, "kNotImplemented"),
                    std::make_pair(MStatus::kNotFound, "kNotFound"),
                    std::make_pair(MStatus::kEndOfFile, "kEndOfFile")),
    [](const auto& info) { return std::string(info.param.second); });

TEST(Status, NamesACodeOutsideTheEnumerationAsUnknown) {
    EXPECT_EQ(MStatus(static_cast<MStatus::MStatusCode>(15)).errorString(),
              "(unknown): Unknown status code");
}

TEST(Status, PrintsPrefixAndTextToStandardError) {
    testing::internal::CaptureStderr();
    MStatus(MS::kFailure).perror("Failed to register");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Failed to register: (kFailure): The operation failed inside the application\n");
}

TEST(Status, PrintsAPrefixGivenAsAString) {
    testing::internal::CaptureStderr();
    MStatus().perror(MString("Here"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Here: (kSuccess): No error\n");
}

} // namespace
