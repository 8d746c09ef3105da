#include "window/layout.h"

#include "window/preferences.h"

#include <algorithm>

namespace window {
namespace {

struct Row {
    const char* preference;
    float AreaShares::*share;
    float least, most;
};

constexpr Row k_rows[] = {{"tessora_window_right", &AreaShares::right, 0.18f, 0.75f},
                          {"tessora_window_console", &AreaShares::console, 0.08f, 0.7f},
                          {"tessora_window_texture", &AreaShares::texture, 0.2f, 0.8f},
                          {"tessora_window_results", &AreaShares::results, 0.06f, 0.6f}};

constexpr float k_least_attributes = 0.08f;

} // namespace

void AreaShares::limit() {
    for (const Row& row : k_rows)
        this->*row.share = std::clamp(this->*row.share, row.least, row.most);
    results = std::min(results, std::max(0.06f, 1.0f - k_least_attributes - texture));
}

AreaShares remembered_shares() {
    AreaShares shares;
    for (const Row& row : k_rows)
        shares.*row.share =
            static_cast<float>(preference(row.preference, static_cast<double>(shares.*row.share)));
    shares.limit();
    return shares;
}

void remember_shares(const AreaShares& shares) {
    for (const Row& row : k_rows)
        set_preference(row.preference, static_cast<double>(shares.*row.share));
}

} // namespace window
