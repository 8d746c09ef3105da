/// The texel density that charts were given by hand, and how it outlives a new layout: every new
/// chart gets the density that most of its area had.
///
/// Densities are texels per unit of length, as multiples of what most of the mesh has.
#pragma once

#include "window/chart_statements.h"
#include "window/subject.h"
#include "window/uv_map.h"

#include <string>
#include <vector>

namespace window {

/// UVs as they were before they were edited by hand.
struct LaidOut {
    host::Mesh mesh;
    int set = -1; ///< -1: the mesh has none
    /// They come from an unwrap node, whose charts have the same density unless Live gave them
    /// others. Densities of a file's own charts are taken for no one's intention.
    bool is_unwrapped = false;
};

/// The result of the newest unwrap node that comes before `node` in the history of the shape shown,
/// null: before the shape; else what the history begins with. `set_name`: of the UV set.
LaidOut last_layout(const Subject& subject, const host::graph::Node* node, const MString& set_name);

/// Per polygon of `mesh`, its density; 0 where it cannot be told. Empty if all charts have the
/// same, or if `before` has other polygons.
std::vector<float> own_densities(const host::Mesh& mesh, int set, const LaidOut& before);

/// Of the mesh shown.
std::vector<float> own_densities(const Subject& subject);

/// Per chart, the median by area of its polygons' densities, 1 if none is known. Empty if all are
/// 1.
std::vector<double> chart_densities(const UvMap& map, const std::vector<float>& densities);

/// The statements that give the charts of the map these densities and pack them; empty if there is
/// nothing to do.
std::string statement_giving_densities(const ChartsOf& all, const Subject& subject,
                                       const std::vector<float>& densities);

} // namespace window
