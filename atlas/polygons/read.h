/// Reads and checks the caller's arrays.
#pragma once

#include "atlas/polygon_mesh.h"

#if defined(__MINGW32__)
#define TESSORA_PRINTF __attribute__((format(gnu_printf, 3, 4)))
#elif defined(__GNUC__)
#define TESSORA_PRINTF __attribute__((format(printf, 3, 4)))
#else
#define TESSORA_PRINTF
#endif

namespace tessora::atlas {

/// A fault with a printf text.
TESSORA_PRINTF Fault fault(Status status, uint32_t element, const char* format, ...) noexcept;

/// The caller's mesh in arrays of our own, every value checked.
struct MeshArrays {
    uint32_t vertex_count = 0;
    double unit = 1;                  ///< a length of 1 in `positions`, in the caller's unit
    std::vector<float> positions;     ///< 3 per vertex
    std::vector<uint32_t> corners;    ///< vertex ids
    std::vector<uint32_t> offsets;    ///< polygons + 1
    std::vector<uint8_t> cuts;        ///< per corner, or empty
    std::vector<float> normals;       ///< 3 per vertex or per corner, or empty
    std::vector<uint32_t> neighbours; ///< per corner, or empty
    std::vector<uint8_t> false_edges; ///< per corner, or empty

    uint32_t polygon_count() const { return static_cast<uint32_t>(offsets.size() - 1); }
};

/// Errors: a fault that names the array; std::bad_alloc.
Fault read_mesh(const PolygonMesh& mesh, MeshArrays& arrays);

struct UvArrays {
    std::vector<float> uvs;       ///< 2 per corner
    std::vector<uint32_t> charts; ///< per polygon, or empty
    std::vector<uint8_t> keep;    ///< per polygon, or empty
};

/// Errors: as read_mesh().
Fault read_uvs(const PolygonUvs& uvs, const MeshArrays& mesh, UvArrays& arrays);

/// Names the option that is out of range, if any; those of packing only if `packs`.
Fault check_options(const Options& options, bool packs) noexcept;
Fault check_options(const PackSettings& settings) noexcept;

} // namespace tessora::atlas
