/// Groups triangles into a binary tree of nearly developable regions.
///
/// Neighbouring regions are merged pair by pair, cheapest first (Garland, Willmott and Heckbert,
/// "Hierarchical face clustering on polygonal surfaces", 2001; Attene, Falcidieno and Spagnuolo,
/// "Hierarchical mesh segmentation based on fitting primitives", 2006). The cost of a pair measures
/// how far the union is from a developable surface, times a power of how far it is from a disk. The
/// first factor uses the smallest eigenvalue of the covariance of the normals, which vanishes for
/// planes, cylinders and cones (Julius, Kraevoy and Sheffer, "D-Charts", 2005).
#pragma once

#include "atlas/geometry/surface.h"
#include "atlas/progress.h"

namespace tessora::atlas {

/// Connected sets of triangles, numbered by their first triangle.
struct Components {
    std::vector<uint32_t> of_face;
    uint32_t count = 0;
};

/// Atoms: groups of triangles that no stage may separate. An atom is a polygon of the input, as
/// described by its false edges; a triangle without false edges is an atom of its own.
using Atoms = Components;

/// Joins triangles across false edges. Groups that cannot be a polygon (a closed surface, a handle,
/// two corners of a triangle glued together) have their false edges turned into real ones.
Atoms build_atoms(Surface& surface);

struct ClusterTree {
    static constexpr uint32_t k_no_child = k_none;
    struct Region {
        uint32_t begin, end; ///< its triangles: faces[begin] .. faces[end - 1]
        uint32_t left,
            right;   ///< regions, or both k_no_child in a leaf; a leaf is made of whole atoms
        Vec3 normal; ///< sum of area times normal over its triangles
    };
    std::vector<Region> regions; ///< children come before their parents
    std::vector<uint32_t> roots; ///< regions that were not merged any further
    std::vector<uint32_t> faces;
};

/// Those of the whole surface.
Components find_components(const Surface& surface);

/// Triangles joined across edges that bend by less than half a degree.
Components find_flat_pieces(const Surface& surface);

/// How much each triangle belongs to a hard surface, 0..1: 1 on the flat pieces of machine parts
/// and buildings, whose bending sits on sharp edges between pieces that are flat in themselves; 0
/// on smooth, noisy and coarsely triangulated surfaces, where hardly two neighbours lie in one
/// plane. Decided for every flat piece from its own edges; see docs/atlas.md, "Hard surfaces".
std::vector<float> measure_hardness(const Surface& surface, const Components& flat_pieces);

/// The mean of `hardness` over the triangles [begin, end), weighted by area.
double mean_hardness(const Surface& surface, const std::vector<float>& hardness,
                     const uint32_t* begin, const uint32_t* end);

/// What clusters are made of: the flat pieces of hard surfaces that lie in one plane and fill at
/// least half of their convex hull, as far as they consist of whole atoms; every other atom by
/// itself.
Components find_planes(const Surface& surface, const Atoms& atoms, const Components& flat_pieces,
                       const std::vector<float>& hardness);

struct ClusterOptions {
    const std::vector<float>& hardness; ///< per triangle, from measure_hardness
    bool seed_groups = false; ///< start from groups of up to 16 triangles within 15 degrees instead
                              ///< of single planes; faster
};

/// Builds the tree of `planes`, from find_planes. False if the callback asked to stop.
bool build_cluster_tree(const Surface& surface, const Components& planes,
                        const ClusterOptions& options, ProgressMeter& progress, ClusterTree& tree);

} // namespace tessora::atlas
