// The global solves of Patch: as-rigid-as-possible and Tutte.
#include "atlas/charts/patch.h"

#include <Eigen/SparseCholesky>
#include <algorithm>

namespace tessora::atlas {
namespace {

using Matrix = Eigen::SparseMatrix<double, Eigen::ColMajor, int>;

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

/// Eigen's minimum degree ordering for a symmetric matrix of which both halves are stored. Eigen's
/// own would add the transpose first, in case the matrix were not symmetric.
struct MinimumDegree {
    using PermutationType = Eigen::AMDOrdering<int>::PermutationType;
    void operator()(const Matrix& matrix, PermutationType& permutation) {
        Eigen::AMDOrdering<int>()(matrix.selfadjointView<Eigen::Lower>(), permutation);
    }
};

/// A weighted graph Laplacian restricted to the free vertices, assembled edge by edge and factored.
/// An edge may be added in parts.
class Laplacian {
public:
    Laplacian(int count, size_t edges) : matrix_(count, count), diagonal_(size_t(count), 0.0) {
        links_.reserve(edges);
    }
    /// a and b are the numbers of the edge's ends, -1 for pinned ones.
    void add_edge(int a, int b, double weight) {
        if (a >= 0)
            diagonal_[size_t(a)] += weight;
        if (b >= 0)
            diagonal_[size_t(b)] += weight;
        if (a >= 0 && b >= 0)
            links_.push_back({std::max(a, b), std::min(a, b), weight});
    }
    /// Call once, after all edges. False if the matrix cannot be factored.
    bool factor() {
        assemble();
        solver_.compute(matrix_);
        return solver_.info() == Eigen::Success;
    }
    /// Writes the solution for the free vertices into uv. The sides hold one equation per unknown,
    /// in u and v.
    void solve(const std::vector<Vec2>& sides, const std::vector<int>& number,
               std::vector<Vec2>& uv);

private:
    struct Link {
        int row, column;
        double weight;
    };
    void sort_by_row();
    void assemble();

    Matrix matrix_; ///< the lower half
    std::vector<double> diagonal_;
    std::vector<Link> links_;
    std::vector<Lanes> x_; ///< workspace of solve
    Eigen::SimplicialLDLT<Matrix, Eigen::Lower, MinimumDegree> solver_;
};

/// Sorts the links by row, keeping their order within it.
void Laplacian::sort_by_row() {
    std::vector<size_t> at(diagonal_.size() + 1, 0); // where the row's next link goes
    for (const Link& link : links_)
        ++at[size_t(link.row) + 1];
    for (size_t row = 1; row < at.size(); ++row)
        at[row] += at[row - 1];
    std::vector<Link> sorted(links_.size());
    for (const Link& link : links_)
        sorted[at[size_t(link.row)]++] = link;
    links_ = std::move(sorted);
}

/// Deals the links out to the columns row by row, so that the rows of a column come to be in
/// ascending order, and adds up the parts of an entry in the order in which they were added.
void Laplacian::assemble() {
    sort_by_row();
    const size_t count = diagonal_.size();
    std::vector<int> last_row(count, -1), column_size(count, 1);
    const auto starts_entry = [&](const Link& link) {
        int& last = last_row[size_t(link.column)];
        const bool first = last != link.row;
        last = link.row;
        return first;
    };
    for (const Link& link : links_)
        column_size[size_t(link.column)] += starts_entry(link);
    int* const outer = matrix_.outerIndexPtr();
    outer[0] = 0;
    for (size_t column = 0; column < count; ++column)
        outer[column + 1] = outer[column] + column_size[column];
    matrix_.resizeNonZeros(outer[count]);
    int* const inner = matrix_.innerIndexPtr();
    double* const value = matrix_.valuePtr();
    std::vector<int>& next = column_size; // where the column's next entry goes
    for (size_t column = 0; column < count; ++column) {
        inner[outer[column]] = int(column);
        value[outer[column]] = diagonal_[column];
        next[column] = outer[column] + 1;
    }
    last_row.assign(count, -1);
    for (const Link& link : links_) {
        int& at = next[size_t(link.column)];
        if (starts_entry(link)) {
            inner[at] = link.row;
            value[at++] = -link.weight;
        } else {
            value[at - 1] -= link.weight;
        }
    }
    links_ = {};
}

/// Both sides are substituted together, which reads the factor once.
void Laplacian::solve(const std::vector<Vec2>& sides, const std::vector<int>& number,
                      std::vector<Vec2>& uv) {
    const int count = int(sides.size());
    const Eigen::VectorXi& place = solver_.permutationP().indices();
    const Matrix& factor = solver_.matrixL().nestedExpression(); // unit diagonal, not stored
    const int* const outer = factor.outerIndexPtr();
    const int* const inner = factor.innerIndexPtr();
    const double* const value = factor.valuePtr();
    x_.resize(sides.size());
    const auto x = [&](int i) -> Lanes& { return x_[size_t(i)]; };
    const auto placed = [&](int i) { return place.size() == 0 ? i : place[i]; };
    for (int i = 0; i < count; ++i)
        x(placed(i)) = Lanes{sides[size_t(i)].x, sides[size_t(i)].y};
    for (int i = 0; i < count; ++i) {
        const Lanes known = x(i);
        for (int k = outer[i]; k < outer[i + 1]; ++k)
            x(inner[k]) = x(inner[k]) - known * value[k];
    }
    const auto diagonal = solver_.vectorD();
    for (int i = 0; i < count; ++i)
        x(i) = 1 / diagonal[i] * x(i);
    for (int i = count; i-- > 0;) {
        Lanes sum = x(i);
        for (int k = outer[i]; k < outer[i + 1]; ++k)
            sum = sum - value[k] * x(inner[k]);
        x(i) = sum;
    }
    for (size_t v = 0; v < uv.size(); ++v)
        if (number[v] >= 0) {
            const Lanes solution = x(placed(number[v]));
            uv[v] = {solution[0], solution[1]};
        }
}

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
    std::vector<Vec2> sums;
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
        Vec2& sum = sums[size_t(row)];
        sum = sum + (other_is_free ? e : uv[other] * weight + e);
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

bool Patch::arap(int steps, const std::function<bool()>& after_step) {
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
    Laplacian laplacian(count, corner_.size());
    for (uint32_t t = 0; t < frame_.size(); ++t) {
        const FaceShape shape = shape_of(frame_[t]);
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c) {
            weight[c] = std::min(k_max_weight, std::max(k_min_weight, shape.cot[c % 3]));
            laplacian.add_edge(number[corner_[next_corner(c)]], number[corner_[previous_corner(c)]],
                               weight[c]);
        }
    }
    if (!laplacian.factor())
        return false;
    RightSide right{std::vector<Vec2>(size_t(count)), number, uv};
    for (int step = 0; step < steps; ++step) {
        right.sums.assign(size_t(count), Vec2{});
        for (uint32_t t = 0; t < frame_.size(); ++t)
            right.add_rotated_face(frame_[t], &corner_[3 * t], &weight[3 * t]);
        laplacian.solve(right.sums, number, uv);
        if (!after_step())
            break;
    }
    return true;
}

bool Patch::tutte(const std::vector<uint32_t>& loop) {
    double area = 0;
    for (const Frame& frame : frame_)
        area += frame.area();
    place_on_circle(loop, std::sqrt(area / 3.14159265358979), uv);
    std::vector<uint8_t> held(uv.size(), 0);
    for (uint32_t v : loop)
        held[v] = 1;
    std::vector<int> number;
    const int count = number_free(held, number);
    if (count == 0)
        return true;
    Laplacian laplacian(count, corner_.size());
    std::vector<Vec2> right((size_t(count)));
    for (uint32_t c = 0; c < corner_.size(); ++c) {
        const uint32_t va = corner_[c], vb = corner_[next_corner(c)];
        const int a = number[va], b = number[vb];
        laplacian.add_edge(a, b, 1);
        if (a >= 0 && b < 0)
            right[size_t(a)] = right[size_t(a)] + uv[vb];
        if (b >= 0 && a < 0)
            right[size_t(b)] = right[size_t(b)] + uv[va];
    }
    if (!laplacian.factor())
        return false;
    laplacian.solve(right, number, uv);
    return true;
}

} // namespace tessora::atlas
