/// Small helpers that every method of the interface uses to pass its fault point and to report.
#pragma once

#include "faultpoint/faultpoint.h"

#include <maya/MStatus.h>

#include <new>
#include <stdexcept>

namespace host {

/// Success unless the point is armed; then the armed status code.
inline MStatus pass_fault(const char* name) {
    return MStatus(static_cast<MStatus::MStatusCode>(faultpoint::hit(name)));
}

/// Writes the status through an optional pointer and hands it on.
inline MStatus report(MStatus* status_out, const MStatus& status) {
    if (status_out != NULL)
        *status_out = status;
    return status;
}

/// Runs a step that may need memory. What the standard containers throw then ends here.
template <class Step>
MStatus guard_memory(Step step) {
    try {
        step();
    } catch (const std::bad_alloc&) {
        return MS::kInsufficientMemory;
    } catch (const std::length_error&) {
        return MS::kInsufficientMemory;
    }
    return MS::kSuccess;
}

} // namespace host
