/// The counting allocator under the core library's containers.
///
/// One pair of functions takes and gives back all their storage, so that the two process-wide
/// counters tell the truth and one hook can make any request fail. No locks: one thread uses it.
#pragma once

#include <cstddef>
#include <cstdint>

/// Sum of the sizes of all successful allocations so far, in bytes; never falls.
extern uint64_t allocated_bytes;
/// Blocks taken and not yet given back.
extern uint64_t live_blocks;

/// Asked before every request with its size in bytes; false makes the request fail. Null, the
/// ordinary state, lets every request through to the system.
using allocation_filter = bool (*)(size_t bytes);
extern allocation_filter core_allocation_filter;

/// Takes a block of `bytes` > 0 (`block` null) or changes the size of one, keeping its contents up
/// to the smaller size; null when memory is out, `block` then stays as it was. Only a new block
/// changes the counters.
void* core_realloc(void* block, size_t bytes);

/// Gives a block back; null is allowed.
void core_free(void* block);
