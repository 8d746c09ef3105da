#include "measure/box_tree.h"

#include <algorithm>
#include <limits>

namespace measure {
namespace {

uint64_t spread(uint64_t bits) { // inserts a 0 before each bit: 0000abcd -> 0a0b0c0d
    bits = (bits | (bits << 16)) & 0x0000FFFF0000FFFFu;
    bits = (bits | (bits << 8)) & 0x00FF00FF00FF00FFu;
    bits = (bits | (bits << 4)) & 0x0F0F0F0F0F0F0F0Fu;
    bits = (bits | (bits << 2)) & 0x3333333333333333u;
    return (bits | (bits << 1)) & 0x5555555555555555u;
}

struct Keyed {
    uint64_t key;
    uint32_t item;
};

std::vector<Keyed> morton_keys(const std::vector<Box>& boxes) {
    Box all = Box::empty();
    for (const Box& box : boxes)
        all.add(box);
    const double side = std::max(all.high[0] - all.low[0], all.high[1] - all.low[1]);
    const double scale = side > 0.0 ? 2097151.0 / side : 0.0; // 21 bits per axis
    std::vector<Keyed> keys(boxes.size());
    for (uint32_t i = 0; i < boxes.size(); ++i) {
        uint64_t at[2];
        for (int axis = 0; axis < 2; ++axis) {
            const double middle = 0.5 * (boxes[i].low[axis] + boxes[i].high[axis]);
            at[axis] = static_cast<uint64_t>((middle - all.low[axis]) * scale);
        }
        keys[i] = {spread(at[0]) | (spread(at[1]) << 1), i};
    }
    std::sort(keys.begin(), keys.end(), [](const Keyed& a, const Keyed& b) {
        return a.key != b.key ? a.key < b.key : a.item < b.item;
    });
    return keys;
}

} // namespace

Box Box::empty() {
    constexpr double far = std::numeric_limits<double>::infinity();
    return {{far, far}, {-far, -far}};
}

void Box::add(double x, double y) {
    low[0] = std::min(low[0], x);
    low[1] = std::min(low[1], y);
    high[0] = std::max(high[0], x);
    high[1] = std::max(high[1], y);
}

void Box::add(const Box& other) {
    for (int axis = 0; axis < 2; ++axis) {
        low[axis] = std::min(low[axis], other.low[axis]);
        high[axis] = std::max(high[axis], other.high[axis]);
    }
}

double Box::distance2(const Box& other) const {
    double sum = 0.0;
    for (int axis = 0; axis < 2; ++axis) {
        const double gap =
            std::max({0.0, low[axis] - other.high[axis], other.low[axis] - high[axis]});
        sum += gap * gap;
    }
    return sum;
}

BoxTree::BoxTree(const std::vector<Box>& boxes) {
    const std::vector<Keyed> keys = morton_keys(boxes);
    order_.reserve(keys.size());
    for (const Keyed& keyed : keys)
        order_.push_back(keyed.item);
    for (size_t below = order_.size(); !order_.empty() && (levels_.empty() || below > 1);) {
        std::vector<Box> level((below + k_width - 1) / k_width, Box::empty());
        for (size_t i = 0; i < below; ++i)
            level[i / k_width].add(levels_.empty() ? boxes[order_[i]] : levels_.back()[i]);
        below = level.size();
        levels_.push_back(std::move(level));
    }
}

} // namespace measure
