/// The host-facing channel for failures: one line on standard error beside a failing status.
#pragma once

#include <maya/MStatus.h>

#include <iostream>

/// Writes the line and returns the status.
inline MStatus fail_with(const char* text, const MStatus& status) {
    std::cerr << text << std::endl;
    return status;
}
