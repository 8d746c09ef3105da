#include "tests/plugin/literal_exchange.h"

#include <maya/MFloatArray.h>
#include <maya/MItMeshEdge.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MItMeshVertex.h>
#include <maya/MPointArray.h>
#include <maya/MVector.h>

#include <algorithm>
#include <cmath>

namespace {

struct Iterators {
    explicit Iterators(MObject& mesh)
        : walk(mesh), look_a(mesh), look_b(mesh), edge(mesh), vertex(mesh) {}
    MItMeshPolygon walk, look_a, look_b;
    MItMeshEdge edge;
    MItMeshVertex vertex;
};

bool continuous_at(MItMeshVertex& vertex, int id, const MIntArray& faces, const MString& uv_set) {
    int previous;
    vertex.setIndex(id, previous);
    MIntArray uv_ids, face_ids;
    MFloatArray u, v;
    vertex.getUVIndices(uv_ids, &uv_set);
    vertex.getUVs(u, v, face_ids, &uv_set);
    int place[2] = {-1, -1};
    for (int side = 0; side < 2; ++side)
        for (unsigned i = 0; i < face_ids.length() && place[side] < 0; ++i)
            if (face_ids[i] == faces[static_cast<unsigned>(side)])
                place[side] = static_cast<int>(i);
    return place[0] >= 0 && place[1] >= 0 &&
           uv_ids[static_cast<unsigned>(place[0])] == uv_ids[static_cast<unsigned>(place[1])];
}

bool crease_at(const UnwrapSettings& settings, Iterators& it, const MIntArray& faces,
               const MVector& along) {
    const int current = static_cast<int>(it.walk.index());
    const int a = faces[0] == current ? faces[0] : faces[1];
    const int b = faces[0] == current ? faces[1] : faces[0];
    int previous;
    it.look_a.setIndex(a, previous);
    it.look_b.setIndex(b, previous);
    MVector normal_a, normal_b;
    it.look_a.getNormal(normal_a, MSpace::kObject);
    it.look_b.getNormal(normal_b, MSpace::kObject);
    const MVector c = normal_a ^ normal_b;
    const double theta = std::atan2(std::sqrt(c * c), normal_a * normal_b);
    const float scaled = static_cast<float>(theta) * 180.0f;
    const float d = static_cast<float>(static_cast<double>(scaled) * 0.3183098861837907);
    if (along * c >= 0.0)
        return settings.use_grooves && d >= settings.groove_angle;
    return settings.use_ridges && d >= settings.ridge_angle;
}

void classify(const UnwrapSettings& settings, Iterators& it, const MIntArray& ids,
              const MPointArray& points, unsigned k, const std::vector<int>& border_edges,
              LiteralData& data) {
    const unsigned next = (k + 1) % 3;
    const int p = ids[k];
    const int q = ids[next];
    bool border = false, crease = false, found = false;
    int previous;
    it.vertex.setIndex(p, previous);
    MIntArray edges, faces;
    it.vertex.getConnectedEdges(edges);
    for (unsigned e = 0; e < edges.length(); ++e) {
        it.edge.setIndex(edges[e], previous);
        if (it.edge.index(0) != q && it.edge.index(1) != q)
            continue;
        found = true;
        for (const int listed : border_edges)
            if (listed == edges[e]) {
                border = true;
                data.seam_pairs.push_back(p);
                data.seam_pairs.push_back(q);
            }
        if (it.edge.getConnectedFaces(faces) == 2 &&
            crease_at(settings, it, faces, points[k] - points[next]))
            crease = true;
    }
    data.real_edges.push_back(found ? 0xFFFFFFFF : 0);
    data.cut_edges.push_back((settings.keep_seams && border) || crease ? 0xFFFFFFFF : 0);
}

using Pairs = std::vector<std::pair<int, int>>;

Pairs sorted_pairs(const std::vector<int>& flat) {
    Pairs pairs;
    for (size_t i = 0; i + 1 < flat.size(); i += 2)
        pairs.emplace_back(std::min(flat[i], flat[i + 1]), std::max(flat[i], flat[i + 1]));
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

} // namespace

std::vector<int> literal_seam_edges(MObject& mesh, const MString& uv_set) {
    Iterators it(mesh);
    std::vector<int> seams;
    MIntArray faces;
    for (it.edge.reset(); !it.edge.isDone(); it.edge.next()) {
        const int count = it.edge.getConnectedFaces(faces);
        if (count == 1)
            continue;
        if (count == 2 && continuous_at(it.vertex, it.edge.index(0), faces, uv_set) &&
            continuous_at(it.vertex, it.edge.index(1), faces, uv_set))
            continue;
        seams.push_back(it.edge.index());
    }
    return seams;
}

LiteralData literal_collect(const UnwrapSettings& settings, MObject& mesh,
                            const std::vector<int>& border_edges) {
    LiteralData data;
    Iterators it(mesh);
    for (it.walk.reset(); !it.walk.isDone(); it.walk.next()) {
        int count = 0;
        it.walk.numTriangles(count);
        data.face_corners.emplace_back();
        MIntArray polygon, ids;
        MPointArray points;
        it.walk.getVertices(polygon);
        for (int t = 0; t < count; ++t) {
            it.walk.getTriangle(t, points, ids, MSpace::kObject);
            for (unsigned k = 0; k < 3; ++k) {
                data.indices.push_back(static_cast<uint32_t>(ids[k]));
                for (unsigned j = 0; j < polygon.length(); ++j)
                    if (polygon[j] == ids[k])
                        data.face_corners.back().push_back(j);
            }
            for (unsigned k = 0; k < 3; ++k)
                classify(settings, it, ids, points, k, border_edges, data);
        }
    }
    return data;
}

std::vector<int> literal_subtract(const std::vector<int>& new_seams,
                                  const std::vector<int>& existing_seams) {
    Pairs left = sorted_pairs(new_seams);
    for (const auto& pair : sorted_pairs(existing_seams)) {
        const auto range = std::equal_range(left.begin(), left.end(), pair);
        left.erase(range.first, range.second);
    }
    std::vector<int> result;
    std::pair<int, int> written{0, 0};
    for (const auto& pair : left)
        if (pair != written) {
            result.push_back(pair.first);
            result.push_back(pair.second);
            written = pair;
        }
    return result;
}

std::vector<std::vector<int>>
literal_corner_uvs(const std::vector<int>& corner_counts,
                   const std::vector<std::vector<uint32_t>>& face_corners,
                   const std::vector<uint32_t>& atlas_indices) {
    std::vector<std::vector<int>> result;
    size_t r = 0;
    for (size_t p = 0; p < face_corners.size(); ++p) {
        result.emplace_back(static_cast<size_t>(corner_counts[p]), 0);
        for (const uint32_t place : face_corners[p])
            result.back()[place] = static_cast<int>(atlas_indices[r++]);
    }
    return result;
}
