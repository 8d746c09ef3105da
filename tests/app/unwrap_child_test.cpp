// Unwraps in a child process, with the built program as the child.
#include "app/exit_code.h"
#include "app/unwrap_child.h"
#include "tests/app/scratch.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using app::UnwrapChild;

constexpr int k_patience = 120000; // milliseconds; only a failing test waits so long

class UnwrapChildTest : public testing::Test {
protected:
    UnwrapChildTest() { folder.put("in.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n"); }
    app::UnwrapRequest request(const std::string& input, const std::string& output) const {
        app::UnwrapRequest request;
        request.input = folder.path(input);
        request.output = folder.path(output);
        return request;
    }
    UnwrapChild::Answer wait_for_answer() {
        std::optional<UnwrapChild::Answer> answer;
        for (int waited = 0; waited < k_patience && !answer; waited += 100)
            answer = child.take_answer(100);
        EXPECT_TRUE(answer);
        return answer.value_or(UnwrapChild::Answer());
    }
    test::Scratch folder;
    UnwrapChild child{TESSORA_PROGRAM};
    std::string error;
};

TEST_F(UnwrapChildTest, ProcessThatCannotBeStartedIsTold) {
    rlimit before = {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none = {3, before.rlim_max}; // the standard streams
    ::setrlimit(RLIMIT_NOFILE, &none);
    const bool begun = child.begin(request("in.obj", "out.obj"), error);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(begun);
    EXPECT_NE(std::string::npos, error.find(" cannot be started: Too many open files")) << error;
}

TEST_F(UnwrapChildTest, WritesTheResultAndTellsItsFigures) {
    ASSERT_TRUE(child.begin(request("in.obj", "out.obj"), error)) << error;
    EXPECT_TRUE(child.is_busy());
    const UnwrapChild::Answer answer = wait_for_answer();
    EXPECT_EQ(0, answer.code) << answer.reason;
    EXPECT_EQ(1, answer.charts);
    EXPECT_FALSE(child.is_busy());
    EXPECT_NE(std::string::npos, folder.get("out.obj").find("vt "));
    EXPECT_FALSE(child.take_answer());
}

TEST_F(UnwrapChildTest, UnwrapsOneMeshAfterTheOther) {
    for (const char* name : {"a.obj", "b.obj"}) {
        ASSERT_TRUE(child.begin(request("in.obj", name), error)) << error;
        EXPECT_EQ(0, wait_for_answer().code);
        EXPECT_NE("", folder.get(name));
    }
}

TEST_F(UnwrapChildTest, ANewMeshReplacesTheOneUnderWay) {
    ASSERT_TRUE(child.begin(request("missing.obj", "a.obj"), error)) << error;
    ASSERT_TRUE(child.begin(request("in.obj", "b.obj"), error)) << error;
    EXPECT_EQ(0, wait_for_answer().code); // that of the second one
    EXPECT_NE("", folder.get("b.obj"));
    EXPECT_FALSE(child.take_answer());
}

TEST_F(UnwrapChildTest, TellsWhyAnUnwrapFailed) {
    ASSERT_TRUE(child.begin(request("missing.obj", "a.obj"), error)) << error;
    const UnwrapChild::Answer answer = wait_for_answer();
    EXPECT_EQ(app::exit_input, answer.code);
    EXPECT_NE(std::string::npos, answer.reason.find("missing.obj")) << answer.reason;
}

TEST_F(UnwrapChildTest, AChildThatEndsWithoutAnAnswerIsAFailure) {
    UnwrapChild other("/bin/true");
    ASSERT_TRUE(other.begin(request("in.obj", "a.obj"), error)) << error;
    std::optional<UnwrapChild::Answer> answer;
    for (int i = 0; i < 1000 && !answer; ++i)
        answer = other.take_answer(100);
    ASSERT_TRUE(answer);
    EXPECT_NE(0, answer->code);
    EXPECT_NE(std::string::npos, answer->reason.find("ended with code 0")) << answer->reason;
}

TEST(ChildProcessTest, WritingToAChildThatHasEndedFailsAndNothingMore) {
    app::ChildProcess child;
    std::string error;
    ASSERT_TRUE(child.start({"/bin/true"}, error)) << error;
    bool has_failed = false; // the pipe takes what is sent until the child has ended
    for (int i = 0; i < k_patience && !has_failed; ++i) {
        has_failed = !child.send("");
        app::wait_for_children({&child}, 1);
    }
    EXPECT_TRUE(has_failed);
}

TEST_F(UnwrapChildTest, StoppingForgetsTheUnwrap) {
    ASSERT_TRUE(child.begin(request("in.obj", "a.obj"), error)) << error;
    child.stop();
    EXPECT_FALSE(child.is_busy());
    EXPECT_FALSE(child.take_answer(10));
}

} // namespace
