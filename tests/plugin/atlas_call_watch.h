/// What the product hands to D3DXUVAtlasCreate. The call of this program's static libraries passes
/// through a wrapper that writes the arguments down and goes on to the library.
#pragma once

#include <d3dx9.h>

#include <cstdint>
#include <vector>

struct AtlasCall {
    unsigned calls = 0; ///< since the record was last cleared
    UINT max_charts = 99;
    FLOAT max_stretch = -1;
    UINT width = 0;
    UINT height = 0;
    FLOAT gutter = -1;
    DWORD texture_index = 99;
    DWORD options = 99;
    FLOAT callback_frequency = 0;
    bool has_callback = false;
    bool has_false_edges = false;
    DWORD vertices = 0;
    DWORD faces = 0;
    std::vector<uint32_t> adjacency;
    std::vector<uint32_t> false_edges;
};

/// The record of the last call; assign AtlasCall() to clear it.
AtlasCall& atlas_call();
