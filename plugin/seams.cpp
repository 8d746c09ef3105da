#include "plugin/seams.h"

#include "plugin/work_buffer.h"

#include <maya/MFloatArray.h>
#include <maya/MItMeshVertex.h>

#include <algorithm>

namespace {

/// The UV id that a face has at one vertex.
struct FaceUv {
    int32_t face;
    uint32_t order; ///< position in the host's list; of several UVs of a face the first counts
    int32_t uv;
};

bool face_uv_before(const FaceUv& a, const FaceUv& b) {
    return a.face != b.face ? a.face < b.face : a.order < b.order;
}

} // namespace

template <>
struct array_element_name<FaceUv> {
    static constexpr const char* text = "struct FaceUv";
};

namespace {

/// The UVs of all vertices, sorted by face. The host only returns the whole list of a vertex;
/// reading it again for every edge would be quadratic in the valence.
class VertexUvs {
public:
    MStatus read(MObject& mesh, const MString& uv_set);

    /// Whether two faces have the same UV at a vertex.
    bool continuous(int vertex, int face_a, int face_b) const {
        const FaceUv* const a = find(vertex, face_a);
        const FaceUv* const b = find(vertex, face_b);
        return a != nullptr && b != nullptr && a->uv == b->uv;
    }

private:
    bool add_vertex(MItMeshVertex& vertex, const MString& uv_set);

    /// Null if the vertex does not exist or the face has no UV there.
    const FaceUv* find(int vertex, int face) const {
        if (vertex < 0 || static_cast<size_t>(vertex) + 1 >= starts_.count())
            return nullptr;
        const auto v = static_cast<size_t>(vertex);
        const FaceUv* const last = entries_.data() + starts_[v + 1];
        const FaceUv* const found =
            std::lower_bound(entries_.data() + starts_[v], last, face,
                             [](const FaceUv& entry, int value) { return entry.face < value; });
        return found != last && found->face == face ? found : nullptr;
    }

    array<FaceUv> entries_;
    WorkBuffer<uint32_t> starts_; ///< vertex v has the entries starts_[v] to starts_[v + 1]
    MIntArray uv_ids_;
    MIntArray face_ids_;
    MFloatArray u_;
    MFloatArray v_;
};

MStatus VertexUvs::read(MObject& mesh, const MString& uv_set) {
    MStatus status;
    MItMeshVertex it(mesh, &status);
    if (!status)
        return status;
    const int count = it.count(&status);
    if (!status)
        return status;
    if (!starts_.allocate(static_cast<size_t>(count) + 1, 0))
        return MS::kInsufficientMemory;
    int v = 0;
    for (it.reset(); status && v < count && !it.isDone(); status = it.next()) {
        if (!add_vertex(it, uv_set))
            return MS::kInsufficientMemory;
        starts_[static_cast<size_t>(++v)] = entries_.count();
    }
    // If the host's iterator ends early, the remaining vertices have no UVs.
    while (v < count)
        starts_[static_cast<size_t>(++v)] = entries_.count();
    return status;
}

bool VertexUvs::add_vertex(MItMeshVertex& vertex, const MString& uv_set) {
    // For a vertex without mapped faces the host fails and leaves the lists unchanged.
    uv_ids_.clear();
    face_ids_.clear();
    vertex.getUVIndices(uv_ids_, &uv_set);
    vertex.getUVs(u_, v_, face_ids_, &uv_set);
    const uint32_t first = entries_.count();
    const unsigned count = std::min(uv_ids_.length(), face_ids_.length());
    for (unsigned i = 0; i < count; ++i)
        if (!entries_.append({face_ids_[i], i, uv_ids_[i]}))
            return false;
    std::sort(entries_.data() + first, entries_.data() + entries_.count(), face_uv_before);
    return true;
}

bool is_seam(const MeshEdge& edge, const VertexUvs& uvs) {
    if (edge.face_count != 2)
        return edge.face_count != 1;
    const int32_t a = edge.faces[0], b = edge.faces[1];
    return !uvs.continuous(edge.ends[0], a, b) || !uvs.continuous(edge.ends[1], a, b);
}

} // namespace

MIntArray find_seam_edges(MObject& mesh, const MString& uv_set, const EdgeTable& edges,
                          MStatus* return_status) {
    MIntArray seams;
    VertexUvs uvs;
    const MStatus status = uvs.read(mesh, uv_set);
    for (size_t id = 0; status && id < edges.count(); ++id)
        if (is_seam(edges.edge(static_cast<int32_t>(id)), uvs))
            seams.append(static_cast<int>(id));
    if (return_status != nullptr)
        *return_status = status;
    return seams;
}

array<SeamPair> seam_pairs_sorted(const MIntArray& pairs) {
    array<SeamPair> sorted;
    const uint32_t count = pairs.length() / 2;
    // If memory runs out the shortened list is used: seams are only drawn.
    sorted.resize(count);
    for (uint32_t i = 0; i < count; ++i) {
        const int32_t a = pairs[2 * i];
        const int32_t b = pairs[2 * i + 1];
        if (!sorted.append({std::min(a, b), std::max(a, b)}))
            break;
    }
    if (sorted.count() > 1)
        std::sort(sorted.data(), sorted.data() + sorted.count());
    return sorted;
}

void subtract_seams(MIntArray& new_seams, const MIntArray& existing_seams) {
    const array<SeamPair> found = seam_pairs_sorted(new_seams);
    const array<SeamPair> existing = seam_pairs_sorted(existing_seams);
    new_seams.clear();
    SeamPair written = {0, 0};
    uint32_t e = 0;
    for (uint32_t i = 0; i < found.count(); ++i) {
        const SeamPair pair = found.get(i);
        while (e < existing.count() && existing.get(e) < pair)
            ++e;
        const bool existed = e < existing.count() && existing.get(e) == pair;
        if (existed || pair == written)
            continue;
        new_seams.append(pair.low);
        new_seams.append(pair.high);
        written = pair;
    }
}
