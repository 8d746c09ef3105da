#include "window/mesh_picker.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace window {
namespace {

constexpr uint32_t k_leaf = 4;
constexpr uint32_t k_nothing = 0xFFFFFFFFu;

} // namespace

MeshPicker::MeshPicker(const std::vector<float>& points) : points_(&points) {
    const uint32_t count = static_cast<uint32_t>(points.size() / 9);
    order_.resize(count);
    std::iota(order_.begin(), order_.end(), 0u);
    std::vector<float> middles(3 * count);
    for (uint32_t t = 0; t < count; ++t)
        for (int axis = 0; axis < 3; ++axis)
            middles[3 * t + axis] =
                points[9 * t + axis] + points[9 * t + 3 + axis] + points[9 * t + 6 + axis];
    if (count > 0) {
        boxes_.reserve(count);
        build(0, count, middles);
    }
}

uint32_t MeshPicker::build(uint32_t begin, uint32_t end, const std::vector<float>& middles) {
    const uint32_t at = static_cast<uint32_t>(boxes_.size());
    Box box{{0, 0, 0}, {0, 0, 0}, begin, end, 0};
    for (int axis = 0; axis < 3; ++axis) {
        box.low[axis] = std::numeric_limits<float>::max();
        box.high[axis] = std::numeric_limits<float>::lowest();
    }
    for (uint32_t i = begin; i < end; ++i)
        for (int k = 0; k < 9; ++k) {
            const float value = (*points_)[9 * order_[i] + k];
            box.low[k % 3] = std::min(box.low[k % 3], value);
            box.high[k % 3] = std::max(box.high[k % 3], value);
        }
    boxes_.push_back(box);
    if (end - begin <= k_leaf)
        return at;
    int longest = 0;
    for (int axis = 1; axis < 3; ++axis)
        if (box.high[axis] - box.low[axis] > box.high[longest] - box.low[longest])
            longest = axis;
    const uint32_t middle = begin + (end - begin) / 2;
    std::nth_element(order_.begin() + begin, order_.begin() + middle, order_.begin() + end,
                     [&](uint32_t a, uint32_t b) {
                         const float x = middles[3 * a + longest], y = middles[3 * b + longest];
                         return x < y || (x == y && a < b);
                     });
    build(begin, middle, middles);
    const uint32_t right = build(middle, end, middles);
    boxes_[at].right = right;
    return at;
}

bool MeshPicker::meets(const Box& box, const Ray& ray, double nearest, double& entry) const {
    double enter = 0.0, leave = nearest;
    for (int axis = 0; axis < 3; ++axis) {
        const double d = ray.direction[axis], o = ray.origin[axis];
        const double low = static_cast<double>(box.low[axis]);
        const double high = static_cast<double>(box.high[axis]);
        if (d == 0.0) {
            if (o < low || o > high)
                return false;
            continue;
        }
        const double a = (low - o) / d, b = (high - o) / d;
        enter = std::max(enter, std::min(a, b));
        leave = std::min(leave, std::max(a, b));
    }
    entry = enter;
    return enter <= leave;
}

double MeshPicker::distance(uint32_t triangle, const Ray& ray) const {
    const float* p = points_->data() + 9 * triangle;
    double e1[3], e2[3], to_origin[3];
    for (int i = 0; i < 3; ++i) {
        const double base = static_cast<double>(p[i]);
        e1[i] = static_cast<double>(p[3 + i]) - base;
        e2[i] = static_cast<double>(p[6 + i]) - base;
        to_origin[i] = ray.origin[i] - base;
    }
    const auto cross = [](const double* a, const double* b, double(&out)[3]) {
        for (int i = 0; i < 3; ++i) {
            const int j = (i + 1) % 3, k = (i + 2) % 3;
            out[i] = a[j] * b[k] - a[k] * b[j];
        }
    };
    const auto dot = [](const double* a, const double* b) {
        return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
    };
    constexpr double k_miss = std::numeric_limits<double>::infinity();
    double h[3], q[3];
    cross(ray.direction, e2, h);
    const double determinant = dot(e1, h);
    if (determinant == 0.0)
        return k_miss;
    const double u = dot(to_origin, h) / determinant;
    cross(to_origin, e1, q);
    const double v = dot(ray.direction, q) / determinant;
    const double t = dot(e2, q) / determinant;
    return u >= 0.0 && v >= 0.0 && u + v <= 1.0 && t > 0.0 ? t : k_miss;
}

uint32_t MeshPicker::first_hit(const Ray& ray, double* distance_to) const {
    uint32_t best = k_nothing;
    double nearest = std::numeric_limits<double>::infinity(), entry;
    std::vector<uint32_t> stack;
    if (!boxes_.empty())
        stack.push_back(0);
    while (!stack.empty()) {
        const Box& box = boxes_[stack.back()];
        const uint32_t left = stack.back() + 1;
        stack.pop_back();
        if (!meets(box, ray, nearest, entry))
            continue;
        if (box.right == 0) {
            for (uint32_t i = box.begin; i < box.end; ++i) {
                const double at = distance(order_[i], ray);
                if (at < nearest || (at == nearest && order_[i] < best)) {
                    nearest = at;
                    best = at < std::numeric_limits<double>::infinity() ? order_[i] : best;
                }
            }
            continue;
        }
        double left_entry = 0.0, right_entry = 0.0;
        const bool goes_left = meets(boxes_[left], ray, nearest, left_entry);
        const bool goes_right = meets(boxes_[box.right], ray, nearest, right_entry);
        const bool left_first = left_entry <= right_entry;
        if (goes_right && left_first)
            stack.push_back(box.right);
        if (goes_left)
            stack.push_back(left);
        if (goes_right && !left_first)
            stack.push_back(box.right);
    }
    if (distance_to && best != k_nothing)
        *distance_to = nearest;
    return best;
}

} // namespace window
