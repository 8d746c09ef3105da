#include "atlas/charts/clusters.h"

#include "atlas/geometry/buckets.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

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
    /// Up to where deviation() may grow: interpolated, in the inverse, by the mean hardness.
    double max_deviation() const {
        const double hardness = hard_area / area;
        return 1 / ((1 - hardness) / k_max_smooth_deviation + hardness / k_max_hard_deviation);
    }
    /// Priority of merging; `shape` is 1 for a flat disk and grows with an irregular outline.
    double cost(double deviation) const {
        const double shape = perimeter * perimeter / (12.566370614359172 * area);
        return (deviation + 0.002) * shape * shape * shape;
    }
};

struct Neighbour {
    uint32_t id;
    float least_cost; ///< in the list of the later region: a lower bound of the cost of merging
    double shared;    ///< length of the common border
};

/// A pair of regions to merge.
struct Candidate {
    double cost;
    uint32_t a, b; ///< a < b
    bool operator<(const Candidate& o) const {
        if (cost != o.cost)
            return cost < o.cost;
        return a != o.a ? a < o.a : b < o.b;
    }
};

/// A heap with four children per node, which takes half the cache misses of a binary one.
class CandidateHeap {
public:
    bool empty() const { return items_.empty(); }
    const Candidate& top() const { return items_.front(); }
    /// Adds without restoring the order, for many at once; order() must follow.
    void add(const Candidate& c) { items_.push_back(c); }
    void order() {
        for (size_t i = items_.size(); i-- > 0;)
            sink(i, items_[i]);
    }
    void push(const Candidate& c) {
        size_t i = items_.size();
        items_.push_back(c);
        for (; i > 0 && c < items_[(i - 1) / 4]; i = (i - 1) / 4)
            items_[i] = items_[(i - 1) / 4];
        items_[i] = c;
    }
    void pop() {
        const Candidate last = items_.back();
        items_.pop_back();
        if (!items_.empty())
            sink(0, last);
    }
    /// Puts `c` in the place of the top.
    void replace_top(const Candidate& c) { sink(0, c); }

private:
    /// Puts `c` at place i or below.
    void sink(size_t i, const Candidate c) {
        for (;;) {
            const size_t first = 4 * i + 1, end = std::min(first + 4, items_.size());
            if (first >= end)
                break;
            size_t least = first;
            for (size_t child = first + 1; child < end; ++child)
                if (items_[child] < items_[least])
                    least = child;
            if (!(items_[least] < c))
                break;
            items_[i] = items_[least];
            i = least;
        }
        items_[i] = c;
    }

    std::vector<Candidate> items_;
};

/// Lists of neighbours, sorted by region, end to end in one array: a list of its own per region
/// takes more time in the allocator than merging does.
class NeighbourLists {
public:
    struct List {
        size_t begin = 0;
        uint32_t size = 0;
    };
    void resize(uint32_t slots) { lists_.resize(slots); }
    Neighbour* begin(uint32_t slot) { return pool_.data() + lists_[slot].begin; }
    Neighbour* end(uint32_t slot) { return begin(slot) + lists_[slot].size; }
    uint32_t size(uint32_t slot) const { return lists_[slot].size; }

    /// Makes room for that many and what replace() may add to them.
    void reserve(size_t neighbours) { pool_.reserve(neighbours + neighbours / 4 + k_slack); }
    /// Appends a neighbour to the list that was begun last.
    void begin_list(uint32_t slot) { lists_[slot] = {pool_.size(), 0}; }
    void append(uint32_t slot, const Neighbour& n) {
        pool_.push_back(n);
        ++lists_[slot].size;
        ++live_;
    }
    void shorten(uint32_t slot, uint32_t size) {
        live_ -= lists_[slot].size - size;
        lists_[slot].size = size;
    }
    /// Replaces a list, in place if the new one is not longer.
    void replace(uint32_t slot, const std::vector<Neighbour>& list) {
        if (list.size() > lists_[slot].size) {
            if (pool_.size() + list.size() > room())
                compact();
            lists_[slot].begin = pool_.size();
            pool_.resize(pool_.size() + list.size());
        }
        live_ += list.size();
        live_ -= lists_[slot].size;
        lists_[slot].size = uint32_t(list.size());
        std::copy(list.begin(), list.end(), begin(slot));
    }

private:
    static constexpr size_t k_slack = 4096;

    /// How large the array may become before the gaps in it are closed.
    size_t room() const { return live_ + live_ / 4 + k_slack; }

    void compact() {
        std::vector<Neighbour> pool;
        pool.reserve(room());
        for (List& list : lists_) {
            const auto first = pool_.begin() + std::ptrdiff_t(list.begin);
            list.begin = pool.size();
            pool.insert(pool.end(), first, first + list.size);
        }
        pool_ = std::move(pool);
    }

    std::vector<Neighbour> pool_;
    std::vector<List> lists_;
    size_t live_ = 0; ///< neighbours in all lists
};

class TreeBuilder {
public:
    TreeBuilder(const Surface& s, const Components& planes, const ClusterOptions& options)
        : s_(s), options_(options) {
        // On few triangles they save little time, and cost charts where triangles are large.
        constexpr uint32_t k_few_faces = 16000;
        if (options.seed_groups && s.face_count > k_few_faces)
            group_planes(planes);
        else
            leaf_of_face_ = planes.of_face, leaves_ = planes.count;
    }
    bool build(ProgressMeter& progress, ClusterTree& tree) {
        constexpr size_t k_merges_per_report = 64;
        collect_leaves();
        while (!heap_.empty()) {
            Candidate c = heap_.top();
            if (is_alive(c.b) && !is_alive(c.a) && find_best(c.b, c)) {
                heap_.replace_top(c);
                continue;
            }
            heap_.pop();
            if (!is_alive(c.a) || !is_alive(c.b))
                continue;
            merge(c.a, c.b);
            if (unions_.size() % k_merges_per_report == 0 &&
                !progress.advance(double(unions_.size()) / double(leaves_)))
                return false;
        }
        moments_ = {};
        neighbours_ = {};
        heap_ = {};
        tree = finish();
        return true;
    }

private:
    bool is_alive(uint32_t region) const { return slot_[region] != k_none; }
    void group_planes(const Components& planes);
    void collect_leaves();
    void collect_neighbours();
    bool weigh(uint32_t a, uint32_t b, double shared, Candidate& candidate) const;
    bool weigh_all(uint32_t b, Candidate& best);
    bool find_best(uint32_t b, Candidate& best);
    double join_lists(uint32_t a, uint32_t b);
    void merge(uint32_t a, uint32_t b);
    ClusterTree finish() const;

    const Surface& s_;
    const ClusterOptions options_;
    std::vector<uint32_t> leaf_of_face_;
    uint32_t leaves_ = 0;
    /// Per region: its place in moments_ and neighbours_, k_none once it is merged. A union takes
    /// the place of its first child.
    std::vector<uint32_t> slot_;
    std::vector<Moments> moments_;
    NeighbourLists neighbours_;
    std::vector<Neighbour> joined_; ///< workspace of merge
    struct Union {
        uint32_t left, right;
        Vec3 normal; ///< sum of area times normal
    };
    std::vector<Union> unions_; ///< entry i: region leaves_ + i
    /// Per region, of its pairs with earlier ones, that which was the best when it was looked for.
    CandidateHeap heap_;
};

/// About 0.618 of `count`, without a common divisor: multiples of it, modulo `count`, reach
/// everything, and successive ones lie far apart.
uint32_t coprime_stride(uint32_t count) {
    uint32_t stride = uint32_t(0.6180339887498949 * count);
    while (std::gcd(stride, count) > 1)
        ++stride;
    return std::max(1u, stride);
}

/// Makes the leaves: groups of planes that grow breadth-first around seed triangles.
void TreeBuilder::group_planes(const Components& planes) {
    constexpr uint32_t k_max_faces = 16;
    constexpr double k_cosine = 0.9659258262890683; // of 15 degrees, to the seed's normal
    const Buckets faces(planes.of_face, planes.count);
    leaf_of_face_.assign(s_.face_count, k_none);
    std::vector<uint32_t> group;
    const auto take = [&](uint32_t plane) {
        for (uint32_t i = faces.begin[plane]; i < faces.begin[plane + 1]; ++i) {
            leaf_of_face_[faces.item[i]] = leaves_;
            group.push_back(faces.item[i]);
        }
    };
    // Seeds far apart make rounder groups than neighbours in a row do.
    const uint32_t stride = coprime_stride(s_.face_count);
    for (uint32_t i = 0, t = 0; i < s_.face_count; ++i, t = (t + stride) % s_.face_count) {
        if (leaf_of_face_[t] != k_none)
            continue;
        group.clear();
        take(planes.of_face[t]);
        for (size_t i = 0; i < group.size() && group.size() < k_max_faces; ++i)
            for (uint32_t h = 3 * group[i]; h < 3 * group[i] + 3; ++h) {
                if (s_.mate[h] == k_none || group.size() >= k_max_faces)
                    continue;
                const uint32_t other = s_.mate[h] / 3;
                if (leaf_of_face_[other] == k_none &&
                    dot(s_.normal[other], s_.normal[t]) >= k_cosine)
                    take(planes.of_face[other]);
            }
        ++leaves_;
    }
}

void TreeBuilder::collect_leaves() {
    moments_.assign(leaves_, Moments{});
    slot_.resize(leaves_);
    for (uint32_t leaf = 0; leaf < leaves_; ++leaf)
        slot_[leaf] = leaf;
    for (uint32_t t = 0; t < s_.face_count; ++t)
        moments_[leaf_of_face_[t]].add_face(s_.frame[t].area(), s_.normal[t],
                                            double(options_.hardness[t]));
    collect_neighbours();
    Candidate best;
    for (uint32_t leaf = 0; leaf < leaves_; ++leaf)
        if (weigh_all(leaf, best))
            heap_.add(best);
    heap_.order();
}

/// Sums up the perimeters and the borders between leaves.
void TreeBuilder::collect_neighbours() {
    const Buckets faces(leaf_of_face_, leaves_);
    neighbours_.resize(leaves_);
    neighbours_.reserve(3 * size_t(s_.face_count));
    for (uint32_t leaf = 0; leaf < leaves_; ++leaf) {
        joined_.clear();
        for (uint32_t i = faces.begin[leaf]; i < faces.begin[leaf + 1]; ++i)
            for (uint32_t h = 3 * faces.item[i]; h < 3 * faces.item[i] + 3; ++h) {
                const uint32_t other =
                    s_.mate[h] == k_none ? k_none : leaf_of_face_[s_.mate[h] / 3];
                if (other == leaf)
                    continue;
                const double length = s_.edge_length(h);
                moments_[leaf].perimeter += length;
                if (other != k_none)
                    joined_.push_back({other, 0, length});
            }
        std::stable_sort(joined_.begin(), joined_.end(),
                         [](const Neighbour& a, const Neighbour& b) { return a.id < b.id; });
        neighbours_.begin_list(leaf);
        for (const Neighbour& n : joined_)
            if (neighbours_.size(leaf) > 0 && (neighbours_.end(leaf) - 1)->id == n.id)
                (neighbours_.end(leaf) - 1)->shared += n.shared;
            else
                neighbours_.append(leaf, n);
    }
}

/// Sets the cost of merging two regions. False if their union bends too much.
bool TreeBuilder::weigh(uint32_t a, uint32_t b, double shared, Candidate& candidate) const {
    Moments both = moments_[slot_[a]];
    both.add(moments_[slot_[b]]);
    both.perimeter -= 2 * shared;
    const double deviation = both.deviation();
    if (!(deviation <= both.max_deviation()))
        return false;
    candidate = {both.cost(deviation), a, b};
    return true;
}

/// Weighs all pairs of a region with earlier ones. False if none may be merged.
bool TreeBuilder::weigh_all(uint32_t b, Candidate& best) {
    constexpr float k_never = std::numeric_limits<float>::infinity();
    bool found = false;
    Candidate candidate;
    Neighbour* const end = neighbours_.end(slot_[b]);
    for (Neighbour* n = neighbours_.begin(slot_[b]); n != end && n->id < b; ++n) {
        n->least_cost = k_never;
        if (!weigh(n->id, b, n->shared, candidate))
            continue;
        n->least_cost = std::nextafter(float(candidate.cost), 0.0f);
        if (!found || candidate < best)
            best = candidate;
        found = true;
    }
    return found;
}

/// The best pair of a region with earlier ones that are left; the lists hold no others. False if
/// there is none.
bool TreeBuilder::find_best(uint32_t b, Candidate& best) {
    best.cost = std::numeric_limits<double>::infinity();
    Candidate candidate;
    const Neighbour* const end = neighbours_.end(slot_[b]);
    for (const Neighbour* n = neighbours_.begin(slot_[b]); n != end && n->id < b; ++n)
        if (double(n->least_cost) <= best.cost && weigh(n->id, b, n->shared, candidate) &&
            candidate < best)
            best = candidate;
    return best.cost < std::numeric_limits<double>::infinity();
}

/// Merges two lists of neighbours into joined_, without the two regions themselves; returns the
/// length of the border between them.
double TreeBuilder::join_lists(uint32_t a, uint32_t b) {
    double shared = 0;
    joined_.clear();
    const Neighbour *i = neighbours_.begin(slot_[a]), *j = neighbours_.begin(slot_[b]);
    const Neighbour *const i_end = neighbours_.end(slot_[a]), *const j_end =
                                                                  neighbours_.end(slot_[b]);
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
            joined_.push_back(n);
    }
    return shared;
}

void TreeBuilder::merge(uint32_t a, uint32_t b) {
    const uint32_t c = uint32_t(slot_.size());
    const double shared = join_lists(a, b);
    for (const Neighbour& n : joined_) { // their places in memory are far apart
        const char* const moments = reinterpret_cast<const char*>(&moments_[slot_[n.id]]);
        __builtin_prefetch(moments);
        __builtin_prefetch(moments + 64);
        __builtin_prefetch(neighbours_.begin(slot_[n.id]));
    }
    const uint32_t slot = slot_[a];
    moments_[slot].add(moments_[slot_[b]]);
    moments_[slot].perimeter -= 2 * shared;
    neighbours_.shorten(slot_[b], 0);
    neighbours_.replace(slot, joined_);
    slot_[a] = slot_[b] = k_none;
    slot_.push_back(slot);
    unions_.push_back({a, b, moments_[slot].normal});
    for (const Neighbour& n : joined_) {
        const uint32_t other = slot_[n.id];
        Neighbour* const end =
            std::remove_if(neighbours_.begin(other), neighbours_.end(other),
                           [=](const Neighbour& x) { return x.id == a || x.id == b; });
        *end = {c, 0, n.shared}; // at least one was removed
        neighbours_.shorten(other, uint32_t(end + 1 - neighbours_.begin(other)));
    }
    Candidate best;
    if (weigh_all(c, best))
        heap_.push(best);
}

/// Orders the triangles so that those of every region are consecutive.
ClusterTree TreeBuilder::finish() const {
    ClusterTree tree;
    const Buckets faces(leaf_of_face_, leaves_);
    const uint32_t count = uint32_t(slot_.size());
    tree.regions.resize(count);
    tree.faces.reserve(s_.face_count);
    std::vector<uint32_t> stack;
    for (uint32_t root = 0; root < count; ++root) {
        if (!is_alive(root))
            continue;
        tree.roots.push_back(root);
        stack.push_back(root);
        while (!stack.empty()) {
            const uint32_t n = stack.back();
            ClusterTree::Region& region = tree.regions[n];
            region.left = region.right = ClusterTree::k_no_child;
            region.begin = uint32_t(tree.faces.size());
            stack.pop_back();
            if (n >= leaves_) {
                region.left = unions_[n - leaves_].left;
                region.right = unions_[n - leaves_].right;
                region.normal = unions_[n - leaves_].normal;
                stack.push_back(region.right);
                stack.push_back(region.left);
            } else {
                for (uint32_t i = faces.begin[n]; i < faces.begin[n + 1]; ++i) {
                    const uint32_t t = faces.item[i];
                    tree.faces.push_back(t);
                    region.normal = region.normal + s_.normal[t] * s_.frame[t].area();
                }
                region.end = uint32_t(tree.faces.size());
            }
        }
    }
    for (uint32_t n = leaves_; n < count; ++n) // children precede their parents
        tree.regions[n].end = tree.regions[tree.regions[n].right].end;
    return tree;
}

} // namespace

bool build_cluster_tree(const Surface& surface, const Components& planes,
                        const ClusterOptions& options, ProgressMeter& progress, ClusterTree& tree) {
    return TreeBuilder(surface, planes, options).build(progress, tree);
}

} // namespace tessora::atlas
