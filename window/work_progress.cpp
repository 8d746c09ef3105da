#include "window/work_progress.h"

#include <algorithm>
#include <cmath>

namespace window {
namespace {

/// A stage and the part of the bar that it fills.
struct Share {
    const char* name;
    double begin, end;
};

// The plug-in's stages, without "Tessora: ". The engine works during the second one.
constexpr char k_prefix[] = "Tessora: ";
constexpr Share k_plugin[] = {{"extracting required data", 0.0, 0.05},
                              {"generating UV set", 0.05, 0.05},
                              {"applying UV set", 0.95, 1.0}};
constexpr Share k_engine[] = {
    {"Reading the surface", 0.05, 0.10}, {"Grouping triangles", 0.10, 0.20},
    {"Flattening regions", 0.20, 0.40},  {"Merging charts", 0.40, 0.72},
    {"Smoothing borders", 0.72, 0.80},   {"Packing charts", 0.80, 0.93},
    {"Writing coordinates", 0.93, 0.95}};

template <size_t N>
const Share* find(const Share (&shares)[N], const std::string& name) {
    const auto* found =
        std::find_if(shares, shares + N, [&](const Share& share) { return name == share.name; });
    return found == shares + N ? nullptr : found;
}

double seconds(std::chrono::steady_clock::duration time) {
    return std::chrono::duration<double>(time).count();
}

} // namespace

void WorkProgress::begin(Time now) {
    begin_ = now;
    fraction_ = 0.0;
    stage_.clear();
}

void WorkProgress::advance(double begin, double end, double fraction) {
    const double done = begin + (end - begin) * std::clamp(fraction, 0.0, 1.0);
    fraction_ = std::max(fraction_, done);
}

void WorkProgress::note_plugin(const std::string& status, double fraction) {
    if (status.compare(0, sizeof k_prefix - 1, k_prefix) != 0)
        return;
    const Share* share = find(k_plugin, status.substr(sizeof k_prefix - 1));
    if (!share)
        return;
    // The bar still stands where the stage before left it.
    const bool is_new = stage_ != share->name;
    // In its second stage the plug-in passes on what the engine reports more finely.
    if (share->begin == share->end && fraction_ >= share->begin)
        return;
    stage_ = share->name;
    advance(share->begin, share->end, is_new ? 0.0 : fraction);
}

void WorkProgress::note_engine(const std::string& stage, double fraction) {
    stage_ = stage;
    if (const Share* share = find(k_engine, stage))
        advance(share->begin, share->end, fraction);
}

std::string WorkProgress::time_left(Time now) const {
    const double spent = seconds(now - begin_);
    if (spent < 2.0 || fraction_ < 0.05)
        return std::string();
    const double left = spent * (1.0 - fraction_) / fraction_;
    if (left >= 90.0)
        return "about " + std::to_string(std::lround(left / 60.0)) + " min left";
    // To 5 s beyond 10 s, so that the number does not flicker.
    const long step = left > 10.0 ? 5 : 1;
    return "about " + std::to_string(std::max(1L, std::lround(left / double(step))) * step) +
           " s left";
}

bool WorkProgress::is_worth_showing(Time now) const {
    return fraction_ > 0.0 || seconds(now - begin_) > 0.5;
}

} // namespace window
