/// Records the arguments of D3DXUVAtlasCreate. The linker routes calls from this program's static
/// libraries through a wrapper that records the arguments and calls the library.
#pragma once

#include <d3dx9.h>

#include <cstdint>
#include <vector>

struct AtlasCall {
    unsigned calls = 0;  ///< number of calls since the record was last cleared
    uint64_t blocks = 0; ///< of lists, which were live at the call
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
    float uv_scale = 1;     ///< set by a test: multiplies the UVs that the call returns
    std::vector<float> uvs; ///< returned by the call, u and v per vertex, after the scaling
    FLOAT stretch_out = -1;
    UINT charts_out = 0;
};

/// The window that the product passed to create_device last.
extern void* device_window;

/// The record of the last call; assign AtlasCall() to clear it.
AtlasCall& atlas_call();
