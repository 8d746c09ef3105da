#include "atlas/geometry/order.h"

#include <algorithm>
#include <array>

namespace tessora::atlas {
namespace {

/// Values that differ by less than this share count as equal, so that rounding decides nothing.
constexpr double k_tolerance = 1e-5;

class Orderer {
public:
    Orderer(const Surface& s, const std::vector<uint32_t>& kept)
        : s_(s), kept_(kept), seen_(s.face_count, 0) {}

    std::vector<uint32_t> run() {
        collect_components();
        for (Component& c : components_)
            c.start = start_of(c);
        std::stable_sort(
            components_.begin(), components_.end(), [&](const Component& a, const Component& b) {
                return a.area != b.area ? a.area > b.area : lies_before(s_, a.start, b.start);
            });
        std::vector<uint32_t> order;
        order.reserve(kept_.size());
        for (const Component& c : components_)
            walk(c.start, order);
        return order;
    }

private:
    struct Component {
        uint32_t begin, end; ///< in faces_
        float area;          ///< single precision: components alike are equal in spite of rounding
        Vec3 centre;
        uint32_t start; ///< the corner at which its walk begins
    };

    void collect_components() {
        for (uint32_t t : kept_) {
            if (seen_[t])
                continue;
            const uint32_t begin = uint32_t(faces_.size());
            walk(3 * t, faces_);
            Vec3 sum;
            double area = 0;
            for (uint32_t i = begin; i < faces_.size(); ++i) {
                const uint32_t* v = &s_.vertex[3 * size_t(faces_[i])];
                const double a = s_.frame[faces_[i]].area();
                area += a;
                sum = sum + (s_.position[v[0]] + s_.position[v[1]] + s_.position[v[2]]) * (a / 3);
            }
            components_.push_back(
                {begin, uint32_t(faces_.size()), float(area), sum * (1 / area), k_none});
        }
        seen_.assign(seen_.size(), 0);
    }

    /// Appends the triangles connected to that of a corner, breadth first, each entered over the
    /// edge to the one before it and left over its edges in turn.
    void walk(uint32_t corner, std::vector<uint32_t>& order) {
        entries_.assign(1, corner);
        seen_[corner / 3] = 1;
        for (size_t i = 0; i < entries_.size(); ++i) {
            const uint32_t entry = entries_[i];
            order.push_back(entry / 3);
            for (uint32_t h : {entry, next_corner(entry), previous_corner(entry)}) {
                const uint32_t mate = s_.mate[h];
                if (mate == k_none || seen_[mate / 3])
                    continue;
                seen_[mate / 3] = 1;
                entries_.push_back(mate);
            }
        }
    }

    /// The corner farthest from the centre; of several there, that of the largest triangle, with
    /// the longest edge; of several of these the first in space.
    uint32_t start_of(const Component& c) {
        corners_.clear();
        for (uint32_t i = c.begin; i < c.end; ++i)
            for (uint32_t h = 3 * faces_[i]; h < 3 * faces_[i] + 3; ++h)
                corners_.push_back(h);
        for (const Measure measure : {Measure::distance, Measure::area, Measure::edge})
            keep_largest(measure, c.centre);
        return *std::min_element(corners_.begin(), corners_.end(),
                                 [&](uint32_t a, uint32_t b) { return lies_before(s_, a, b); });
    }

    enum class Measure { distance, area, edge };
    double measured(Measure measure, uint32_t corner, Vec3 centre) const {
        if (measure == Measure::area)
            return s_.frame[corner / 3].area();
        if (measure == Measure::edge)
            return s_.edge_length(corner);
        const Vec3 p = s_.position[s_.vertex[corner]] - centre;
        return dot(p, p);
    }

    /// Leaves of the corners those where the measure is the largest, or about equal to it.
    void keep_largest(Measure measure, Vec3 centre) {
        double largest = 0;
        for (uint32_t corner : corners_)
            largest = std::max(largest, measured(measure, corner, centre));
        size_t kept = 0;
        for (uint32_t corner : corners_)
            if (!(measured(measure, corner, centre) * (1 + k_tolerance) < largest))
                corners_[kept++] = corner;
        corners_.resize(kept);
    }

    const Surface& s_;
    const std::vector<uint32_t>& kept_;
    std::vector<uint8_t> seen_; ///< per triangle, in the present walk over all
    std::vector<uint32_t> faces_, entries_, corners_;
    std::vector<Component> components_;
};

} // namespace

bool lies_before(const Surface& s, uint32_t a, uint32_t b) {
    const auto place = [&](uint32_t h) {
        const Vec3 p = s.position[s.vertex[h]], q = s.position[s.vertex[next_corner(h)]];
        return std::array<double, 6>{p.x, p.y, p.z, q.x, q.y, q.z};
    };
    return place(a) < place(b);
}

std::vector<uint32_t> order_by_shape(const Surface& surface, const std::vector<uint32_t>& kept) {
    return Orderer(surface, kept).run();
}

} // namespace tessora::atlas
