/// A slow and simple reference implementation of the mesh exchange, to compare the product's with.
#pragma once

#include "plugin/unwrap_settings.h"

#include <maya/MIntArray.h>
#include <maya/MObject.h>

#include <cstdint>
#include <utility>
#include <vector>

struct LiteralData {
    std::vector<uint32_t> indices;
    std::vector<std::vector<uint32_t>> face_corners;
    std::vector<uint32_t> cut_edges;
    std::vector<uint32_t> real_edges;
    std::vector<int> seam_pairs;
};

std::vector<int> literal_seam_edges(MObject& mesh, const MString& uv_set);
LiteralData literal_collect(const UnwrapSettings& settings, MObject& mesh,
                            const std::vector<int>& border_edges);
std::vector<int> literal_subtract(const std::vector<int>& new_seams,
                                  const std::vector<int>& existing_seams);
/// Per polygon the atlas vertex of every corner.
std::vector<std::vector<int>>
literal_corner_uvs(const std::vector<int>& corner_counts,
                   const std::vector<std::vector<uint32_t>>& face_corners,
                   const std::vector<uint32_t>& atlas_indices);
