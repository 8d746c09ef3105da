/// Stores what inspect.h reports of the last UV-atlas call.
#pragma once

#include <cstdint>
#include <vector>
#include <windef.h>

namespace d3dx9 {

/// Resets the record at the start of a call.
void clear_reason();

void record_over_limit(std::vector<uint32_t> faces);

/// Records the reason and returns `result`.
[[gnu::format(printf, 2, 3)]] HRESULT fail(HRESULT result, const char* format, ...);

} // namespace d3dx9
