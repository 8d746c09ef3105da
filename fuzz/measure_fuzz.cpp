/// Fuzz target: measuring and verifying any layout. Figures that are shares must lie between 0
/// and 1, and lists must contain only ids that exist.
#include "fuzz/finding.h"
#include "measure/verify.h"

#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>

namespace {

/// Eighths of a unit, at times any bits at all.
float random_uv(FuzzedDataProvider& input) {
    const uint8_t value = input.ConsumeIntegral<uint8_t>();
    if (value != 255)
        return float(value) / 8 - 4;
    const uint32_t bits = input.ConsumeIntegral<uint32_t>();
    float result = 0;
    std::memcpy(&result, &bits, sizeof result);
    return result;
}

measure::Layout random_layout(FuzzedDataProvider& input) {
    measure::Layout layout;
    const uint32_t vertices = input.ConsumeIntegralInRange<uint32_t>(1, 30);
    const uint32_t uvs = input.ConsumeIntegralInRange<uint32_t>(1, 40);
    for (uint32_t i = 0; i < 3 * vertices; ++i)
        layout.positions.push_back(float(input.ConsumeIntegral<int8_t>()) / 8);
    for (uint32_t i = 0; i < 2 * uvs; ++i)
        layout.uvs.push_back(random_uv(input));
    layout.polygon_count = input.ConsumeIntegralInRange<uint32_t>(0, 20);
    for (uint32_t p = 0; p < layout.polygon_count; ++p) {
        const uint32_t corners = input.ConsumeIntegralInRange<uint32_t>(3, 6);
        const auto first = uint32_t(layout.corner_vertex.size());
        for (uint32_t c = 0; c < corners; ++c) {
            layout.corner_vertex.push_back(input.ConsumeIntegral<uint8_t>() % vertices);
            const uint8_t uv = input.ConsumeIntegral<uint8_t>();
            layout.corner_uv.push_back(uv == 255 ? measure::k_none : uv % uvs);
        }
        for (uint32_t c = 2; c < corners; ++c) {
            layout.triangle_corners.insert(layout.triangle_corners.end(),
                                           {first, first + c - 1, first + c});
            layout.triangle_polygon.push_back(p);
        }
    }
    return layout;
}

std::string fault_of(const measure::Layout& layout, const measure::Measures& measures) {
    if (!(measures.coverage >= 0.0 && measures.worst_chart_stretch() >= 0.0 &&
          measures.worst_chart_stretch() <= 1.0))
        return "a share is out of range";
    for (const std::vector<uint32_t>* list :
         {&measures.flipped, &measures.collapsed, &measures.outside})
        for (uint32_t triangle : *list)
            if (triangle >= layout.triangle_count())
                return "a list names no triangle";
    return "";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    measure::Texture texture;
    texture.width = input.ConsumeIntegralInRange<int>(1, 512);
    texture.height = input.ConsumeIntegralInRange<int>(1, 512);
    const measure::Layout layout = random_layout(input);
    const measure::Measures measures = measure::measure(layout, texture);
    report_finding(fault_of(layout, measures));
    for (const measure::Breach& breach : measure::verify(layout, measures, {2.0, 0.15}))
        for (uint32_t polygon : breach.polygons)
            report_finding(polygon < layout.polygon_count ? "" : "a breach names no polygon");
    return 0;
}
