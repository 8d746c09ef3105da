/// Consequences of a failing call that are intended; the sweep accepts these and no others.
#pragma once

#include <cstddef>
#include <string>

namespace faults {

/// Whether a failing call may change the result without a message, or leave a mesh half changed.
/// `point`: the fault point, NULL for an allocation. `caller`: the function that made the call.
bool may_change_the_result(const char* point, const std::string& caller);

/// Where a failing call is announced by a certain text.
struct Stated {
    const char* point;
    const char* caller; ///< function of the plug-in
    const char* text;
};
extern const Stated k_stated[];
extern const size_t k_stated_count;

/// The row of `k_stated` for a call; NULL if there is none.
const Stated* stated_for(const char* point, const std::string& caller);

/// Whether a failing call of the host may end in another status than its own.
bool may_change_the_status(const char* point, const std::string& caller);

/// Whether a command that fails because of this call may leave a node behind.
bool may_leave_nodes(const char* point);

/// Whether memory allocated by the function `source` may leak after a failing call.
bool is_declared_leak(const std::string& source);

} // namespace faults
