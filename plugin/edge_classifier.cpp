#include "plugin/edge_classifier.h"

#include "plugin/crease_angle.h"

#include <maya/MVector.h>

MStatus EdgeClassifier::prepare(uint32_t vertex_count, MItMeshPolygon& polygons,
                                uint32_t polygon_count, const MIntArray& border_edges) {
    if (!border_counts_.allocate(edges_.count(), 0) ||
        !self_creases_.allocate(vertex_count, k_unknown))
        return MS::kInsufficientMemory;
    for (unsigned i = 0; i < border_edges.length(); ++i)
        if (static_cast<size_t>(border_edges[i]) < border_counts_.count())
            border_counts_[static_cast<size_t>(border_edges[i])] += 1;
    return looks_for_creases_ ? read_normals(polygons, polygon_count) : MStatus(MS::kSuccess);
}

MStatus EdgeClassifier::read_normals(MItMeshPolygon& polygons, uint32_t polygon_count) {
    if (!normals_.allocate(polygon_count, {0.0, 0.0, 0.0}))
        return MS::kInsufficientMemory;
    MStatus status;
    size_t p = 0;
    for (polygons.reset(); status && p < polygon_count && !polygons.isDone();
         status = polygons.next(), ++p) {
        MVector normal;
        polygons.getNormal(normal, MSpace::kObject);
        normals_[p] = {normal.x, normal.y, normal.z};
    }
    return status;
}

MVector EdgeClassifier::normal(int polygon) const {
    if (polygon < 0 || static_cast<size_t>(polygon) >= normals_.count())
        return MVector();
    const Normal& n = normals_[static_cast<size_t>(polygon)];
    return MVector(n.x, n.y, n.z);
}

bool EdgeClassifier::is_crease(const MeshEdge& edge, int polygon, const MVector& along) const {
    if (edge.face_count != 2)
        return false;
    const int here = edge.faces[0] == polygon ? edge.faces[0] : edge.faces[1];
    const int across = edge.faces[0] == polygon ? edge.faces[1] : edge.faces[0];
    const MVector normal_here = normal(here);
    const MVector normal_across = normal(across);
    // Deliberate: a flat edge counts as a groove, so a groove angle of 0 cuts it.
    if (along * (normal_here ^ normal_across) >= 0.0)
        return settings_.use_grooves &&
               crease_degrees(normal_here, normal_across) >= settings_.groove_angle;
    return settings_.use_ridges &&
           crease_degrees(normal_here, normal_across) >= settings_.ridge_angle;
}

bool EdgeClassifier::has_crease(EdgeTable::Spokes spokes, int polygon, const MVector& along) const {
    for (const EdgeTable::Spoke& spoke : spokes)
        if (is_crease(edges_.edge(spoke.edge), polygon, along))
            return true;
    return false;
}

// A triangle edge from a vertex to itself matches all edges of that vertex. Its edge vector is
// zero, so the result does not depend on the polygon and is computed once per vertex.
bool EdgeClassifier::has_self_crease(int vertex, EdgeTable::Spokes spokes, int polygon,
                                     const MVector& along) {
    uint8_t& known = self_creases_[static_cast<size_t>(vertex)];
    if (known == k_unknown)
        known = has_crease(spokes, polygon, along) ? k_some_crease : k_no_crease;
    return known == k_some_crease;
}

bool EdgeClassifier::note_borders(EdgeTable::Spokes spokes, int from, int to) {
    bool border = false;
    for (const EdgeTable::Spoke& spoke : spokes) {
        const uint32_t listed = border_counts_[static_cast<size_t>(spoke.edge)];
        border = border || listed != 0;
        for (uint32_t i = 0; i < listed && seam_pairs_ != nullptr; ++i) {
            seam_pairs_->append(from);
            seam_pairs_->append(to);
        }
    }
    return border;
}

void EdgeClassifier::classify(int polygon, const MIntArray& ids, const MPointArray& points,
                              unsigned k, MeshData& data) {
    const unsigned next = (k + 1) % 3;
    const int from = ids[k];
    const int to = ids[next];
    const EdgeTable::Spokes spokes = edges_.between(from, to);
    const bool found = spokes.first != spokes.last;
    const bool border = note_borders(spokes, from, to);
    bool crease = false;
    if (found && looks_for_creases_) {
        const MVector along = points[k] - points[next];
        crease = from == to ? has_self_crease(from, spokes, polygon, along)
                            : has_crease(spokes, polygon, along);
    }
    data.real_edges.append(found ? k_marked : 0);
    data.cut_edges.append((settings_.keep_seams && border) || crease ? k_marked : 0);
}
