/// The counting allocator under the core library's containers.
///
/// All their storage is allocated and freed by one pair of functions, so that the two process-wide
/// counters are exact and one hook can make any request fail. No locks: used by one thread only.
#pragma once

#include <cstddef>
#include <cstdint>

/// Sum of the sizes of all successful allocations so far, in bytes; never falls.
extern uint64_t allocated_bytes;
/// Number of blocks allocated and not yet freed.
extern uint64_t live_blocks;

/// Called before every request with its size in bytes; false makes the request fail. Null by
/// default.
using allocation_filter = bool (*)(size_t bytes);
extern allocation_filter core_allocation_filter;

/// Allocates `bytes` > 0 (`block` null) or resizes `block`, keeping its contents up to the smaller
/// size. Returns null if memory runs out; `block` is then unchanged. Resizing does not change the
/// counters.
void* core_realloc(void* block, size_t bytes);

/// Frees a block; null is allowed.
void core_free(void* block);
