// Repeats an unwrap with allocation 0, 1, 2, ... failing, until a run has no allocation left to
// fail.
#include "corelib/memory.h"
#include "faultpoint/faultpoint.h"
#include "tests/corelib/support.h"
#include "tests/plugin/collected.h"

#include <cstdlib>
#include <exception>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum Outcome { k_success = 10, k_failure = 11, k_leak = 12, k_exception = 13 };

size_t g_requests = 0;
size_t g_fail_from = 0;
size_t g_fail_until = 0;

bool grant(size_t) {
    const size_t number = g_requests++;
    return number < g_fail_from || number >= g_fail_until;
}

/// Unwraps a mesh while the allocations `from` to `until` - 1 fail; returns the exit code.
[[noreturn]] void unwrap_in_child(size_t from, size_t until) {
    std::set_terminate([] { _exit(k_exception); });
    notices().answer = 1;
    // While a point is armed the platform marks its objects as leaked on purpose.
    faultpoint::arm("failure of the core library's allocator", 1);
    const fixtures::Mesh cube = fixtures::cube();
    MObject mesh = make_host_mesh(cube, fixtures::shell_per_polygon(cube));
    UnwrapSettings settings = plain_settings();
    settings.use_ridges = settings.keep_seams = true;
    settings.ridge_angle = 30;
    MIntArray existing, fresh;
    Unwrapper unwrapper(&settings);
    const uint64_t live = live_blocks;
    g_requests = 0;
    g_fail_from = from;
    g_fail_until = until;
    core_allocation_filter = grant;
    const bool good = unwrapper.unwrap(mesh, &existing, &fresh);
    core_allocation_filter = nullptr;
    if (live_blocks != live)
        _exit(k_leak);
    _exit(good && g_requests <= from ? k_success : k_failure);
}

/// Whether any allocation failed. A missing element may lead to a BUG report, a failing status or
/// nothing, but never to a crash, an exception or a leak.
bool noticed(size_t from, size_t until) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        std::freopen("/dev/null", "w", stderr);
        unwrap_in_child(from, until);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const bool bug = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    EXPECT_TRUE(bug || code == k_success || code == k_failure)
        << "requests " << from << " to " << until << ": exit " << code << ", status " << status;
    return bug || code != k_success;
}

TEST(UnwrapMemory, SurvivesTheFailureOfEachSingleAllocation) {
    size_t n = 0;
    while (noticed(n, n + 1) && !HasFailure())
        ASSERT_LT(++n, 5000u);
    EXPECT_GT(n, 50u);
}

TEST(UnwrapMemory, SurvivesMemoryRunningOutAtEachAllocation) {
    size_t n = 0;
    while (noticed(n, SIZE_MAX) && !HasFailure())
        ASSERT_LT(++n, 5000u);
    EXPECT_GT(n, 50u);
}

} // namespace
