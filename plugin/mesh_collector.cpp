#include "plugin/mesh_collector.h"

#include "plugin/edge_classifier.h"
#include "plugin/failure.h"
#include "plugin/progress.h"
#include "plugin/seams.h"
#include "plugin/unwrapper.h"

#include <maya/MFnMesh.h>
#include <maya/MItMeshEdge.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MItMeshVertex.h>
#include <maya/MPointArray.h>

#include <algorithm>

namespace {

constexpr const char* k_no_faces = "Data collector could not retrieve faces from mesh.";
constexpr const char* k_no_vertices = "Data collector could not retrieve vertices from faces.";
constexpr const char* k_no_mesh = "Data collector could not retrieve mesh_fn from mesh.";
constexpr const char* k_not_iterated = "Data collector could not iterate triangles.";
constexpr uint32_t k_none = 0xFFFFFFFF;

/// The positions of each vertex in one polygon's vertex list: per vertex the first position, per
/// position the next one of the same vertex. Searching the list for every triangle corner would be
/// quadratic in the polygon's size.
class CornerPlaces {
public:
    bool prepare(uint32_t vertex_count) { return first_.allocate(vertex_count, k_none); }

    bool set_polygon(const MIntArray& polygon) {
        const uint32_t count = polygon.length();
        if (next_.count() < count && !next_.alloc(std::max(count, 2 * next_.count())))
            return false;
        for (uint32_t j = count; j-- > 0;) {
            uint32_t& first = first_[static_cast<size_t>(polygon[j])];
            next_[j] = first;
            first = j;
        }
        return true;
    }

    void forget_polygon(const MIntArray& polygon) {
        for (unsigned j = 0; j < polygon.length(); ++j)
            first_[static_cast<size_t>(polygon[j])] = k_none;
    }

    /// Appends every position of `vertex`, ascending.
    void append_places(int vertex, CornerList& corners) const {
        for (uint32_t j = first_[static_cast<size_t>(vertex)]; j != k_none; j = next_.get(j))
            corners.append(j);
    }

private:
    WorkBuffer<uint32_t> first_;
    array<uint32_t> next_;
};

class Collector {
public:
    /// `data`: null if only the seam pairs are wanted.
    Collector(const UnwrapSettings& settings, MObject& mesh, MeshData* data, MIntArray* seam_pairs)
        : settings_(settings), mesh_(mesh), data_(data),
          classifier_(settings, seam_pairs, data != nullptr) {}

    MStatus run();

private:
    MStatus read_vertices();
    MStatus prepare(MItMeshPolygon& polygons, uint32_t& polygon_count);
    bool has_vertices(const MIntArray& ids) const;
    MStatus read_polygons(MItMeshPolygon& polygons, uint32_t polygon_count);
    MStatus read_polygon(MItMeshPolygon& polygon);
    void read_triangles(MItMeshPolygon& polygon, CornerList* corners);
    void read_seams(MItMeshPolygon& polygon);
    void read_triangle(MItMeshPolygon& polygon, int triangle);

    const UnwrapSettings& settings_;
    MObject& mesh_;
    MeshData* const data_;
    EdgeClassifier classifier_;
    CornerPlaces places_;
    MString uv_set_;
    uint32_t vertex_count_ = 0;
    // Reused for all polygons, so that they stop allocating once grown. If the host fails to return
    // a triangle, the previous one is used again; before the first one that is vertex 0 three
    // times.
    MIntArray polygon_;
    MIntArray ids_ = MIntArray(3, 0);
    MPointArray points_ = MPointArray(3);
    MIntArray read_ids_;
    MPointArray read_points_;
};

MStatus Collector::read_vertices() {
    MStatus status;
    MFnMesh mesh_fn(mesh_, &status);
    if (!status)
        return fail_with(k_no_mesh, status);
    MPointArray points;
    status = mesh_fn.getPoints(points, MSpace::kObject);
    if (!status)
        return fail_with(k_no_mesh, status);
    vertex_count_ = points.length();
    for (uint32_t i = 0; data_ != nullptr && i < vertex_count_; ++i) {
        const MPoint& p = points[i];
        data_->vertices.append({static_cast<float>(p.x), static_cast<float>(p.y),
                                static_cast<float>(p.z), 0.0f, 0.0f});
    }
    uv_set_ = mesh_fn.currentUVSetName(&status);
    if (!status || uv_set_.length() == 0)
        uv_set_ = settings_.uv_set;
    return MS::kSuccess;
}

/// Builds the look-up tables.
MStatus Collector::prepare(MItMeshPolygon& polygons, uint32_t& polygon_count) {
    MStatus status = classifier_.read_edges(mesh_, vertex_count_);
    MIntArray seam_edges;
    if (status)
        seam_edges = find_seam_edges(mesh_, uv_set_, classifier_.edges(), &status);
    if (!status)
        return fail_with(k_no_faces, status);
    polygon_count = static_cast<uint32_t>(polygons.count(&status));
    if (!status)
        return fail_with(k_not_iterated, status);
    status = classifier_.prepare(vertex_count_, polygons, polygon_count, seam_edges);
    if (status && data_ != nullptr && !places_.prepare(vertex_count_))
        status = MS::kInsufficientMemory;
    return status ? status : fail_with(k_no_faces, status);
}

bool Collector::has_vertices(const MIntArray& ids) const {
    for (unsigned j = 0; j < ids.length(); ++j)
        if (ids[j] < 0 || static_cast<uint32_t>(ids[j]) >= vertex_count_)
            return false;
    return true;
}

MStatus Collector::run() {
    MStatus status;
    MItMeshPolygon polygons(mesh_, &status);
    if (status)
        MItMeshEdge(mesh_, &status);
    if (status)
        MItMeshVertex(mesh_, &status);
    if (status && (ids_.length() < 3 || points_.length() < 3))
        status = MS::kInsufficientMemory;
    if (!status)
        return fail_with(k_no_faces, status);
    status = read_vertices();
    if (!status)
        return status;
    uint32_t polygon_count = 0;
    status = prepare(polygons, polygon_count);
    if (!status)
        return status;
    return read_polygons(polygons, polygon_count);
}

MStatus Collector::read_polygons(MItMeshPolygon& polygons, uint32_t polygon_count) {
    const int64_t count = polygon_count;
    int64_t i = 0;
    for (polygons.reset(); !polygons.isDone(); ++i) {
        if (count > 0 && progress_reserved)
            show_percent(static_cast<int32_t>(std::min(i, count) * 100 / count));
        MStatus status = read_polygon(polygons);
        if (!status)
            return status;
        status = polygons.next();
        if (!status)
            return fail_with(k_not_iterated, status);
    }
    // An atlas of some of the polygons would replace the UVs of all of them.
    return i < count ? fail_with(k_not_iterated, MS::kFailure) : MStatus(MS::kSuccess);
}

MStatus Collector::read_polygon(MItMeshPolygon& polygon) {
    const MStatus status = polygon.getVertices(polygon_);
    if (!status)
        return fail_with(k_no_vertices, status);
    if (!has_vertices(polygon_))
        return fail_with(k_no_vertices, MS::kFailure);
    if (data_ == nullptr) {
        read_seams(polygon);
        return MS::kSuccess;
    }
    if (!places_.set_polygon(polygon_))
        return fail_with(k_no_vertices, MS::kInsufficientMemory);
    // If memory runs out the list is left out, like any element that an array cannot take.
    CornerList* const corners = new_corner_list();
    read_triangles(polygon, corners);
    if (corners != nullptr && !data_->face_corners.append(corners))
        free_corner_list(corners);
    places_.forget_polygon(polygon_);
    return MS::kSuccess;
}

/// Keeps the previous triangle if the host returns no valid one.
void Collector::read_triangle(MItMeshPolygon& polygon, int triangle) {
    polygon.getTriangle(triangle, read_points_, read_ids_, MSpace::kObject);
    if (read_ids_.length() < 3 || read_points_.length() < 3 || !has_vertices(read_ids_))
        return;
    for (unsigned k = 0; k < 3; ++k) {
        ids_[k] = read_ids_[k];
        points_[k] = read_points_[k];
    }
}

void Collector::read_triangles(MItMeshPolygon& polygon, CornerList* corners) {
    const int id = static_cast<int>(polygon.index());
    int count = 0;
    polygon.numTriangles(count);
    // One allocation; more if the polygon lists a vertex twice.
    if (corners != nullptr && count > 0)
        corners->resize(3 * static_cast<uint32_t>(count));
    for (int t = 0; t < count; ++t) {
        read_triangle(polygon, t);
        for (unsigned k = 0; k < 3; ++k) {
            data_->indices.append(static_cast<uint32_t>(ids_[k]));
            if (corners != nullptr)
                places_.append_places(ids_[k], *corners);
        }
        for (unsigned k = 0; k < 3; ++k)
            classifier_.classify(id, ids_, points_, k, *data_);
    }
}

void Collector::read_seams(MItMeshPolygon& polygon) {
    int count = 0;
    polygon.numTriangles(count);
    for (int t = 0; t < count; ++t) {
        read_triangle(polygon, t);
        for (unsigned k = 0; k < 3; ++k)
            classifier_.note_borders(ids_[k], ids_[(k + 1) % 3]);
    }
}

} // namespace

MStatus collect_mesh_data(const Unwrapper& unwrapper, MObject& mesh, MeshData& data,
                          MIntArray* seam_pairs) {
    data.vertices.clear();
    data.indices.clear();
    free_corner_lists(data.face_corners);
    if (seam_pairs != nullptr)
        seam_pairs->clear();
    return Collector(unwrapper.settings(), mesh, &data, seam_pairs).run();
}

MStatus collect_mesh_data(const Unwrapper& unwrapper, MObject& mesh, MIntArray* seam_pairs) {
    if (seam_pairs != nullptr)
        seam_pairs->clear();
    return Collector(unwrapper.settings(), mesh, nullptr, seam_pairs).run();
}
