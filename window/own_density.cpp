#include "window/own_density.h"

#include "host/graph/data.h"
#include "host/graph/scene.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace window {
namespace {

using host::graph::Node;

/// Unwrapping gives all charts the same density, but not to the last digit: up to this factor they
/// count as the same.
constexpr double k_same = 1.05;

bool is_own(double density) { return density > k_same || density < 1.0 / k_same; }

/// The mesh that a node of a history puts out; null if it has none.
const host::Mesh* output_of(Node& node) {
    if (auto* shape = dynamic_cast<host::graph::MeshNode*>(&node))
        return shape->mesh();
    for (const char* name : {"outMesh", "output"}) {
        const host::graph::Slot* slot = node.slot(name);
        host::Object* data = slot ? slot->value.as_data() : nullptr;
        if (data && data->as_mesh())
            return data->as_mesh()->mesh();
    }
    return nullptr;
}

/// The value that half of the weight lies below; 0 if there is no weight.
double weighted_median(std::vector<std::pair<double, double>>& values) {
    std::sort(values.begin(), values.end());
    double weight = 0.0, half = 0.0;
    for (const auto& value : values)
        half += 0.5 * value.second;
    for (const auto& [value, its_weight] : values) {
        weight += its_weight;
        if (weight >= half)
            return value;
    }
    return 0.0;
}

/// Area of a triangle of the map in the texture, and in space.
double uv_area(const UvMap& map, size_t triangle) {
    const float* uv = &map.uvs()[6 * triangle];
    const auto at = [&](int i) { return static_cast<double>(uv[i]); };
    return 0.5 * std::abs((at(2) - at(0)) * (at(5) - at(1)) - (at(4) - at(0)) * (at(3) - at(1)));
}

double space_area(const UvMap& map, size_t triangle) {
    const float* p = &map.points()[9 * triangle];
    double side[2][3];
    for (int i = 0; i < 3; ++i) {
        side[0][i] = static_cast<double>(p[3 + i]) - static_cast<double>(p[i]);
        side[1][i] = static_cast<double>(p[6 + i]) - static_cast<double>(p[i]);
    }
    return 0.5 * std::hypot(side[0][1] * side[1][2] - side[0][2] * side[1][1],
                            side[0][2] * side[1][0] - side[0][0] * side[1][2],
                            side[0][0] * side[1][1] - side[0][1] * side[1][0]);
}

/// Per triangle, the area in the texture of its whole chart over that in space; 1 without a chart.
std::vector<double> chart_ratios(const UvMap& map) {
    std::vector<double> texture(map.charts().size()), space(map.charts().size());
    std::vector<double> ratios(map.triangle_count(), 1.0);
    for (size_t t = 0; t < ratios.size(); ++t)
        if (const uint32_t chart = map.triangle_chart()[t]; chart != k_none) {
            texture[chart] += uv_area(map, t);
            space[chart] += space_area(map, t);
        }
    for (size_t t = 0; t < ratios.size(); ++t)
        if (const uint32_t chart = map.triangle_chart()[t];
            chart != k_none && texture[chart] > 0.0 && space[chart] > 0.0)
            ratios[t] = texture[chart] / space[chart];
    return ratios;
}

} // namespace

LaidOut last_layout(const Subject& subject, const Node* node, const MString& set_name) {
    const host::Mesh* found = nullptr;
    LaidOut before;
    bool is_before = node == nullptr;
    for (Node* other : host::graph::Scene::current().history_of(*subject.shape, false)) {
        const host::Mesh* mesh = is_before ? output_of(*other) : nullptr;
        is_before = is_before || other == node;
        found = mesh ? mesh : found;
        before.is_unwrapped = mesh && is_unwrap(*other);
        if (before.is_unwrapped)
            break;
    }
    if (found) {
        before.mesh = *found;
        before.set = found->find_uv_set(set_name);
    }
    return before;
}

std::vector<float> own_densities(const host::Mesh& mesh, int set, const LaidOut& before) {
    if (set < 0 || before.set < 0 ||
        before.mesh.connectivity().corner_count() != mesh.connectivity().corner_count() ||
        before.mesh.connectivity().polygon_count() != mesh.connectivity().polygon_count())
        return {};
    const UvMap now(mesh, set, measure::Texture());
    const UvMap then(before.mesh, before.set, measure::Texture());
    if (now.triangle_polygon() != then.triangle_polygon())
        return {};
    // A single triangle compares with itself: its stretch cancels out, and charts that were sewn
    // since are told apart.
    const std::vector<double> base =
        before.is_unwrapped ? chart_ratios(then) : std::vector<double>(now.triangle_count(), 1.0);
    std::vector<std::pair<double, double>> values;
    std::vector<float> densities(mesh.connectivity().polygon_count());
    for (size_t t = 0; t < base.size(); ++t) {
        const double area = uv_area(now, t), old_area = uv_area(then, t);
        if (!(area > 0.0) || !(old_area > 0.0))
            continue;
        const double density = std::sqrt(area / old_area * base[t]);
        densities[now.triangle_polygon()[t]] = static_cast<float>(density);
        values.emplace_back(density, space_area(now, t));
    }
    const double usual = weighted_median(values);
    if (!(usual > 0.0))
        return {};
    bool has_own = false;
    for (float& density : densities) {
        density = static_cast<float>(static_cast<double>(density) / usual);
        has_own = has_own || (density > 0.0f && is_own(static_cast<double>(density)));
    }
    return has_own ? densities : std::vector<float>();
}

std::vector<float> own_densities(const Subject& subject) {
    if (!subject.shape || subject.uv_set < 0)
        return {};
    const MString name = subject.mesh.uv_set(uint32_t(subject.uv_set)).name;
    return own_densities(subject.mesh, subject.uv_set, last_layout(subject, nullptr, name));
}

std::vector<double> chart_densities(const UvMap& map, const std::vector<float>& densities) {
    std::vector<double> result(map.charts().size(), 1.0);
    bool has_own = false;
    for (uint32_t chart = 0; chart < result.size(); ++chart) {
        std::vector<std::pair<double, double>> values;
        for (uint32_t i = map.chart_begin()[chart]; i < map.chart_begin()[chart + 1]; ++i) {
            const uint32_t triangle = map.triangles_by_chart()[i];
            const float density = densities[map.triangle_polygon()[triangle]];
            if (density > 0.0f)
                values.emplace_back(static_cast<double>(density), space_area(map, triangle));
        }
        const double density = weighted_median(values);
        if (density > 0.0 && is_own(density))
            result[chart] = density;
        has_own = has_own || result[chart] != 1.0;
    }
    return has_own ? result : std::vector<double>();
}

std::string statement_giving_densities(const ChartsOf& all, const Subject& subject,
                                       const std::vector<float>& densities) {
    if (densities.size() != subject.mesh.connectivity().polygon_count())
        return std::string();
    std::map<double, std::vector<uint32_t>> charts; // by density, to three digits
    const std::vector<double> wanted = chart_densities(all.map, densities);
    for (uint32_t chart = 0; chart < wanted.size(); ++chart)
        charts[std::round(1000.0 * wanted[chart]) / 1000.0].push_back(chart);
    std::string statement;
    for (const auto& [density, its_charts] : charts) {
        ChartChange change;
        change.scale = std::max(density, 0.001);
        if (density != 1.0)
            statement += statement_changing(all, its_charts, change) + " ";
    }
    return statement.empty() ? statement
                             : "{ " + statement + statement_packing(all, subject, {}) + " }";
}

} // namespace window
