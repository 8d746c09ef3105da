/// Face adjacency from shared vertex ids.
///
/// An edge of exactly two faces makes them neighbours. Where more meet, they are paired as sheets
/// that pass through each other or lie on each other, so that a surface stays whole whatever else
/// touches it (a doubled sphere is two spheres, a fin on a cube leaves the cube closed).
#pragma once

#include "atlas/atlas.h"

namespace tessora::atlas {

enum class AdjacencyResult { ok, index_out_of_range, out_of_memory };

/// Where the vertices are: three floats each, `stride` bytes apart. Without positions (`first` is
/// null) only vertex ids decide.
struct VertexPositions {
    const unsigned char* first = nullptr;
    size_t stride = 0;
};

/// For every face edge, the face across it; none on a border. The relation is mutual.
/// - Faces that name a vertex twice use no edge and have no neighbours.
/// - An edge of exactly two faces makes them neighbours, whichever way round they are wound; so
///   does an edge of which all other faces have no area (1e-9 of the mean face).
/// - At an edge of more, faces of opposite directions are paired: those that hang together over
///   edges of two faces first, then copies of equal rank among twins, then the pair that bends
///   least, then the nearest in number. Twins (polygons with the same border, wound alike or
///   against each other) are never neighbours of each other, and faces without area take what the
///   others leave. Who finds no partner has a border there.
/// Up to renaming of twins the result does not depend on the order of the faces, unless two pairs
/// are equal in all of that. At an edge of more than 64 faces each way only twins of equal rank are
/// paired.
/// Shape:  corners[3*faces], every entry < vertices -> adjacency[3*faces]; entry 3f+k is the edge
///         from corner k to corner (k+1)%3 of face f; 0xFFFFFFFF = none.
/// Errors: adjacency is untouched when an index names no vertex, unspecified when memory runs out.
/// Cost:   O(faces + vertices) time, 4 bytes a face edge and 24 a vertex of scratch memory; 50
///         bytes a face more where an edge has more than two faces.
AdjacencyResult face_adjacency(const uint32_t* corners, uint32_t faces, uint32_t vertices,
                               const VertexPositions& positions, uint32_t* adjacency);

} // namespace tessora::atlas
