/// A polygon mesh with value semantics. Copies are cheap: they share immutable parts until one copy
/// is written. The parts are the polygons with their connectivity, the points with derived data
/// (triangles, normals), and each UV set.
///
/// Points are single precision. Triangles and normals are computed on first use and cached. A UV
/// set is a list of UVs and, per corner, an index into it or -1. Set names are unique and not
/// empty. The first set added becomes the current one.
#pragma once

#include "host/base/object.h"
#include "host/mesh/connectivity.h"

#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MVector.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace tessora::polygon {
struct Triangulation;
}

namespace host {

struct Float3 {
    float x;
    float y;
    float z;
};

struct UvSet {
    MString name;
    std::vector<float> u;
    std::vector<float> v;
    std::vector<std::int32_t> corner_uvs; ///< one per corner; -1: unmapped
};

/// Base class of what a file reader attaches to the meshes it makes, so that a writer can find it.
struct MHOST_EXPORT MeshOrigin {
    virtual ~MeshOrigin();
};

class MHOST_EXPORT Mesh {
public:
    /// An empty mesh.
    Mesh();
    Mesh(const Mesh& other);
    Mesh(Mesh&& other) noexcept;
    Mesh& operator=(const Mesh& other);
    Mesh& operator=(Mesh&& other) noexcept;
    ~Mesh();

    /// Makes a mesh without UV sets.
    /// Shape:  points[nv], counts[np] corners per polygon, vertices[sum of counts] -> mesh.
    /// Limits: at least three corners per polygon, whose vertices may repeat; at most 2^31 - 1
    ///         points, polygons and corners.
    /// Errors: kInvalidParameter (wrong count, id or total), kInsufficientMemory; `mesh` is
    ///         unchanged on failure.
    static MStatus make(std::vector<Float3> points, std::vector<std::uint32_t> counts,
                        std::vector<std::uint32_t> vertices, Mesh& mesh);

    const Connectivity& connectivity() const { return *connectivity_; }
    const std::vector<Float3>& points() const;
    /// Replaces all points; their number must not change.
    MStatus set_points(std::vector<Float3> points);

    /// Unit normal of a polygon (Newell's method); zero if the polygon has no area.
    MVector normal(std::uint32_t polygon) const;

    /// Triangles of a polygon with n corners: n - 2 triples of polygon-relative corner numbers.
    IndexSpan triangles(std::uint32_t polygon) const;
    /// Of all polygons; computed on first use.
    const tessora::polygon::Triangulation& triangulation() const;
    /// Whether the triangles are computed, so that `triangles` does not allocate.
    bool is_triangulated() const;
    /// False if the outline is self-intersecting or has no area: some triangles overlap or are
    /// degenerate.
    bool is_triangulation_valid(std::uint32_t polygon) const;

    /// What the mesh was read from; null if it was not read from a file. Copies share it, whatever
    /// happens to their points and UVs; the polygons are always those of the file.
    const MeshOrigin* origin() const { return origin_.get(); }
    void set_origin(std::shared_ptr<const MeshOrigin> origin) { origin_ = std::move(origin); }

    // UV sets, by position ------------------------------------------------------------------

    std::uint32_t uv_set_count() const { return static_cast<std::uint32_t>(uv_sets_.size()); }
    const UvSet& uv_set(std::uint32_t set) const { return *uv_sets_[set]; }
    /// The set for writing; copies that share it are not affected. The caller keeps sizes and ids
    /// consistent.
    UvSet& edit_uv_set(std::uint32_t set);
    /// Position of the set with this name, -1 if there is none.
    int find_uv_set(const MString& name) const;
    int current_uv_set() const { return current_uv_set_; } ///< -1: the mesh has no sets
    void set_current_uv_set(int set) { current_uv_set_ = set; }
    /// Adds an empty set and returns its position. An empty name becomes "map1"; a name that is
    /// taken gets another number.
    std::uint32_t add_uv_set(const MString& name);
    void remove_uv_set(std::uint32_t set);

private:
    struct Geometry;

    std::shared_ptr<const Connectivity> connectivity_;
    std::shared_ptr<const Geometry> geometry_;
    std::vector<std::shared_ptr<UvSet>> uv_sets_;
    int current_uv_set_ = -1;
    std::shared_ptr<const MeshOrigin> origin_;
};

} // namespace host
