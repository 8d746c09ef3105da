#include "window/jobs.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using window::Jobs;

TEST(Jobs, RunInOrderOfArrival) {
    std::vector<std::string> ran;
    Jobs jobs([&](const std::string& text) { ran.push_back(text); });
    EXPECT_TRUE(jobs.add("a"));
    EXPECT_TRUE(jobs.add("b"));
    EXPECT_TRUE(ran.empty());
    EXPECT_TRUE(jobs.run_all());
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), ran);
    EXPECT_TRUE(jobs.is_empty());
}

TEST(Jobs, AddIsRefusedWhileAJobRuns) {
    Jobs* queue = nullptr;
    bool was_taken = true;
    Jobs jobs([&](const std::string&) { was_taken = queue->add("inner"); });
    queue = &jobs;
    jobs.add("outer");
    jobs.run_all();
    EXPECT_FALSE(was_taken);
    EXPECT_TRUE(jobs.is_empty());
}

TEST(Jobs, RunningFromInsideAJobIsRefused) {
    Jobs* queue = nullptr;
    int runs = 0;
    bool nested = true;
    Jobs jobs([&](const std::string&) {
        ++runs;
        nested = queue->run_all();
    });
    queue = &jobs;
    jobs.add("a");
    jobs.add("b");
    EXPECT_TRUE(jobs.run_all());
    EXPECT_FALSE(nested);
    EXPECT_EQ(2, runs);
}

TEST(Jobs, AJobMayDropThoseThatWait) {
    Jobs* queue = nullptr;
    std::vector<std::string> ran;
    Jobs jobs([&](const std::string& text) {
        ran.push_back(text);
        queue->clear();
    });
    queue = &jobs;
    jobs.add("a");
    jobs.add("b");
    jobs.run_all();
    EXPECT_EQ((std::vector<std::string>{"a"}), ran);
    EXPECT_TRUE(jobs.is_empty());
}

} // namespace
