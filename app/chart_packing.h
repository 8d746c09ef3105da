/// Packs the charts that meshes have: from documents to the engine's arrays and back, and an
/// independent check of the result.
#pragma once

#include "atlas/atlas.h"
#include "host/io/obj_document.h"
#include "host/io/obj_writer.h"
#include "measure/charts.h"
#include "measure/verify.h"

#include <string>
#include <vector>

namespace app {

/// A mesh whose charts are to be packed. Documents and UVs must outlive what is made of them.
struct PackSource {
    const host::ObjDocument* document = nullptr;
    const host::ObjUvs* uvs = nullptr; ///< null: the document's own
    std::vector<uint8_t> keep;         ///< per polygon: its chart stays; empty: none does
};

/// The charts of several meshes in one list of triangles. Triangles without UVs are left out.
struct ChartList {
    struct Origin {
        uint32_t mesh, triangle; ///< of `layouts`
    };
    std::vector<PackSource> sources;
    std::vector<measure::Layout> layouts; ///< per mesh
    std::vector<Origin> origin;           ///< per triangle
    std::vector<float> uvs, area;         ///< area in the meshes' own unit squared
    std::vector<uint32_t> indices, chart;
    std::vector<uint8_t> keep;

    tessora::atlas::UvMesh mesh() const;
    uint32_t polygon(uint32_t triangle) const {
        return layouts[origin[triangle].mesh].triangle_polygon[origin[triangle].triangle];
    }
};

/// Finds the charts of every mesh, as `tessora measure` counts them or by what is connected.
/// Errors: false with a sentence in `error` if the meshes have more than `max_corners` together, or
///         memory runs out.
bool list_charts(std::vector<PackSource> sources, ChartList& list, std::string& error,
                 measure::SameUv same = measure::SameUv::coordinates,
                 uint64_t max_corners = (measure::k_none - 1) / 3);

/// Takes the coordinates to be those of a texture of other proportions: changes those of charts
/// that are not kept so that their shape in texels is that of a `from_width` x `from_height`
/// texture.
void take_from_texture(double from_width, double from_height,
                       const tessora::atlas::PackSettings& settings, ChartList& list);

/// Packs at the fixed density of `settings`: into `settings.tiles` tiles at most, as few as
/// possible, or, if `texture_follows`, into one texture, whose sides are doubled until all fits.
/// `settings` receives the sides and tiles used.
/// Errors: those of pack(); does_not_fit beyond 8192 texels a side.
tessora::atlas::Failure pack_to_density(const ChartList& list, bool texture_follows,
                                        tessora::atlas::PackSettings& settings,
                                        tessora::atlas::PackResult& result);

/// The side of a texture of these proportions that charts need at least at this density.
double least_side(const ChartList& list, const tessora::atlas::PackSettings& settings);

/// The new UVs of every mesh. Corners that shared a coordinate in a chart still do.
std::vector<host::ObjUvs> packed_uvs(const ChartList& list,
                                     const tessora::atlas::PackResult& result);

/// The triangles of one tile, moved to the unit square, as one layout; of stacked charts only the
/// lowest. With `true_places` vertices are where the meshes have them, which is what pictures need;
/// otherwise positions only tell which vertices are the same, so that charts of two copies of a
/// mesh are two.
measure::Layout tile_layout(const ChartList& list, const tessora::atlas::PackResult& result,
                            uint32_t tile, bool true_places);

/// "MESH: polygons 1, 2 and 5 more" for the polygons of these triangles, mesh by mesh.
std::string name_polygons(const ChartList& list, const std::vector<uint32_t>& triangles);

/// What measuring every tile, independently of the engine, has found.
struct PackingCheck {
    std::vector<std::string> breaches; ///< promises of packing that are broken, in words
    double gap = -1.0;                 ///< smallest one, texels; -1 if there are no two charts
    /// Triangles, ascending, of charts that arrived that way.
    std::vector<uint32_t> flipped, overlapping, mirrored;
};

/// Checks the gap, the range, and that charts do not overlap each other.
PackingCheck check_packing(const ChartList& list, const tessora::atlas::PackSettings& settings,
                           const tessora::atlas::PackResult& result);

} // namespace app
