#include "host/script/stack_limit.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <pthread.h>

namespace host::script {

namespace {

constexpr size_t k_max_reserve = size_t(1) << 20;

/// The lowest address that scripts may reach; 0 if the system does not tell the stack's size.
uintptr_t find_floor() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return 0;
    void* low = nullptr;
    size_t size = 0;
    const bool is_known = pthread_attr_getstack(&attributes, &low, &size) == 0;
    pthread_attr_destroy(&attributes);
    return is_known ? reinterpret_cast<uintptr_t>(low) + std::min(size / 4, k_max_reserve) : 0;
}

} // namespace

bool stack_is_low() {
    static thread_local const uintptr_t floor = find_floor();
    return reinterpret_cast<uintptr_t>(__builtin_frame_address(0)) < floor;
}

} // namespace host::script
