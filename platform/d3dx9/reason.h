/// The sentence that explains the last failed UV-atlas call.
#pragma once

#include <windef.h>

namespace d3dx9 {

void clear_reason();

/// Records the reason and returns `result`.
[[gnu::format(printf, 2, 3)]] HRESULT fail(HRESULT result, const char* format, ...);

} // namespace d3dx9
