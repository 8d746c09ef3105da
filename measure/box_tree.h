/// A bounding volume hierarchy of boxes in the plane, for overlap and distance queries.
///
/// Items are sorted along a Morton curve and packed four to a node, level by level (a packed
/// R-tree): a few flat arrays, built by one sort. Node boxes are exact unions, without rounding.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace measure {

struct Box {
    double low[2];
    double high[2];

    static Box empty();
    void add(double x, double y);
    void add(const Box& other);
    bool meets(const Box& other) const {
        return low[0] <= other.high[0] && other.low[0] <= high[0] && low[1] <= other.high[1] &&
               other.low[1] <= high[1];
    }
    /// Squared distance between two boxes; 0 if they intersect.
    double distance2(const Box& other) const;
};

class BoxTree {
public:
    static constexpr uint32_t k_width = 4;

    explicit BoxTree(const std::vector<Box>& boxes);

    /// Item indices in tree order.
    const std::vector<uint32_t>& order() const { return order_; }

    /// Traverses the tree from the root: enter(box, first, last) returns whether to descend to the
    /// items order()[first .. last); leaf(i) is called for each index i into order() reached.
    template <class Enter, class Leaf>
    void visit(Enter enter, Leaf leaf) const {
        if (order_.empty())
            return;
        struct Step {
            uint32_t level, node;
        };
        std::array<Step, 64> stack;
        std::size_t depth = 0;
        stack[depth++] = {static_cast<uint32_t>(levels_.size()) - 1, 0};
        while (depth > 0) {
            const Step step = stack[--depth];
            const uint64_t span = uint64_t(k_width) << (2 * step.level);
            const uint64_t first = step.node * span;
            const uint64_t last = first + span < order_.size() ? first + span : order_.size();
            if (!enter(levels_[step.level][step.node], static_cast<uint32_t>(first),
                       static_cast<uint32_t>(last)))
                continue;
            if (step.level == 0) {
                for (uint64_t place = first; place < last; ++place)
                    leaf(static_cast<uint32_t>(place));
                continue;
            }
            const auto below = static_cast<uint32_t>(levels_[step.level - 1].size());
            const uint32_t begin = step.node * k_width;
            for (uint32_t child = begin; child < begin + k_width && child < below; ++child)
                stack[depth++] = {step.level - 1, child};
        }
    }

private:
    std::vector<uint32_t> order_;
    std::vector<std::vector<Box>> levels_; // leaves first; a box of level l covers 4^(l+1) items
};

} // namespace measure
