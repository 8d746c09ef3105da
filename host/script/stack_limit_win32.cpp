#include "host/script/stack_limit.h"

// GetCurrentThreadStackLimits needs Windows 8. The build defines WIN32_LEAN_AND_MEAN and NOMINMAX.
#undef _WIN32_WINNT
#define _WIN32_WINNT 0x0602
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace host::script {

namespace {

constexpr size_t k_max_reserve = size_t(1) << 20;

/// The lowest address that scripts may reach.
uintptr_t find_floor() {
    ULONG_PTR low = 0, high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    return uintptr_t(low) + std::min(size_t(high - low) / 4, k_max_reserve);
}

} // namespace

bool stack_is_low() {
    static thread_local const uintptr_t floor = find_floor();
    return reinterpret_cast<uintptr_t>(__builtin_frame_address(0)) < floor;
}

} // namespace host::script
