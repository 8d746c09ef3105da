/// The elements of glTF accessors.
/// Source: the glTF 2.0 specification, section "Accessors".
#pragma once

#include "formats/gltf_file.h"

#include <cstdint>
#include <string>
#include <vector>

namespace formats {

/// An accessor's elements one after the other, whatever their layout in the buffers.
struct GltfElements {
    size_t count = 0;
    int component_type = 0; ///< 5120 to 5126, as in the file
    int components = 0;     ///< 1 for SCALAR to 16 for MAT4
    bool is_normalized = false;
    size_t size = 0; ///< of one element in bytes, matrices with the padding of their columns
    std::string bytes;

    /// One component as a number; a normalized integer becomes -1 to 1 or 0 to 1.
    double number(size_t element, size_t component) const;
    /// One element of an unsigned integer accessor.
    uint32_t index(size_t element) const;
};

/// Reads accessor `index`, sparse or not. An accessor without data has zeros.
/// Errors: false with "accessor N: reason" in `error`.
bool read_accessor(const GltfFile& file, const Json& index, GltfElements& elements,
                   std::string& error);

} // namespace formats
