#include "measure/verify.h"

#include <algorithm>
#include <cstdio>

namespace measure {
namespace {

constexpr double k_gap_tolerance = 0.01;     // texels
constexpr double k_stretch_tolerance = 1e-4; // of the L2 limit

void sort_unique(std::vector<uint32_t>& list) {
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
}

std::vector<uint32_t> polygons_of(const Layout& layout, const std::vector<uint32_t>& triangles) {
    std::vector<uint32_t> polygons;
    polygons.reserve(triangles.size());
    for (uint32_t t : triangles)
        polygons.push_back(layout.triangle_polygon[t]);
    sort_unique(polygons);
    return polygons;
}

std::string counted(size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", value);
    return text;
}

class Verification {
public:
    Verification(const Layout& layout, const Measures& measures, const Promise& promise)
        : layout_(layout), measures_(measures), promise_(promise) {}

    std::vector<Breach> run() {
        check_mapping();
        check_orientation();
        check_overlaps();
        check_places();
        check_stretch();
        return std::move(breaches_);
    }

private:
    void add(const char* name, std::string sentence, std::vector<uint32_t> polygons) {
        breaches_.push_back({name, std::move(sentence), std::move(polygons)});
    }

    void check_mapping() {
        if (!measures_.unmapped_polygons.empty())
            add("unmapped",
                counted(measures_.unmapped_polygons.size(), "polygon has", "polygons have") +
                    " corners without texture coordinates",
                measures_.unmapped_polygons);
        if (!measures_.collapsed.empty())
            add("collapsed",
                counted(measures_.collapsed.size(), "triangle has", "triangles have") +
                    " no area in the texture",
                polygons_of(layout_, measures_.collapsed));
    }

    void check_orientation() {
        if (!measures_.flipped.empty())
            add("flipped",
                counted(measures_.flipped.size(), "triangle is", "triangles are") +
                    " turned against the rest of the chart",
                polygons_of(layout_, measures_.flipped));
        if (!measures_.dented.empty())
            add("dented",
                counted(measures_.dented.size(), "convex polygon is", "convex polygons are") +
                    " not convex in the texture",
                measures_.dented);
        if (!measures_.turned.empty())
            add("turned",
                counted(measures_.turned.size(), "polygon has", "polygons have") +
                    " a corner that turns the other way in the texture",
                measures_.turned);
        if (measures_.mirrored.empty())
            return;
        std::vector<uint8_t> is_mirrored(measures_.charts.size(), 0);
        for (uint32_t chart : measures_.mirrored)
            is_mirrored[chart] = 1;
        std::vector<uint32_t> triangles;
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t)
            if (measures_.triangle_chart[t] != k_none && is_mirrored[measures_.triangle_chart[t]])
                triangles.push_back(t);
        add("mirrored", counted(measures_.mirrored.size(), "chart is", "charts are") + " mirrored",
            polygons_of(layout_, triangles));
    }

    void check_overlaps() {
        const Overlaps& overlaps = measures_.overlaps;
        if (overlaps.triangles.empty())
            return;
        const std::string pairs =
            std::string(overlaps.is_cut_short ? "at least " : "") +
            counted(overlaps.pairs_within + overlaps.pairs_between, "pair", "pairs") +
            " of triangles overlap";
        add("overlaps",
            pairs + " (" + std::to_string(overlaps.pairs_within) + " within a chart, " +
                std::to_string(overlaps.pairs_between) + " between charts)",
            polygons_of(layout_, overlaps.triangles));
    }

    void check_places() {
        if (measures_.gap && measures_.gap->texels < promise_.gutter - k_gap_tolerance)
            add("gap",
                "two charts are " + number(measures_.gap->texels) + " texels apart, not " +
                    number(promise_.gutter),
                polygons_of(layout_, {measures_.gap->triangles[0], measures_.gap->triangles[1]}));
        if (!measures_.outside.empty())
            add("outside",
                counted(measures_.outside.size(), "triangle leaves", "triangles leave") +
                    " the texture",
                polygons_of(layout_, measures_.outside));
    }

    void check_stretch() {
        OverLimit over = find_over_limit(layout_, measures_, promise_.max_stretch);
        if (!over.broken.empty())
            add("stretch",
                "charts of more than one polygon exceed the stretch limit of " +
                    number(promise_.max_stretch),
                std::move(over.broken));
    }

    const Layout& layout_;
    const Measures& measures_;
    const Promise& promise_;
    std::vector<Breach> breaches_;
};

} // namespace

OverLimit find_over_limit(const Layout& layout, const Measures& measures, double max_stretch) {
    OverLimit result;
    if (max_stretch >= 1.0)
        return result;
    const double limit = (1.0 + k_stretch_tolerance) / (1.0 - max_stretch);
    for (uint32_t t = 0; t < layout.triangle_count(); ++t) {
        if (measures.triangle_chart[t] == k_none)
            continue;
        const ChartMeasure& chart = measures.charts[measures.triangle_chart[t]];
        if (chart.stretch.worst_l2_floor > limit)
            (chart.is_one_polygon ? result.allowed : result.broken)
                .push_back(layout.triangle_polygon[t]);
    }
    sort_unique(result.allowed);
    sort_unique(result.broken);
    return result;
}

std::vector<Breach> verify(const Layout& layout, const Measures& measures, const Promise& promise) {
    return Verification(layout, measures, promise).run();
}

} // namespace measure
