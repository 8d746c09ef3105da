#include "window/layout_words.h"

#include "measure/verify.h"

#include <algorithm>
#include <cstdio>

namespace window {
namespace {

std::string counted_charts(size_t count) {
    return std::to_string(count) + (count == 1 ? " chart" : " charts");
}

/// ", worst stretch 0.0440, 71.2 % covered".
std::string figures(const UvMap& map) {
    char text[64];
    std::snprintf(text, sizeof text, ", worst stretch %.4f, %.1f %% covered", map.worst_stretch(),
                  100.0 * map.coverage());
    return text;
}

} // namespace

std::string words_about(const UvMap& map) {
    return counted_charts(map.charts().size()) + figures(map);
}

std::string words_along_seams(const UvMap& map, size_t islands) {
    const std::vector<UvChart>& charts = map.charts();
    std::string words = counted_charts(charts.size()) + " along your seams";
    if (charts.size() > islands)
        words += " (" + std::to_string(charts.size() - islands) +
                 " more than they make: the rest cannot be laid flat)";
    words += figures(map);
    const auto stretched = std::count_if(charts.begin(), charts.end(), [](const UvChart& chart) {
        return chart.stretch > measure::Promise().max_stretch;
    });
    if (stretched > 0)
        words += ". " + counted_charts(size_t(stretched)) + " beyond 0.15: Suggest the rest cuts " +
                 (stretched == 1 ? "it" : "them");
    return words;
}

} // namespace window
