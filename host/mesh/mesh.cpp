#include "host/mesh/mesh.h"

#include "polygon/triangulation.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

namespace host {

using tessora::polygon::Triangulation;

/// Points and the data derived from them, which is computed on first use.
struct Mesh::Geometry {
    std::vector<Float3> points;
    mutable std::unique_ptr<const Triangulation> triangulation;
    mutable std::vector<MVector> normals;
};

namespace {

/// Newell's method, relative to the first corner to stay accurate far from the origin.
/// Source: Sutherland, Sproull, Schumacker, "A Characterization of Ten Hidden-Surface Algorithms"
///         (1974), appendix, where the method is credited to M. E. Newell.
MVector newell(const Connectivity& connectivity, const std::vector<Float3>& points,
               std::uint32_t polygon) {
    const IndexSpan vertices = connectivity.polygon_vertices(polygon);
    const auto at = [&](std::uint32_t corner) {
        const Float3& p = points[vertices[corner]];
        return MVector(static_cast<double>(p.x), static_cast<double>(p.y),
                       static_cast<double>(p.z));
    };
    const MVector origin = at(0);
    MVector sum;
    MVector previous = at(1) - origin;
    for (std::uint32_t corner = 2; corner < vertices.size(); ++corner) {
        const MVector next = at(corner) - origin;
        sum += previous ^ next;
        previous = next;
    }
    return sum.normal();
}

} // namespace

MeshOrigin::~MeshOrigin() = default;

Mesh::Mesh()
    : connectivity_(std::make_shared<const Connectivity>(0, std::vector<std::uint32_t>(),
                                                         std::vector<std::uint32_t>())),
      geometry_(std::make_shared<const Geometry>()) {}
Mesh::Mesh(const Mesh& other) = default;
Mesh::Mesh(Mesh&& other) noexcept = default;
Mesh& Mesh::operator=(const Mesh& other) = default;
Mesh& Mesh::operator=(Mesh&& other) noexcept = default;
Mesh::~Mesh() = default;

MStatus Mesh::make(std::vector<Float3> points, std::vector<std::uint32_t> counts,
                   std::vector<std::uint32_t> vertices, Mesh& mesh) {
    constexpr std::size_t k_most = std::numeric_limits<std::int32_t>::max();
    if (points.size() > k_most || counts.size() > k_most || vertices.size() > k_most)
        return MS::kInvalidParameter;
    std::uint64_t total = 0;
    for (const std::uint32_t count : counts) {
        if (count < 3)
            return MS::kInvalidParameter;
        total += count;
    }
    const bool known = std::all_of(vertices.begin(), vertices.end(),
                                   [&](std::uint32_t vertex) { return vertex < points.size(); });
    if (total != vertices.size() || !known)
        return MS::kInvalidParameter;
    try {
        Mesh made;
        made.connectivity_ = std::make_shared<const Connectivity>(
            static_cast<std::uint32_t>(points.size()), std::move(counts), std::move(vertices));
        const auto geometry = std::make_shared<Geometry>();
        geometry->points = std::move(points);
        made.geometry_ = geometry;
        mesh = std::move(made);
    } catch (const std::bad_alloc&) {
        return MS::kInsufficientMemory;
    }
    return MS::kSuccess;
}

const std::vector<Float3>& Mesh::points() const { return geometry_->points; }

MStatus Mesh::set_points(std::vector<Float3> points) {
    if (points.size() != geometry_->points.size())
        return MS::kInvalidParameter;
    const auto geometry = std::make_shared<Geometry>();
    geometry->points = std::move(points);
    geometry_ = geometry;
    return MS::kSuccess;
}

MVector Mesh::normal(std::uint32_t polygon) const {
    std::vector<MVector>& normals = geometry_->normals;
    if (normals.empty()) {
        normals.reserve(connectivity_->polygon_count());
        for (std::uint32_t p = 0; p < connectivity_->polygon_count(); ++p)
            normals.push_back(newell(*connectivity_, geometry_->points, p));
    }
    return normals[polygon];
}

const Triangulation& Mesh::triangulation() const {
    if (geometry_->triangulation == nullptr)
        geometry_->triangulation =
            std::make_unique<const Triangulation>(tessora::polygon::triangulate(
                connectivity_->polygons(),
                geometry_->points.empty() ? nullptr : &geometry_->points[0].x));
    return *geometry_->triangulation;
}

IndexSpan Mesh::triangles(std::uint32_t polygon) const {
    const Triangulation& all = triangulation();
    const std::uint32_t* first =
        all.corners.data() + Triangulation::first_corner(connectivity_->polygons(), polygon);
    return IndexSpan(first, first + 3 * (connectivity_->corners_of(polygon) - 2));
}

bool Mesh::is_triangulated() const { return geometry_->triangulation != nullptr; }

bool Mesh::is_triangulation_valid(std::uint32_t polygon) const {
    return triangulation().is_valid[polygon] != 0;
}

UvSet& Mesh::edit_uv_set(std::uint32_t set) {
    std::shared_ptr<UvSet>& shared = uv_sets_[set];
    if (shared.use_count() > 1)
        shared = std::make_shared<UvSet>(*shared);
    return *shared;
}

int Mesh::find_uv_set(const MString& name) const {
    for (std::size_t i = 0; i < uv_sets_.size(); ++i)
        if (uv_sets_[i]->name == name)
            return static_cast<int>(i);
    return -1;
}

std::uint32_t Mesh::add_uv_set(const MString& name) {
    const auto set = std::make_shared<UvSet>();
    set->name = name.length() == 0 ? MString("map1") : name;
    if (find_uv_set(set->name) >= 0) {
        std::string stem = set->name.asChar();
        while (!stem.empty() && stem.back() >= '0' && stem.back() <= '9')
            stem.pop_back();
        for (unsigned int number = 1; find_uv_set(set->name) >= 0; ++number)
            set->name = MString(stem.c_str()) + number;
    }
    set->corner_uvs.assign(connectivity_->corner_count(), -1);
    uv_sets_.push_back(set);
    if (current_uv_set_ < 0)
        current_uv_set_ = 0;
    return uv_set_count() - 1;
}

void Mesh::remove_uv_set(std::uint32_t set) {
    uv_sets_.erase(uv_sets_.begin() + set);
    if (current_uv_set_ >= static_cast<int>(set))
        current_uv_set_ = uv_sets_.empty() ? -1 : std::max(current_uv_set_ - 1, 0);
}

} // namespace host
