#include "host/graph/script_host.h"

#include <cstdio>
#include <gtest/gtest.h>
#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>

namespace host::graph::testing {

// Otherwise a program's messages would be out of order where both streams go to one file.
TEST(MessagesWithoutAScriptHost, AreWrittenAtOnce) {
    ASSERT_EQ(script_host(), nullptr);
    std::fflush(stdout);
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_EQ(::fcntl(ends[0], F_SETFL, O_NONBLOCK), 0);
    const int before = ::dup(STDOUT_FILENO);
    ::dup2(ends[1], STDOUT_FILENO);
    show_line(Severity::info, "now");
    char text[100] = "";
    const ssize_t length = ::read(ends[0], text, sizeof text - 1);
    std::fflush(stdout);
    ::dup2(before, STDOUT_FILENO);
    for (const int file : {before, ends[0], ends[1]})
        ::close(file);
    EXPECT_EQ(length, 7);
    EXPECT_STREQ(text, "// now\n");
}

} // namespace host::graph::testing
#endif
