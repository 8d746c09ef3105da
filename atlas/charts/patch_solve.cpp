// The global solves of Patch: as-rigid-as-possible and Tutte.
#include "atlas/charts/patch.h"

#include <Eigen/SparseCholesky>
#include <algorithm>

namespace tessora::atlas {
namespace {

using Matrix = Eigen::SparseMatrix<double, Eigen::ColMajor, int>;
using Columns = Eigen::Matrix<double, Eigen::Dynamic, 2>;

/// Numbers the free vertices 0, 1, ... as unknowns; the others get -1. Returns their count.
int number_free(const std::vector<uint8_t>& pinned, std::vector<int>& number) {
    int count = 0;
    number.resize(pinned.size());
    for (size_t v = 0; v < pinned.size(); ++v) {
        number[v] = pinned[v] ? -1 : count;
        count += pinned[v] ? 0 : 1;
    }
    return count;
}

/// A weighted graph Laplacian restricted to the free vertices, assembled edge by edge and factored.
class Laplacian {
public:
    explicit Laplacian(size_t edges) { entries_.reserve(3 * edges); }
    /// a and b are the numbers of the edge's ends, -1 for pinned ones.
    void add_edge(int a, int b, double weight) {
        if (a >= 0)
            entries_.emplace_back(a, a, weight);
        if (b >= 0)
            entries_.emplace_back(b, b, weight);
        if (a >= 0 && b >= 0)
            entries_.emplace_back(std::max(a, b), std::min(a, b), -weight);
    }
    /// False if the matrix cannot be factored.
    bool factor(int count) {
        Matrix matrix(count, count);
        matrix.setFromTriplets(entries_.begin(), entries_.end());
        solver_.compute(matrix);
        return solver_.info() == Eigen::Success;
    }
    /// Writes the solution for the free vertices into uv.
    void solve(const Columns& right, const std::vector<int>& number, std::vector<Vec2>& uv) const {
        const Columns solution = solver_.solve(right);
        for (size_t v = 0; v < uv.size(); ++v)
            if (number[v] >= 0)
                uv[v] = {solution(number[v], 0), solution(number[v], 1)};
    }

private:
    std::vector<Eigen::Triplet<double>> entries_;
    Eigen::SimplicialLDLT<Matrix, Eigen::Lower> solver_;
};

/// The rotation, as (cosine, sine), that best maps a triangle's rest edges onto its current ones.
/// Entry k of all three arrays belongs to the edge opposite corner k.
Vec2 best_rotation(const Vec2* rest, const Vec2* edge, const double* weight) {
    double cosine = 0, sine = 0;
    for (uint32_t k = 0; k < 3; ++k) {
        cosine += weight[k] * dot(edge[k], rest[k]);
        sine += weight[k] * cross(rest[k], edge[k]);
    }
    const double norm = std::sqrt(cosine * cosine + sine * sine);
    if (norm > 0)
        return {cosine / norm, sine / norm};
    return {1, sine};
}

/// The right side of the global step of arap(): what the rotated rest edges and the pinned vertices
/// contribute to each unknown.
struct RightSide {
    Columns sums;
    const std::vector<int>& number;
    const std::vector<Vec2>& uv;

    void add_rotated_face(const Frame& f, const uint32_t* v, const double* weight) {
        const Vec2 rest[3] = {{f.x2 - f.x1, f.y2}, {0 - f.x2, 0 - f.y2}, {f.x1, 0}};
        const Vec2 edge[3] = {uv[v[2]] - uv[v[1]], uv[v[0]] - uv[v[2]], uv[v[1]] - uv[v[0]]};
        const Vec2 turn = best_rotation(rest, edge, weight);
        for (uint32_t k = 0; k < 3; ++k) {
            const Vec2 r = rest[k];
            const Vec2 e =
                Vec2{turn.x * r.x - turn.y * r.y, turn.y * r.x + turn.x * r.y} * weight[k];
            const uint32_t from = v[(k + 1) % 3], to = v[(k + 2) % 3];
            add_edge(from, to, weight[k], {-e.x, -e.y});
            add_edge(to, from, weight[k], e);
        }
    }
    /// Adds the contribution of an edge to the equation of its end v.
    void add_edge(uint32_t v, uint32_t other, double weight, Vec2 e) {
        const int row = number[v];
        if (row < 0)
            return;
        const bool other_is_free = number[other] >= 0;
        sums(row, 0) += other_is_free ? e.x : weight * uv[other].x + e.x;
        sums(row, 1) += other_is_free ? e.y : weight * uv[other].y + e.y;
    }
};

/// Fixes the loop's vertices at equal arcs of a circle. Uses the rational parametrisation of each
/// quarter instead of sine and cosine, which are not exactly rounded.
void place_on_circle(const std::vector<uint32_t>& loop, double radius, std::vector<Vec2>& uv) {
    for (size_t i = 0; i < loop.size(); ++i) {
        const double turn = 4.0 * double(i) / double(loop.size());
        const int quarter = std::min(3, int(turn));
        const double t = turn - quarter, d = radius / (1 + t * t);
        Vec2 p{(1 - t * t) * d, 2 * t * d};
        for (int q = 0; q < quarter; ++q)
            p = {-p.y, p.x};
        uv[loop[i]] = p;
    }
}

} // namespace

bool Patch::arap(int steps) {
    constexpr double k_min_weight = 1e-3,
                     k_max_weight = 1e4; // cotangents are clamped to these, so that the
                                         // matrix stays positive definite
    std::vector<uint8_t> held = pinned;
    if (std::find(held.begin(), held.end(), 1) == held.end())
        held[0] = 1; // without a fixed vertex the translation would be undetermined
    std::vector<int> number;
    const int count = number_free(held, number);
    if (count == 0)
        return true;
    std::vector<double> weight(corner_.size()); // of the edge opposite each corner
    Laplacian laplacian(corner_.size());
    for (uint32_t c = 0; c < corner_.size(); ++c) {
        weight[c] = std::min(k_max_weight, std::max(k_min_weight, shape_[c / 3].cot[c % 3]));
        laplacian.add_edge(number[corner_[next_corner(c)]], number[corner_[previous_corner(c)]],
                           weight[c]);
    }
    if (!laplacian.factor(count))
        return false;
    RightSide right{Columns(count, 2), number, uv};
    for (int step = 0; step < steps; ++step) {
        right.sums.setZero();
        for (uint32_t t = 0; t < shape_.size(); ++t)
            right.add_rotated_face(frame_[t], &corner_[3 * t], &weight[3 * t]);
        laplacian.solve(right.sums, number, uv);
    }
    return true;
}

bool Patch::tutte(const std::vector<uint32_t>& loop) {
    double area = 0;
    for (const FaceShape& shape : shape_)
        area += shape.area;
    place_on_circle(loop, std::sqrt(area / 3.14159265358979), uv);
    std::vector<uint8_t> held(uv.size(), 0);
    for (uint32_t v : loop)
        held[v] = 1;
    std::vector<int> number;
    const int count = number_free(held, number);
    if (count == 0)
        return true;
    Laplacian laplacian(corner_.size());
    Columns right = Columns::Zero(count, 2);
    for (uint32_t c = 0; c < corner_.size(); ++c) {
        const uint32_t va = corner_[c], vb = corner_[next_corner(c)];
        const int a = number[va], b = number[vb];
        laplacian.add_edge(a, b, 1);
        if (a >= 0 && b < 0)
            right(a, 0) += uv[vb].x, right(a, 1) += uv[vb].y;
        if (b >= 0 && a < 0)
            right(b, 0) += uv[va].x, right(b, 1) += uv[va].y;
    }
    if (!laplacian.factor(count))
        return false;
    laplacian.solve(right, number, uv);
    return true;
}

} // namespace tessora::atlas
