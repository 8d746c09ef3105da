/// The vertex record that the mesh exchange and the atlas stage share.
#pragma once

#include "corelib/array.h"

/// One mesh vertex or atlas vertex: 20 bytes, the vertex layout of the atlas stage's D3DX meshes.
struct Vertex {
    float x; ///< position in object space
    float y;
    float z;
    float u; ///< texture coordinate; meaningful in atlas vertices only
    float v;
};
static_assert(sizeof(Vertex) == 20, "the record is copied as raw bytes");

template <>
struct array_element_name<Vertex> {
    static constexpr const char* text = "struct Vertex";
};
