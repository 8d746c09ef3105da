#include "atlas/geometry/order.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Values that differ by less than this share count as equal, so that rounding decides nothing.
constexpr double k_tolerance = 1e-5;

/// -1, 0 or 1: a is smaller than, about equal to or larger than b. Both are positive or zero.
int compare(double a, double b) {
    return a > b * (1 + k_tolerance) ? 1 : b > a * (1 + k_tolerance) ? -1 : 0;
}

class Orderer {
public:
    Orderer(const Surface& s, const std::vector<uint32_t>& kept)
        : s_(s), kept_(kept), seen_(s.face_count, 0) {}

    std::vector<uint32_t> run() {
        collect_components();
        std::stable_sort(components_.begin(), components_.end(),
                         [](const Component& a, const Component& b) { return a.area > b.area; });
        std::vector<uint32_t> order;
        order.reserve(kept_.size());
        for (const Component& c : components_)
            walk(start_of(c), order);
        return order;
    }

private:
    struct Component {
        uint32_t begin, end; ///< in faces_
        float area;          ///< single precision: components alike are equal in spite of rounding
        Vec3 centre;
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
            components_.push_back({begin, uint32_t(faces_.size()), float(area), sum * (1 / area)});
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
    /// the longest edge.
    uint32_t start_of(const Component& c) const {
        uint32_t best = 3 * faces_[c.begin];
        double farthest = distance(best, c);
        for (uint32_t i = c.begin; i < c.end; ++i)
            for (uint32_t h = 3 * faces_[i]; h < 3 * faces_[i] + 3; ++h) {
                const double own = distance(h, c);
                const int order = compare(own, farthest);
                if (order > 0 || (order == 0 && is_larger(h, best))) {
                    best = h;
                    farthest = own;
                }
            }
        return best;
    }

    double distance(uint32_t corner, const Component& c) const {
        return length(s_.position[s_.vertex[corner]] - c.centre);
    }

    bool is_larger(uint32_t h, uint32_t other) const {
        if (const int order = compare(s_.frame[h / 3].area(), s_.frame[other / 3].area()))
            return order > 0;
        return compare(s_.edge_length(h), s_.edge_length(other)) > 0;
    }

    const Surface& s_;
    const std::vector<uint32_t>& kept_;
    std::vector<uint8_t> seen_; ///< per triangle, in the present walk over all
    std::vector<uint32_t> faces_, entries_;
    std::vector<Component> components_;
};

} // namespace

std::vector<uint32_t> order_by_shape(const Surface& surface, const std::vector<uint32_t>& kept) {
    return Orderer(surface, kept).run();
}

} // namespace tessora::atlas
