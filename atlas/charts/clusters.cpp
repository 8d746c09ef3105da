#include "atlas/charts/clusters.h"

#include "atlas/geometry/buckets.h"

#include <algorithm>
#include <queue>

namespace tessora::atlas {
namespace {

/// Maximum deviation() of a region of hardness 0 and 1; docs/atlas.md, "Hard surfaces".
constexpr double k_max_smooth_deviation = 0.2;
constexpr double k_max_hard_deviation = 0.01;

/// Sums over the triangles of a region that determine its cost.
struct Moments {
    double area = 0, perimeter = 0;
    double hard_area = 0;                                  ///< sum of area times hardness
    Vec3 normal;                                           ///< sum of area times normal
    double xx = 0, xy = 0, xz = 0, yy = 0, yz = 0, zz = 0; ///< sum of area times n n^T

    void add_face(double a, Vec3 n, double hardness) {
        area += a;
        hard_area += a * hardness;
        normal = normal + n * a;
        xx += a * n.x * n.x;
        xy += a * n.x * n.y;
        xz += a * n.x * n.z;
        yy += a * n.y * n.y;
        yz += a * n.y * n.z;
        zz += a * n.z * n.z;
    }
    void add(const Moments& o) {
        area += o.area;
        perimeter += o.perimeter;
        hard_area += o.hard_area;
        normal = normal + o.normal;
        xx += o.xx;
        xy += o.xy;
        xz += o.xz;
        yy += o.yy;
        yz += o.yz;
        zz += o.zz;
    }
    /// Smallest eigenvalue of the covariance of the normals: Newton's method on the characteristic
    /// polynomial, starting below all roots, where it converges monotonically.
    double min_variance() const {
        const double w = 1 / area;
        const Vec3 m = normal * w;
        const double a = xx * w - m.x * m.x, b = yy * w - m.y * m.y, c = zz * w - m.z * m.z;
        const double d = xy * w - m.x * m.y, e = xz * w - m.x * m.z, f = yz * w - m.y * m.z;
        const double trace = a + b + c;
        const double minors = a * b - d * d + a * c - e * e + b * c - f * f;
        const double det = a * (b * c - f * f) - d * (d * c - f * e) + e * (d * f - b * e);
        double x = 0; // root of det - minors x + trace x^2 - x^3
        for (int i = 0; i < 6; ++i) {
            const double value = det + x * (-minors + x * (trace - x));
            const double slope = minors - x * (2 * trace - 3 * x);
            if (!(value > 0) || !(slope > 0))
                break;
            x += value / slope;
        }
        return x;
    }
    /// How far the region is from developable; 0 for a plane.
    double deviation() const {
        return 4 * min_variance() + 0.05 * std::max(0.0, 1 - length(normal) / area);
    }
    /// Priority of merging; `shape` is 1 for a flat disk and grows with an irregular outline.
    /// Up to where deviation() may grow: interpolated, in the inverse, by the mean hardness.
    double max_deviation() const {
        const double hardness = hard_area / area;
        return 1 / ((1 - hardness) / k_max_smooth_deviation + hardness / k_max_hard_deviation);
    }
    double cost(double deviation) const {
        const double shape = perimeter * perimeter / (12.566370614359172 * area);
        return (deviation + 0.002) * shape * shape * shape;
    }
};

struct Neighbour {
    uint32_t id;
    double shared; ///< length of the common border
};

/// A pair of regions to merge.
struct Candidate {
    double cost;
    uint32_t a, b;
    bool operator<(const Candidate& o) const { // std::priority_queue pops the largest
        if (cost != o.cost)
            return cost > o.cost;
        if (a != o.a)
            return a > o.a;
        return b > o.b;
    }
};

class TreeBuilder {
public:
    TreeBuilder(const Surface& s, const Atoms& atoms, const ClusterOptions& options)
        : s_(s), options_(options) {
        if (options.seed_groups)
            group_atoms(atoms);
        else
            leaf_of_face_ = atoms.of_face, leaves_ = atoms.count;
    }
    ClusterTree build() {
        collect_leaves();
        while (!queue_.empty()) {
            const Candidate c = queue_.top();
            queue_.pop();
            if (alive_[c.a] && alive_[c.b])
                merge(c.a, c.b);
        }
        return finish();
    }

private:
    void group_atoms(const Atoms& atoms);
    void collect_leaves();
    void consider(uint32_t a, uint32_t b, double shared);
    void merge(uint32_t a, uint32_t b);
    ClusterTree finish() const;

    const Surface& s_;
    const ClusterOptions options_;
    std::vector<uint32_t> leaf_of_face_;
    uint32_t leaves_ = 0;
    std::vector<Moments> moments_;
    std::vector<std::vector<Neighbour>> neighbours_; ///< sorted by id
    std::vector<uint8_t> alive_;
    std::vector<std::pair<uint32_t, uint32_t>>
        children_; ///< entry i: the children of region leaves_ + i
    std::priority_queue<Candidate> queue_;
};

/// Makes the leaves: groups of atoms that grow breadth-first around seed triangles.
void TreeBuilder::group_atoms(const Atoms& atoms) {
    constexpr uint32_t k_max_faces = 16;
    constexpr double k_cosine = 0.9659258262890683; // of 15 degrees, to the seed's normal
    const Buckets faces(atoms.of_face, atoms.count);
    leaf_of_face_.assign(s_.face_count, k_none);
    std::vector<uint32_t> group;
    const auto take = [&](uint32_t atom) {
        for (uint32_t i = faces.begin[atom]; i < faces.begin[atom + 1]; ++i) {
            leaf_of_face_[faces.item[i]] = leaves_;
            group.push_back(faces.item[i]);
        }
    };
    for (uint32_t t = 0; t < s_.face_count; ++t) {
        if (leaf_of_face_[t] != k_none)
            continue;
        group.clear();
        take(atoms.of_face[t]);
        for (size_t i = 0; i < group.size() && group.size() < k_max_faces; ++i)
            for (uint32_t h = 3 * group[i]; h < 3 * group[i] + 3; ++h) {
                if (s_.mate[h] == k_none || group.size() >= k_max_faces)
                    continue;
                const uint32_t other = s_.mate[h] / 3;
                if (leaf_of_face_[other] == k_none &&
                    dot(s_.normal[other], s_.normal[t]) >= k_cosine)
                    take(atoms.of_face[other]);
            }
        ++leaves_;
    }
}

void TreeBuilder::collect_leaves() {
    moments_.assign(leaves_, Moments{});
    neighbours_.assign(leaves_, {});
    alive_.assign(leaves_, 1);
    for (uint32_t h = 0; h < 3 * s_.face_count; ++h) {
        const uint32_t leaf = leaf_of_face_[h / 3];
        if (h % 3 == 0)
            moments_[leaf].add_face(s_.frame[h / 3].area(), s_.normal[h / 3],
                                    double(options_.hardness[h / 3]));
        const uint32_t other = s_.mate[h] == k_none ? k_none : leaf_of_face_[s_.mate[h] / 3];
        if (other == leaf)
            continue;
        const double length = s_.edge_length(h);
        moments_[leaf].perimeter += length;
        if (other != k_none)
            neighbours_[leaf].push_back({other, length});
    }
    for (auto& list : neighbours_) {
        std::stable_sort(list.begin(), list.end(),
                         [](const Neighbour& a, const Neighbour& b) { return a.id < b.id; });
        size_t kept = 0;
        for (const Neighbour& n : list)
            if (kept > 0 && list[kept - 1].id == n.id)
                list[kept - 1].shared += n.shared;
            else
                list[kept++] = n;
        list.resize(kept);
    }
    for (uint32_t a = 0; a < leaves_; ++a)
        for (const Neighbour& n : neighbours_[a])
            if (n.id > a)
                consider(a, n.id, n.shared);
}

void TreeBuilder::consider(uint32_t a, uint32_t b, double shared) {
    Moments both = moments_[a];
    both.add(moments_[b]);
    both.perimeter -= 2 * shared;
    const double deviation = both.deviation();
    if (deviation <= both.max_deviation())
        queue_.push({both.cost(deviation), a, b});
}

void TreeBuilder::merge(uint32_t a, uint32_t b) {
    const uint32_t c = uint32_t(moments_.size());
    std::vector<Neighbour> joined;
    joined.reserve(neighbours_[a].size() + neighbours_[b].size());
    double shared = 0;
    auto i = neighbours_[a].begin(), j = neighbours_[b].begin();
    const auto i_end = neighbours_[a].end(), j_end = neighbours_[b].end();
    while (i != i_end || j != j_end) {
        Neighbour n;
        if (j == j_end || (i != i_end && i->id < j->id))
            n = *i++;
        else if (i == i_end || j->id < i->id)
            n = *j++;
        else
            n = *i++, n.shared += (j++)->shared;
        if (n.id == a || n.id == b)
            shared = n.shared;
        else
            joined.push_back(n);
    }
    neighbours_[a] = {};
    neighbours_[b] = {};
    alive_[a] = alive_[b] = 0;
    alive_.push_back(1);
    children_.push_back({a, b});
    Moments both = moments_[a];
    both.add(moments_[b]);
    both.perimeter -= 2 * shared;
    moments_.push_back(both);
    for (const Neighbour& n : joined) {
        auto& list = neighbours_[n.id];
        list.erase(std::remove_if(list.begin(), list.end(),
                                  [=](const Neighbour& x) { return x.id == a || x.id == b; }),
                   list.end());
        list.push_back({c, n.shared});
        consider(n.id, c, n.shared);
    }
    neighbours_.push_back(std::move(joined));
}

/// Orders the triangles so that those of every region are consecutive.
ClusterTree TreeBuilder::finish() const {
    ClusterTree tree;
    const Buckets faces(leaf_of_face_, leaves_);
    const uint32_t count = uint32_t(moments_.size());
    tree.regions.resize(count);
    std::vector<uint32_t> stack;
    for (uint32_t root = 0; root < count; ++root) {
        if (!alive_[root])
            continue;
        tree.roots.push_back(root);
        stack.push_back(root);
        while (!stack.empty()) {
            const uint32_t n = stack.back();
            ClusterTree::Region& region = tree.regions[n];
            region.left = region.right = ClusterTree::k_no_child;
            region.begin = uint32_t(tree.faces.size());
            region.normal = moments_[n].normal;
            stack.pop_back();
            if (n >= leaves_) {
                region.left = children_[n - leaves_].first;
                region.right = children_[n - leaves_].second;
                stack.push_back(region.right);
                stack.push_back(region.left);
            } else {
                tree.faces.insert(tree.faces.end(), faces.item.begin() + faces.begin[n],
                                  faces.item.begin() + faces.begin[n + 1]);
                region.end = uint32_t(tree.faces.size());
            }
        }
    }
    for (uint32_t n = leaves_; n < count; ++n) // children precede their parents
        tree.regions[n].end = tree.regions[tree.regions[n].right].end;
    return tree;
}

} // namespace

ClusterTree build_cluster_tree(const Surface& surface, const Atoms& atoms,
                               const ClusterOptions& options) {
    return TreeBuilder(surface, atoms, options).build();
}

} // namespace tessora::atlas
