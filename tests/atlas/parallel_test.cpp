#include "atlas/parallel.h"
#include "tests/atlas/threads.h"

#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <string>

namespace {

using namespace tessora::atlas;
using atlas_test::run_on;

constexpr ParallelFor k_executors[] = {nullptr, run_on<1>, run_on<2>, run_on<8>};

TEST(ParallelFor, CallsEveryIndexOnce) {
    for (ParallelFor executor : k_executors)
        for (size_t count : {0u, 1u, 2u, 1000u}) {
            std::vector<int> calls(count, 0);
            parallel_for(executor, count, [&](size_t i) { ++calls[i]; });
            EXPECT_EQ(calls, std::vector<int>(count, 1));
        }
}

TEST(ParallelFor, CallsMayBeNested) {
    for (ParallelFor executor : k_executors) {
        std::vector<std::vector<int>> calls(20, std::vector<int>(20, 0));
        parallel_for(executor, 20, [&](size_t i) {
            parallel_for(executor, 20, [&](size_t k) { ++calls[i][k]; });
        });
        EXPECT_EQ(calls, std::vector<std::vector<int>>(20, std::vector<int>(20, 1)));
    }
}

TEST(ParallelFor, ThrowsTheExceptionOfTheLowestIndexAgain) {
    for (ParallelFor executor : k_executors)
        try {
            parallel_for(executor, 100, [](size_t i) {
                if (i % 30 == 17)
                    throw std::runtime_error(std::to_string(i));
            });
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "17");
        }
}

} // namespace
