/// Consequences of a failing call that are intended; the sweep accepts these and no others.
#pragma once

#include <string>

namespace faults {

/// Whether a failing call may change the result without a message, or leave a mesh half changed.
/// `point`: the fault point, NULL for an allocation. `caller`: the function that made the call.
bool may_change_the_result(const char* point, const std::string& caller);

/// Whether memory allocated by the function `source` may leak after a failing call.
bool is_declared_leak(const std::string& source);

} // namespace faults
