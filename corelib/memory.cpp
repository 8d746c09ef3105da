#include "corelib/memory.h"

#include <cstdlib>

uint64_t allocated_bytes = 0;
uint64_t live_blocks = 0;
allocation_filter core_allocation_filter = nullptr;

void* core_realloc(void* block, size_t bytes) {
    if (core_allocation_filter != nullptr && !core_allocation_filter(bytes))
        return nullptr;
    void* const result = std::realloc(block, bytes);
    if (block == nullptr && result != nullptr) {
        allocated_bytes += bytes;
        live_blocks += 1;
    }
    return result;
}

void core_free(void* block) {
    if (block == nullptr)
        return;
    std::free(block);
    live_blocks -= 1;
}
