/// The record of the last UV-atlas call: the sentence that explains its failure, and the faces over
/// the stretch limit.
#pragma once

#include <cstdint>
#include <vector>
#include <windef.h>

namespace d3dx9 {

/// Starts a new record.
void clear_reason();

void record_over_limit(std::vector<uint32_t> faces);

/// Records the reason and returns `result`.
[[gnu::format(printf, 2, 3)]] HRESULT fail(HRESULT result, const char* format, ...);

} // namespace d3dx9
