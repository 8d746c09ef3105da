/// Charts that exist, between the caller's polygons and the engine's triangles.
#pragma once

#include "atlas/polygons/triangles.h"

namespace tessora::atlas {

/// The input of pack().
struct UvTriangles {
    std::vector<uint32_t> indices; ///< 3 per triangle: UV ids
    std::vector<float> uvs;        ///< 2 per UV id
    std::vector<uint32_t> chart;   ///< per triangle, or empty
    std::vector<uint8_t> keep;     ///< per triangle, or empty
    std::vector<float> area;       ///< per triangle

    UvMesh view() const;
};

/// Errors: std::bad_alloc.
UvTriangles make_uv_triangles(const MeshArrays& mesh, const UvArrays& uvs, bool weld,
                              const Triangles& triangles);

/// Makes new vertices of the packed coordinates: one for each UV id and chart. Fills
/// `atlas.triangles` but for the source vertices.
/// Errors: std::bad_alloc.
void take_packed(const UvTriangles& input, PackResult packed, PolygonAtlas& atlas);

} // namespace tessora::atlas
