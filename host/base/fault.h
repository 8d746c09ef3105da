/// Helpers for public methods: fault points, status output and conversion of exceptions.
#pragma once

#include "faultpoint/faultpoint.h"

#include <maya/MStatus.h>

#include <climits>
#include <new>
#include <stdexcept>

namespace host {

/// Success unless the fault point is armed, else the status it is armed with.
inline MStatus pass_fault(const char* name) {
    return MStatus(static_cast<MStatus::MStatusCode>(faultpoint::hit(name)));
}

/// Points for wrong answers with a status of success: a call that returns an id or count returns -1
/// instead, one that fills an array returns only its first half, and one that fills an array of ids
/// returns -1 as the last one, or the largest number if the point's code is kNotFound.
inline int pass_wrong_number(const char* name, int number) {
    return faultpoint::hit(name) == 0 ? number : -1;
}
template <class A>
void pass_short_array(const char* name, A& array) {
    if (faultpoint::hit(name) != 0)
        array.setLength(array.length() / 2);
}
template <class A>
void pass_wrong_id(const char* name, A& ids) {
    const int code = faultpoint::hit(name);
    if (code != 0 && ids.length() > 0)
        ids[ids.length() - 1] = code == MStatus::kNotFound ? INT_MAX : -1;
}

/// Stores the status through an optional pointer and returns it.
inline MStatus report(MStatus* status_out, const MStatus& status) {
    if (status_out != NULL)
        *status_out = status;
    return status;
}

/// Runs a step that may allocate. Converts std::bad_alloc and std::length_error to
/// kInsufficientMemory.
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
