// The global solves of Patch: as-rigid-as-possible and Tutte.
#include "atlas/charts/patch.h"

#include <Eigen/SparseCholesky>
#include <algorithm>

namespace tessora::atlas {
namespace {

using Matrix = Eigen::SparseMatrix<double, Eigen::ColMajor, int>;
using Columns = Eigen::Matrix<double, Eigen::Dynamic, 2>;

/// Numbers the vertices that a solve moves; the others get -1.
int number_free(const std::vector<uint8_t>& pinned, std::vector<int>& number) {
    int count = 0;
    number.resize(pinned.size());
    for (size_t v = 0; v < pinned.size(); v++)
        number[v] = pinned[v] ? -1 : count++;
    return count;
}

} // namespace

bool Patch::arap(int steps) {
    std::vector<uint8_t> held = pinned;
    if (std::find(held.begin(), held.end(), 1) == held.end())
        held[0] = 1; // only rotations and translations are left undecided by the energy
    std::vector<int> number;
    const int count = number_free(held, number);
    if (count == 0)
        return true;
    const size_t faces = shape_.size();
    std::vector<double> weight(3 * faces); // of the edge opposite each corner
    std::vector<Eigen::Triplet<double>> entries;
    entries.reserve(9 * faces);
    for (uint32_t c = 0; c < 3 * faces; c++) {
        weight[c] = std::min(1e4, std::max(1e-3, shape_[c / 3].cot[c % 3]));
        const int a = number[corner_[next_corner(c)]], b = number[corner_[previous_corner(c)]];
        if (a >= 0)
            entries.emplace_back(a, a, weight[c]);
        if (b >= 0)
            entries.emplace_back(b, b, weight[c]);
        if (a >= 0 && b >= 0)
            entries.emplace_back(std::max(a, b), std::min(a, b), -weight[c]);
    }
    Matrix laplacian(count, count);
    laplacian.setFromTriplets(entries.begin(), entries.end());
    Eigen::SimplicialLDLT<Matrix, Eigen::Lower> solver(laplacian);
    if (solver.info() != Eigen::Success)
        return false;
    Columns right(count, 2);
    for (int step = 0; step < steps; step++) {
        right.setZero();
        for (uint32_t t = 0; t < faces; t++) {
            const Frame& f = frame_[t];
            const Vec2 rest[3] = {{0, 0}, {f.x1, 0}, {f.x2, f.y2}};
            double cosine = 0, sine = 0;
            for (uint32_t k = 0; k < 3; k++) {
                const uint32_t i = (k + 1) % 3, j = (k + 2) % 3;
                const Vec2 e = uv[corner_[3 * t + j]] - uv[corner_[3 * t + i]];
                const Vec2 r = rest[j] - rest[i];
                cosine += weight[3 * t + k] * dot(e, r);
                sine += weight[3 * t + k] * cross(r, e);
            }
            const double norm = std::sqrt(cosine * cosine + sine * sine);
            if (norm > 0)
                cosine /= norm, sine /= norm;
            else
                cosine = 1;
            for (uint32_t k = 0; k < 3; k++) {
                const uint32_t i = (k + 1) % 3, j = (k + 2) % 3;
                const Vec2 r = rest[j] - rest[i];
                const Vec2 e =
                    Vec2{cosine * r.x - sine * r.y, sine * r.x + cosine * r.y} * weight[3 * t + k];
                const uint32_t vi = corner_[3 * t + i], vj = corner_[3 * t + j];
                const int a = number[vi], b = number[vj];
                const double w = weight[3 * t + k];
                if (a >= 0) {
                    right(a, 0) += b >= 0 ? -e.x : w * uv[vj].x - e.x;
                    right(a, 1) += b >= 0 ? -e.y : w * uv[vj].y - e.y;
                }
                if (b >= 0) {
                    right(b, 0) += a >= 0 ? e.x : w * uv[vi].x + e.x;
                    right(b, 1) += a >= 0 ? e.y : w * uv[vi].y + e.y;
                }
            }
        }
        const Columns solution = solver.solve(right);
        for (size_t v = 0; v < uv.size(); v++)
            if (number[v] >= 0)
                uv[v] = {solution(number[v], 0), solution(number[v], 1)};
    }
    return true;
}

bool Patch::tutte(const std::vector<uint32_t>& loop) {
    std::vector<uint8_t> held(uv.size(), 0);
    // Points on a circle without sine and cosine: the rational parametrisation, per quarter.
    double area = 0;
    for (const Shape& shape : shape_)
        area += shape.area;
    const double radius = std::sqrt(area / 3.14159265358979);
    for (size_t i = 0; i < loop.size(); i++) {
        const double turn = 4.0 * double(i) / double(loop.size());
        const int quarter = std::min(3, int(turn));
        const double t = turn - quarter, d = radius / (1 + t * t);
        Vec2 p{(1 - t * t) * d, 2 * t * d};
        for (int q = 0; q < quarter; q++)
            p = {-p.y, p.x};
        uv[loop[i]] = p;
        held[loop[i]] = 1;
    }
    std::vector<int> number;
    const int count = number_free(held, number);
    if (count == 0)
        return true;
    std::vector<Eigen::Triplet<double>> entries;
    Columns right = Columns::Zero(count, 2);
    for (uint32_t c = 0; c < corner_.size(); c++) {
        const uint32_t va = corner_[c], vb = corner_[next_corner(c)];
        const int a = number[va], b = number[vb];
        if (a >= 0)
            entries.emplace_back(a, a, 1.0);
        if (b >= 0)
            entries.emplace_back(b, b, 1.0);
        if (a >= 0 && b >= 0)
            entries.emplace_back(std::max(a, b), std::min(a, b), -1.0);
        if (a >= 0 && b < 0)
            right(a, 0) += uv[vb].x, right(a, 1) += uv[vb].y;
        if (b >= 0 && a < 0)
            right(b, 0) += uv[va].x, right(b, 1) += uv[va].y;
    }
    Matrix graph(count, count);
    graph.setFromTriplets(entries.begin(), entries.end());
    Eigen::SimplicialLDLT<Matrix, Eigen::Lower> solver(graph);
    if (solver.info() != Eigen::Success)
        return false;
    const Columns solution = solver.solve(right);
    for (size_t v = 0; v < uv.size(); v++)
        if (number[v] >= 0)
            uv[v] = {solution(number[v], 0), solution(number[v], 1)};
    return true;
}

} // namespace tessora::atlas
