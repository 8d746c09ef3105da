#include "plugin/edge_table.h"

#include <maya/MIntArray.h>
#include <maya/MItMeshEdge.h>

#include <algorithm>

namespace {

bool spoke_before(const EdgeTable::Spoke& a, const EdgeTable::Spoke& b) {
    return a.other != b.other ? a.other < b.other : a.edge < b.edge;
}

/// Number of distinct end vertices: 1 where a polygon lists a vertex twice in a row.
int sides(const MeshEdge& edge) { return edge.ends[0] == edge.ends[1] ? 1 : 2; }

} // namespace

MStatus EdgeTable::build(MObject& mesh, uint32_t vertex_count) {
    MStatus status;
    if (!read(mesh, status))
        return status;
    if (!starts_.allocate(static_cast<size_t>(vertex_count) + 1, 0) ||
        !spokes_.allocate(2 * edges_.count()))
        return MS::kInsufficientMemory;
    fill_spokes(vertex_count);
    return MS::kSuccess;
}

bool EdgeTable::read(MObject& mesh, MStatus& status) {
    MItMeshEdge it(mesh, &status);
    if (!status)
        return false;
    const int edge_count = it.count(&status);
    if (!status)
        return false;
    if (!edges_.allocate(static_cast<size_t>(edge_count), {{-1, -1}, 0, {-1, -1}})) {
        status = MS::kInsufficientMemory;
        return false;
    }
    MIntArray faces;
    int id = 0;
    for (it.reset(); status && id < edge_count && !it.isDone(); status = it.next(), ++id) {
        const int face_count = it.getConnectedFaces(faces);
        const bool pair = face_count == 2 && faces.length() >= 2;
        edges_[static_cast<size_t>(id)] = {
            {it.index(0), it.index(1)}, face_count, {pair ? faces[0] : -1, pair ? faces[1] : -1}};
    }
    return static_cast<bool>(status);
}

void EdgeTable::fill_spokes(uint32_t vertex_count) {
    for (const MeshEdge& edge : edges_)
        for (int side = 0; has_valid_ends(edge) && side < sides(edge); ++side)
            starts_[static_cast<size_t>(edge.ends[side])] += 1;
    uint32_t sum = 0;
    for (uint32_t& start : starts_) {
        sum += start;
        start = sum;
    }
    // Filling backwards moves each entry of starts_ from the end of its range to the start.
    for (size_t e = edges_.count(); e-- > 0;) {
        const MeshEdge& edge = edges_[e];
        for (int side = 0; has_valid_ends(edge) && side < sides(edge); ++side) {
            const uint32_t place = --starts_[static_cast<size_t>(edge.ends[side])];
            spokes_[place] = {edge.ends[1 - side], static_cast<int32_t>(e)};
        }
    }
    for (uint32_t v = 0; v < vertex_count; ++v)
        std::sort(spokes_.begin() + starts_[v], spokes_.begin() + starts_[v + 1], spoke_before);
}

EdgeTable::Spokes EdgeTable::around(int32_t vertex) const {
    if (!has_vertex(vertex))
        return {nullptr, nullptr};
    const auto v = static_cast<size_t>(vertex);
    return {spokes_.begin() + starts_[v], spokes_.begin() + starts_[v + 1]};
}

EdgeTable::Spokes EdgeTable::between(int32_t vertex, int32_t other) const {
    const Spokes all = around(vertex);
    if (vertex == other)
        return all;
    const Spoke* const first =
        std::lower_bound(all.first, all.last, other,
                         [](const Spoke& spoke, int32_t value) { return spoke.other < value; });
    const Spoke* last = first;
    while (last != all.last && last->other == other)
        ++last;
    return {first, last};
}
