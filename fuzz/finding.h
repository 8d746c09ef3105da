/// How a fuzz target reports that a property does not hold.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// Prints `text` and ends the process so that libFuzzer keeps the input, unless `text` is empty.
inline void report_finding(const std::string& text) {
    if (text.empty())
        return;
    std::fprintf(stderr, "violated property: %s\n", text.c_str());
    std::abort();
}
