/// Groups triangles into a hierarchy of nearly developable regions.
///
/// Neighbours are merged pair by pair, cheapest first (Garland, Willmott and Heckbert,
/// "Hierarchical face clustering on polygonal surfaces", 2001; Attene, Falcidieno and Spagnuolo,
/// "Hierarchical mesh segmentation based on fitting primitives", 2006). The cost of a pair measures
/// how far the union is from a developable surface, the smallest eigenvalue of the covariance of
/// its normals (it vanishes for planes, cylinders and cones; the idea of Julius, Kraevoy and
/// Sheffer, "D-Charts", 2005), times a power of its compactness.
#pragma once

#include "atlas/geometry/surface.h"

namespace tessora::atlas {

/// Triangles that only move together: the polygons, as far as false edges tell.
struct Atoms {
    std::vector<uint32_t> of_face; ///< atom of each triangle; numbered by first triangle
    uint32_t count = 0;
};

/// Joins triangles over false edges. A group that no polygon can be (closed, with a handle, or with
/// two of its corners glued in one triangle) has its false edges turned into real ones.
Atoms build_atoms(Surface& surface);

struct ClusterTree {
    static constexpr uint32_t k_leaf = k_none;
    struct Node {
        uint32_t begin, end;  ///< its triangles: a run of `faces`
        uint32_t left, right; ///< k_leaf: a leaf, made of whole atoms
        Vec3 normal;          ///< sum of area times normal over its triangles
    };
    std::vector<Node> nodes;
    std::vector<uint32_t> roots;
    std::vector<uint32_t> faces;
};

/// Per triangle: 1 in components that are hard surfaces, where most of the bending sits on edges
/// bent by more than 30 degrees. There the flat and developable pieces between the sharp edges have
/// to survive as they are.
std::vector<uint8_t> find_hard_faces(const Surface& surface);

struct ClusterOptions {
    std::vector<uint8_t> hard;     ///< per triangle, from find_hard_faces
    double smooth_deviation = 0.2; ///< regions that deviate more from developable stay apart
    double hard_deviation = 0.01;  ///< the same, in components whose bending sits on sharp edges
    bool seed_groups = false;      ///< start from groups of up to 16 triangles within 15 degrees
};

ClusterTree build_cluster_tree(const Surface& surface, const Atoms& atoms,
                               const ClusterOptions& options);

} // namespace tessora::atlas
