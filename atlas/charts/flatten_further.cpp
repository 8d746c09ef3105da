// The stretch of whole charts, lowered by global steps.
#include "atlas/charts/flatten.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Moves vertices only a share of the way that they have moved.
void take_share(const std::vector<Vec2>& before, double share, std::vector<Vec2>& uv) {
    for (size_t v = 0; v < uv.size(); ++v)
        uv[v] = before[v] + (uv[v] - before[v]) * share;
}

} // namespace

/// Takes moves of vertices back, by halves and then all of it, for as long as they flip a triangle
/// or make the outline cross itself. `before`: the legal layout that they started from. False, with
/// that layout again, if more than a few vertices do harm.
bool Flattener::take_back_harm(const Chart& c, const std::vector<Vec2>& before) {
    constexpr int k_rounds = 60, k_halves = 3;
    const size_t few = std::max<size_t>(30, before.size() / 100);
    Patch& patch = copy.patch;
    std::vector<uint8_t> times(before.size(), 0);
    std::vector<uint32_t> harmful, faults;
    for (int round = 0; round < k_rounds; ++round) {
        copy.store(set);
        set.outline(c, outline_);
        harmful.clear();
        faults.clear();
        patch.add_flipped_corners(harmful);
        tester_.find_faults(outline_, faults);
        for (uint32_t i : faults)
            for (uint32_t h : {c.border[i], next_corner(c.border[i])})
                harmful.push_back(copy.vertex(set.node[h]));
        if (harmful.empty())
            return true;
        std::sort(harmful.begin(), harmful.end());
        harmful.erase(std::unique(harmful.begin(), harmful.end()), harmful.end());
        if (harmful.size() > few)
            break;
        for (uint32_t v : harmful) {
            const double share = times[v]++ < k_halves ? 0.5 : 0;
            patch.uv[v] = before[v] + (patch.uv[v] - before[v]) * share;
        }
    }
    patch.uv = before;
    return false;
}

void Flattener::relax_without_harm(const Chart& c, int sweeps) {
    const std::vector<Vec2> before = copy.patch.uv;
    copy.patch.relax(sweeps);
    take_back_harm(c, before);
}

void Flattener::flatten_further(Chart& c, const std::function<bool()>& goes_on) {
    constexpr int k_rounds = 40;
    constexpr double k_least_share = 0.01, k_least_gain = 0.05;
    load(c);
    Patch& patch = copy.patch;
    std::vector<Vec2> best = patch.uv;
    double stretch = c.stretch.worst_l2();
    const auto keep_if_better = [&] {
        copy.store(set);
        const StretchSums sums = set.measure(c.faces);
        const bool is_better = sums.flipped == 0 && sums.worst_l2() < stretch;
        if (is_better) {
            best = patch.uv;
            stretch = sums.worst_l2();
        }
        patch.uv = best;
        return is_better;
    };
    double share = 1;           // of a global step that is taken
    bool relaxing_helps = true; // the best layout so far
    patch.arap(k_rounds, [&] {
        const double before = stretch;
        take_share(best, share, patch.uv);
        if (patch.flipped() != 0)
            patch.untangle(10);
        if (take_back_harm(c, best))
            relax_without_harm(c, 3);
        const bool is_better = keep_if_better();
        share = is_better ? std::min(1.0, 2 * share) : share / 2;
        if (!is_better && relaxing_helps)
            relax_without_harm(c, 5);
        relaxing_helps = is_better || (relaxing_helps && keep_if_better());
        const bool gains = !is_better || before - stretch > k_least_gain * (stretch - 1);
        return gains && share > k_least_share && goes_on();
    });
    patch.uv = best;
    copy.store(set);
    judge(c);
}

} // namespace tessora::atlas
