#include "host/mesh/uv_move.h"

#include "host/mesh/uv_edit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>

namespace host {
namespace {

/// A point of the UV plane; multiplication turns and scales.
using Point = std::complex<double>;

Point point_of(const UvSet& set, std::uint32_t uv) {
    return {static_cast<double>(set.u[uv]), static_cast<double>(set.v[uv])};
}

void put(UvSet& set, std::uint32_t uv, const Point& point) {
    set.u[uv] = static_cast<float>(point.real());
    set.v[uv] = static_cast<float>(point.imag());
}

/// The UV of a polygon at a vertex, which the polygon must have; -1: unmapped.
std::int32_t uv_at(const Connectivity& mesh, const UvSet& set, std::uint32_t polygon,
                   std::uint32_t vertex) {
    std::uint32_t corner = mesh.first_corner(polygon);
    while (mesh.corner_vertex(corner) != vertex)
        ++corner;
    return set.corner_uvs[corner];
}

/// Twice the signed area of a polygon in the UV plane; 0 if a corner is unmapped.
double signed_area(const Connectivity& mesh, const UvSet& set, std::uint32_t polygon) {
    const std::uint32_t first = mesh.first_corner(polygon), count = mesh.corners_of(polygon);
    double area = 0.0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::int32_t a = set.corner_uvs[first + i];
        const std::int32_t b = set.corner_uvs[first + (i + 1) % count];
        if (a < 0 || b < 0)
            return 0.0;
        const Point p = point_of(set, static_cast<std::uint32_t>(a));
        const Point q = point_of(set, static_cast<std::uint32_t>(b));
        area += p.real() * q.imag() - q.real() * p.imag();
    }
    return area;
}

/// Moves shells together, shell by shell. Groups of shells that were moved together are led by one
/// of them.
class Mover {
public:
    Mover(const Mesh& mesh, UvSet& set, const UvShells& shells,
          const std::vector<std::uint32_t>& edges)
        : mesh_(mesh.connectivity()), set_(set), shells_(shells), groups_(shells.count) {
        for (std::uint32_t shell = 0; shell < shells.count; ++shell)
            groups_[shell].leader = shell;
        for (std::uint32_t uv = 0; uv < shells.of_uv.size(); ++uv)
            if (shells.of_uv[uv] != k_no_shell)
                groups_[shells.of_uv[uv]].uvs.push_back(uv);
        for (std::uint32_t polygon = 0; polygon < shells.of_polygon.size(); ++polygon) {
            if (shells.of_polygon[polygon] == k_no_shell)
                continue;
            Group& group = groups_[shells.of_polygon[polygon]];
            ++group.polygons;
            group.area += signed_area(mesh_, set, polygon);
        }
        for (const std::uint32_t edge : edges)
            for (std::uint32_t side = 0; side < 2; ++side)
                groups_[shell_at(edge, side)].edges.push_back(edge);
    }

    /// Brings the shells at both sides of an edge together. Returns false if neither may move.
    bool join(std::uint32_t edge, std::uint32_t most_polygons) {
        std::uint32_t moving = leader(shell_at(edge, 0)), resting = leader(shell_at(edge, 1));
        if (moving == resting)
            return true;
        if (groups_[moving].polygons > groups_[resting].polygons ||
            (groups_[moving].polygons == groups_[resting].polygons && moving < resting))
            std::swap(moving, resting);
        if (groups_[moving].polygons > most_polygons)
            return false;
        fit(moving, resting);
        merge(groups_[moving], groups_[resting], resting);
        return true;
    }

private:
    struct Group {
        std::uint32_t leader = 0;
        std::uint32_t polygons = 0;
        double area = 0.0;                ///< twice the signed area
        std::vector<std::uint32_t> uvs;   ///< all UVs, if the group leads itself
        std::vector<std::uint32_t> edges; ///< to sew, at its border
    };

    std::uint32_t shell_at(std::uint32_t edge, std::uint32_t side) const {
        return shells_.of_polygon[mesh_.edge_polygons(edge)[side]];
    }
    std::uint32_t leader(std::uint32_t shell) {
        while (groups_[shell].leader != shell)
            shell = groups_[shell].leader = groups_[groups_[shell].leader].leader;
        return shell;
    }

    void fit(std::uint32_t moving, std::uint32_t resting) {
        const bool turns_over = groups_[moving].area * groups_[resting].area < 0.0;
        const auto oriented = [&](Point p) { return turns_over ? Point(-p.real(), p.imag()) : p; };
        std::vector<std::pair<Point, Point>> pairs; // of a place and where it should be
        for (const std::uint32_t edge : groups_[moving].edges) {
            for (std::uint32_t side = 0; side < 2; ++side) {
                if (leader(shell_at(edge, side)) != moving ||
                    leader(shell_at(edge, 1 - side)) != resting)
                    continue;
                const IndexSpan polygons = mesh_.edge_polygons(edge);
                for (const std::uint32_t vertex :
                     {mesh_.edge(edge).first, mesh_.edge(edge).second}) {
                    const std::int32_t from = uv_at(mesh_, set_, polygons[side], vertex);
                    const std::int32_t to = uv_at(mesh_, set_, polygons[1 - side], vertex);
                    if (from >= 0 && to >= 0)
                        pairs.emplace_back(
                            oriented(point_of(set_, static_cast<std::uint32_t>(from))),
                            point_of(set_, static_cast<std::uint32_t>(to)));
                }
            }
        }
        if (pairs.empty())
            return;
        Point from_centre, to_centre, product;
        double square = 0.0;
        for (const auto& [from, to] : pairs) {
            from_centre += from / static_cast<double>(pairs.size());
            to_centre += to / static_cast<double>(pairs.size());
        }
        for (const auto& [from, to] : pairs) {
            product += std::conj(from - from_centre) * (to - to_centre);
            square += std::norm(from - from_centre);
        }
        const bool is_turned = square > 0.0 && std::norm(product) > 0.0;
        const Point turn = is_turned ? product / square : Point(1.0);
        for (const std::uint32_t uv : groups_[moving].uvs)
            put(set_, uv, to_centre + turn * (oriented(point_of(set_, uv)) - from_centre));
    }

    static void merge(Group& moved, Group& into, std::uint32_t leader) {
        moved.leader = leader;
        into.polygons += moved.polygons;
        into.uvs.insert(into.uvs.end(), moved.uvs.begin(), moved.uvs.end());
        into.edges.insert(into.edges.end(), moved.edges.begin(), moved.edges.end());
        moved.uvs = {};
        moved.edges = {};
    }

    const Connectivity& mesh_;
    UvSet& set_;
    const UvShells& shells_;
    std::vector<Group> groups_;
};

/// The smallest box around UVs with finite coordinates.
struct Box {
    std::array<double, 2> low = {std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::infinity()};
    std::array<double, 2> high = {-low[0], -low[1]};

    void add(const Point& p) {
        const double at[2] = {p.real(), p.imag()};
        for (size_t k = 0; k < 2 && std::isfinite(at[0]) && std::isfinite(at[1]); ++k) {
            low[k] = std::min(low[k], at[k]);
            high[k] = std::max(high[k], at[k]);
        }
    }
    double size(size_t k) const { return high[k] - low[k]; }
};

void fill_unit_square(UvSet& set, const std::vector<std::uint32_t>& uvs,
                      const UvNormalization& how) {
    Box box;
    for (const std::uint32_t uv : uvs)
        box.add(point_of(set, uv));
    const double longer = std::max(box.size(0), box.size(1));
    double scale[2], shift[2];
    for (size_t k = 0; k < 2; ++k) {
        const double size =
            how.keeps_aspect && how.direction == UvNormalization::both ? longer : box.size(k);
        scale[k] = size > 0.0 ? 1.0 / size : 1.0;
        shift[k] = how.keeps_aspect && how.is_centred ? (1.0 - box.size(k) * scale[k]) / 2.0 : 0.0;
    }
    for (const std::uint32_t uv : uvs) {
        const Point p = point_of(set, uv);
        if (!std::isfinite(p.real()) || !std::isfinite(p.imag()))
            continue;
        const double u = (p.real() - box.low[0]) * scale[0] + shift[0];
        const double v = (p.imag() - box.low[1]) * scale[1] + shift[1];
        put(set, uv,
            {how.direction == UvNormalization::v ? p.real() : u,
             how.direction == UvNormalization::u ? p.imag() : v});
    }
}

/// Gives the corners of a polygon UVs that no other polygon has. Returns them.
std::vector<std::uint32_t> free_polygon(const Connectivity& mesh, UvSet& set, std::uint32_t polygon,
                                        std::vector<std::uint32_t>& uses) {
    std::vector<std::uint32_t> uvs;
    for (std::uint32_t i = 0; i < mesh.corners_of(polygon); ++i) {
        std::int32_t& uv = set.corner_uvs[mesh.first_corner(polygon) + i];
        if (uv < 0)
            continue;
        const auto old = static_cast<size_t>(uv);
        if (uses[old] > 1) {
            --uses[old];
            uv = static_cast<std::int32_t>(set.u.size());
            set.u.push_back(set.u[old]);
            set.v.push_back(set.v[old]);
            uses.push_back(1);
        }
        uvs.push_back(static_cast<std::uint32_t>(uv));
    }
    return uvs;
}

/// The polygons that have each UV, once per corner.
class UvPolygons {
public:
    UvPolygons(const Connectivity& mesh, const UvSet& uvs) : begin_(uvs.u.size() + 1) {
        for (const std::int32_t uv : uvs.corner_uvs)
            if (uv >= 0)
                ++begin_[static_cast<size_t>(uv) + 1];
        for (size_t i = 1; i < begin_.size(); ++i)
            begin_[i] += begin_[i - 1];
        polygons_.resize(begin_.back());
        std::vector<std::uint32_t> next = begin_;
        for (std::uint32_t corner = 0; corner < uvs.corner_uvs.size(); ++corner)
            if (uvs.corner_uvs[corner] >= 0)
                polygons_[next[static_cast<size_t>(uvs.corner_uvs[corner])]++] =
                    mesh.corner_polygon(corner);
    }
    IndexSpan of(size_t uv) const {
        return IndexSpan(polygons_.data() + begin_[uv], polygons_.data() + begin_[uv + 1]);
    }

private:
    std::vector<std::uint32_t> begin_, polygons_;
};

} // namespace

UvShells uv_shells(const Mesh& mesh, std::uint32_t set) {
    const Connectivity& polygons = mesh.connectivity();
    const UvSet& uvs = mesh.uv_set(set);
    const UvPolygons by_uv(polygons, uvs);
    UvShells shells;
    shells.of_uv.assign(uvs.u.size(), k_no_shell);
    shells.of_polygon.assign(polygons.polygon_count(), k_no_shell);
    std::vector<std::uint32_t> pending;
    for (std::uint32_t start = 0; start < polygons.polygon_count(); ++start) {
        if (shells.of_polygon[start] != k_no_shell)
            continue;
        bool is_mapped = false;
        for (pending = {start}; !pending.empty();) {
            const std::uint32_t polygon = pending.back();
            pending.pop_back();
            for (std::uint32_t i = 0; i < polygons.corners_of(polygon); ++i) {
                const std::int32_t uv = uvs.corner_uvs[polygons.first_corner(polygon) + i];
                if (uv < 0 || shells.of_uv[static_cast<size_t>(uv)] != k_no_shell)
                    continue;
                is_mapped = true;
                shells.of_uv[static_cast<size_t>(uv)] = shells.count;
                for (const std::uint32_t owner : by_uv.of(static_cast<size_t>(uv)))
                    if (shells.of_polygon[owner] == k_no_shell) {
                        shells.of_polygon[owner] = shells.count;
                        pending.push_back(owner);
                    }
            }
        }
        shells.count += is_mapped;
    }
    return shells;
}

std::uint32_t move_and_sew_uvs(Mesh& mesh, std::uint32_t set,
                               const std::vector<std::uint32_t>& edges,
                               std::uint32_t most_polygons) {
    const Connectivity& polygons = mesh.connectivity();
    const UvShells shells = uv_shells(mesh, set);
    const auto is_between_mapped = [&](std::uint32_t edge) {
        if (edge >= polygons.edge_count() || polygons.edge_polygons(edge).size() != 2)
            return false;
        const IndexSpan sides = polygons.edge_polygons(edge);
        return shells.of_polygon[sides[0]] != k_no_shell &&
               shells.of_polygon[sides[1]] != k_no_shell;
    };
    std::vector<std::uint32_t> sewable, sewn;
    std::copy_if(edges.begin(), edges.end(), std::back_inserter(sewable), is_between_mapped);
    Mover mover(mesh, mesh.edit_uv_set(set), shells, sewable);
    for (const std::uint32_t edge : sewable)
        if (mover.join(edge, most_polygons))
            sewn.push_back(edge);
    return sew_uvs(mesh, set, sewn);
}

void normalize_uvs(Mesh& mesh, std::uint32_t set, const std::vector<std::uint32_t>& polygons,
                   const UvNormalization& how) {
    const Connectivity& connectivity = mesh.connectivity();
    UvSet& uvs = mesh.edit_uv_set(set);
    std::vector<std::uint32_t> uses(uvs.u.size());
    for (const std::int32_t uv : uvs.corner_uvs)
        if (uv >= 0)
            ++uses[static_cast<size_t>(uv)];
    std::vector<std::uint32_t> all;
    for (const std::uint32_t polygon : polygons) {
        if (polygon >= connectivity.polygon_count())
            continue;
        if (how.each_polygon) {
            fill_unit_square(uvs, free_polygon(connectivity, uvs, polygon, uses), how);
            continue;
        }
        for (std::uint32_t i = 0; i < connectivity.corners_of(polygon); ++i) {
            const std::int32_t uv = uvs.corner_uvs[connectivity.first_corner(polygon) + i];
            if (uv >= 0)
                all.push_back(static_cast<std::uint32_t>(uv));
        }
    }
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    if (!all.empty())
        fill_unit_square(uvs, all, how);
}

void project_uvs(Mesh& mesh, std::uint32_t set) {
    const std::vector<Float3>& points = mesh.points();
    const auto at = [&](size_t i, size_t axis) {
        const Float3& p = points[i];
        return static_cast<double>(axis == 0 ? p.x : axis == 1 ? p.y : p.z);
    };
    std::array<double, 3> low = {}, size = {};
    for (size_t axis = 0; axis < 3 && !points.empty(); ++axis) {
        double high = low[axis] = at(0, axis);
        for (size_t i = 1; i < points.size(); ++i) {
            low[axis] = std::min(low[axis], at(i, axis));
            high = std::max(high, at(i, axis));
        }
        size[axis] = high - low[axis];
    }
    const auto shortest =
        static_cast<size_t>(std::min_element(size.begin(), size.end()) - size.begin());
    const size_t axes[2] = {shortest == 0 ? size_t(1) : 0, shortest == 2 ? size_t(1) : 2};
    const double longest = *std::max_element(size.begin(), size.end());
    const double scale = longest > 0.0 ? 1.0 / longest : 1.0;
    UvSet& uvs = mesh.edit_uv_set(set);
    uvs.u.resize(points.size());
    uvs.v.resize(points.size());
    for (size_t i = 0; i < points.size(); ++i) {
        uvs.u[i] = static_cast<float>((at(i, axes[0]) - low[axes[0]]) * scale);
        uvs.v[i] = static_cast<float>((at(i, axes[1]) - low[axes[1]]) * scale);
    }
    for (std::uint32_t corner = 0; corner < uvs.corner_uvs.size(); ++corner)
        uvs.corner_uvs[corner] =
            static_cast<std::int32_t>(mesh.connectivity().corner_vertex(corner));
}

} // namespace host
