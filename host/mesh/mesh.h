/// A polygon mesh as a value: copying one is cheap, because copies share their immutable parts
/// until one of them is written. The parts are the polygons with their connectivity, the points
/// with what follows from them (triangles, normals), and each UV set.
///
/// Points are single precision. Triangles and normals are worked out when first asked for and kept.
/// A UV set is a list of UVs and, per corner, an index into it or -1. Set names are unique and not
/// empty. The first set made becomes the current one.
#pragma once

#include "host/api/object.h"
#include "host/mesh/connectivity.h"

#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MVector.h>

#include <cstdint>
#include <memory>
#include <vector>

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
    std::vector<std::int32_t> corner_uvs; ///< one per corner; -1 is unmapped
};

struct Triangulation;

class MHOST_EXPORT Mesh {
public:
    /// No vertices, no polygons, no UV sets.
    Mesh();
    Mesh(const Mesh& other);
    Mesh(Mesh&& other) noexcept;
    Mesh& operator=(const Mesh& other);
    Mesh& operator=(Mesh&& other) noexcept;
    ~Mesh();

    /// Makes a mesh without UV sets.
    /// Shape:  points[nv], counts[np] corners per polygon, vertices[sum of counts] -> mesh.
    /// Limits: a polygon has three corners at least; its vertices need not differ. At most 2^31 - 1
    ///         of anything.
    /// Errors: kInvalidParameter (a count, an id or a total is wrong), kInsufficientMemory; `mesh`
    ///         then stays as it is.
    static MStatus make(std::vector<Float3> points, std::vector<std::uint32_t> counts,
                        std::vector<std::uint32_t> vertices, Mesh& mesh);

    const Connectivity& connectivity() const { return *connectivity_; }
    const std::vector<Float3>& points() const;
    /// Replaces all points; there are as many as before.
    MStatus set_points(std::vector<Float3> points);

    /// Unit normal of a polygon (Newell's method); zero when it has no area.
    MVector normal(std::uint32_t polygon) const;

    /// Triangles of a polygon with n corners: n - 2, as local corner numbers, three each.
    IndexSpan triangles(std::uint32_t polygon) const;
    /// False when the outline crosses itself or has no area: some triangles overlap or are flat.
    bool is_triangulation_valid(std::uint32_t polygon) const;

    // UV sets, by position ------------------------------------------------------------------

    std::uint32_t uv_set_count() const { return static_cast<std::uint32_t>(uv_sets_.size()); }
    const UvSet& uv_set(std::uint32_t set) const { return *uv_sets_[set]; }
    /// For writing; whoever shares the set keeps what it was. Sizes and ids are the caller's care.
    UvSet& edit_uv_set(std::uint32_t set);
    /// Position of a name, -1 when there is no such set.
    int find_uv_set(const MString& name) const;
    int current_uv_set() const { return current_uv_set_; } ///< -1: the mesh has no sets
    void set_current_uv_set(int set) { current_uv_set_ = set; }
    /// Adds an empty set. The name, "map1" if empty, gets another number until it is unique.
    /// Returns the set's position.
    std::uint32_t add_uv_set(const MString& name);
    void remove_uv_set(std::uint32_t set);

private:
    struct Geometry;
    const Triangulation& triangulation() const;

    std::shared_ptr<const Connectivity> connectivity_;
    std::shared_ptr<const Geometry> geometry_;
    std::vector<std::shared_ptr<UvSet>> uv_sets_;
    int current_uv_set_ = -1;
};

} // namespace host
