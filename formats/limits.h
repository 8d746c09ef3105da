/// How large meshes and files may be. Readers and writers take these as parameters.
#pragma once

#include <cstdint>

namespace formats {

/// Corners of a mesh, and its vertices: the host counts in signed 32 bits.
constexpr uint64_t k_max_corners = 0x7FFFFFFF;
/// Bytes of a GLB file, whose header counts in 32 bits.
constexpr uint64_t k_max_glb = 0xFFFFFFFF;

} // namespace formats
