#include "app/measure_layout.h"

#include "measure/shape.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace app {
namespace {

using Json = nlohmann::ordered_json;

static_assert(measure::k_none == host::k_obj_none);

void take_uvs(const host::ObjDocument& document, const host::ObjUvs* uvs, measure::Layout& layout) {
    if (!uvs) {
        layout.uvs = document.texture_coords;
        layout.corner_uv = document.corner_texture;
        return;
    }
    layout.uvs.resize(2 * uvs->u.size());
    for (size_t i = 0; i < uvs->u.size(); ++i) {
        layout.uvs[2 * i] = uvs->u[i];
        layout.uvs[2 * i + 1] = uvs->v[i];
    }
    layout.corner_uv.reserve(uvs->corner_uv.size());
    for (int32_t id : uvs->corner_uv)
        layout.corner_uv.push_back(id < 0 ? measure::k_none : static_cast<uint32_t>(id));
}

Json texels(const std::optional<double>& value) { return value ? Json(*value) : Json(nullptr); }

Json charts_json(const measure::Measures& m) {
    Json list = Json::array();
    for (const measure::ChartMeasure& chart : m.charts)
        list.push_back({{"triangles", chart.triangles},
                        {"area", chart.stretch.area * m.unit * m.unit},
                        {"texel_area", chart.stretch.texel_area},
                        {"l2_stretch", chart.stretch.l2},
                        {"max_stretch", chart.stretch.linf},
                        {"density", chart.density() / m.unit},
                        {"mirrored", chart.signed_area < 0.0}});
    return list;
}

void add_shape_figures(const measure::Measures& m, Json& out) {
    out["charts"] = m.charts.size();
    out["l2_stretch"] = m.whole.l2;
    out["max_stretch"] = m.whole.linf;
    out["worst_chart_stretch"] = m.worst_chart_stretch();
    out["angle_error_mean"] = m.distortion.angle_mean;
    out["angle_error_max"] = m.distortion.angle_max;
    out["conformal_mean"] = m.distortion.conformal_mean;
    out["area_distortion_mean"] = m.distortion.area_mean;
    out["area_distortion_max"] = m.distortion.area_max;
    out["seam_length"] = m.seam_length * m.unit;
    out["seam_length_relative"] = m.seam_relative;
    out["seam_edges"] = m.seam_edges;
}

void add_place_figures(const measure::Measures& m, Json& out) {
    out["coverage"] = m.coverage;
    out["gap_texels"] = m.gap ? Json(m.gap->texels) : Json(nullptr);
    out["border_texels"] = texels(m.border);
    out["density_min"] = m.density.min / m.unit;
    out["density_mean"] = m.density.mean / m.unit;
    out["density_max"] = m.density.max / m.unit;
    out["density_variation"] = m.density.variation;
    out["uv_min"] = {m.uv_low[0], m.uv_low[1]};
    out["uv_max"] = {m.uv_high[0], m.uv_high[1]};
}

void add_fault_figures(const Judgement& judgement, Json& out) {
    const measure::Measures& m = judgement.measures;
    out["unmapped_corners"] = m.unmapped_corners;
    out["unmapped_polygons"] = m.unmapped_polygons.size();
    out["flipped"] = m.flipped.size();
    out["collapsed"] = m.collapsed.size();
    out["dented"] = m.dented.size();
    out["turned"] = m.turned.size();
    out["split_polygons"] = m.split_polygons;
    out["unresolved"] = m.unresolved;
    out["mirrored_charts"] = m.mirrored.size();
    out["overlap_pairs_within"] = m.overlaps.pairs_within;
    out["overlap_pairs_between"] = m.overlaps.pairs_between;
    out["overlap_pairs_cut_short"] = m.overlaps.is_cut_short;
    out["overlapping_triangles"] = m.overlaps.triangles.size();
    out["outside"] = m.outside.size();
    out["over_limit_polygons"] = judgement.over_limit.allowed;
    out["over_limit_broken"] = judgement.over_limit.broken;
}

class Table {
public:
    void line(const char* name, const std::string& value, const char* note = "") {
        char text[160];
        std::snprintf(text, sizeof text, "%-22s %14s  %s", name, value.c_str(), note);
        text_ += text;
        text_.erase(text_.find_last_not_of(' ') + 1);
        text_ += "\n";
    }
    void line(const char* name, double value, const char* note = "") {
        char text[40];
        std::snprintf(text, sizeof text, "%.6g", value);
        line(name, std::string(text), note);
    }
    void gap() { text_ += "\n"; }
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

void add_shape_lines(const measure::Measures& m, Table& table) {
    table.line("charts", double(m.charts.size()));
    table.line("L2 stretch", m.whole.l2, "1 = isometric (Sander et al. 2001)");
    table.line("max stretch", m.whole.linf);
    table.line("worst chart", m.worst_chart_stretch(), "share of sampling rate lost, 1 - 1/L2");
    table.line("angle error, mean", m.distortion.angle_mean, "degrees");
    table.line("angle error, max", m.distortion.angle_max, "degrees");
    table.line("area distortion, mean", m.distortion.area_mean, "ratio, 1 = even");
    table.line("area distortion, max", m.distortion.area_max);
    table.line("seam length", m.seam_length * m.unit, "in the mesh's unit");
    table.line("seam length, relative", m.seam_relative, "over the square root of the area");
}

void add_place_lines(const measure::Measures& m, Table& table) {
    table.line("coverage", m.coverage, "of the unit square");
    if (m.gap)
        table.line("smallest gap", m.gap->texels, "texels between two charts");
    else
        table.line("smallest gap", std::string("-"), "fewer than two charts");
    if (m.border)
        table.line("border distance", *m.border, "texels, negative outside");
    table.line("density, least chart", m.density.min / m.unit, "texels per unit of length");
    table.line("density, mean", m.density.mean / m.unit);
    table.line("density, most", m.density.max / m.unit);
    table.line("density, variation", m.density.variation, "standard deviation over mean");
    char range[80];
    std::snprintf(range, sizeof range, "%.6g..%.6g", m.uv_low[0], m.uv_high[0]);
    table.line("u", std::string(range));
    std::snprintf(range, sizeof range, "%.6g..%.6g", m.uv_low[1], m.uv_high[1]);
    table.line("v", std::string(range));
}

void add_fault_lines(const Judgement& judgement, Table& table) {
    const measure::Measures& m = judgement.measures;
    const char* note = m.overlaps.is_cut_short ? "at least; not all were counted" : "";
    table.line("unmapped corners", m.unmapped_corners);
    table.line("flipped triangles", double(m.flipped.size()));
    table.line("collapsed triangles", double(m.collapsed.size()));
    table.line("dented polygons", double(m.dented.size()), "convex in space, not in the texture");
    table.line("turned corners", double(m.turned.size()),
               "other polygons with a corner that turns");
    table.line("mirrored charts", double(m.mirrored.size()));
    table.line("overlaps within", double(m.overlaps.pairs_within), note);
    table.line("overlaps between", double(m.overlaps.pairs_between), note);
    table.line("triangles outside", double(m.outside.size()), "[0,1] in u or v");
    table.line("polygons over limit",
               double(judgement.over_limit.allowed.size() + judgement.over_limit.broken.size()),
               "of stretch");
    table.line("too thin to judge", m.unresolved, "triangles");
}

} // namespace

measure::Layout make_layout(const host::ObjDocument& document, const host::Mesh& mesh,
                            const host::ObjUvs* uvs) {
    measure::Layout layout;
    layout.positions = document.unit_positions;
    layout.unit = document.unit;
    layout.corner_vertex = document.corner_vertex;
    layout.polygon_count = static_cast<uint32_t>(document.polygon_count());
    take_uvs(document, uvs, layout);
    const size_t triangles = document.corner_vertex.size() - 2 * document.polygon_count();
    layout.triangle_corners.reserve(3 * triangles);
    layout.triangle_polygon.reserve(triangles);
    for (uint32_t p = 0; p < layout.polygon_count; ++p) {
        const uint32_t first = document.corner_begin[p];
        const host::IndexSpan corners = mesh.triangles(p);
        for (uint32_t corner : corners)
            layout.triangle_corners.push_back(first + corner);
        for (uint32_t i = 0; i < corners.size(); i += 3)
            layout.triangle_polygon.push_back(p);
    }
    return layout;
}

namespace {

/// The tile of `count` that a triangle belongs to.
uint32_t tile_of(const measure::Layout& layout, uint32_t triangle, uint32_t count) {
    if (!measure::is_mapped(layout, triangle))
        return 0;
    double centre[2] = {0.0, 0.0};
    for (uint32_t k = 0; k < 3; ++k)
        for (uint32_t axis = 0; axis < 2; ++axis)
            centre[axis] +=
                layout.uvs[2 * size_t(layout.corner_uv[layout.triangle_corners[3 * triangle + k]]) +
                           axis] /
                3.0;
    const double rows = (count + 9) / 10;
    const double column = std::clamp(std::floor(centre[0]), 0.0, std::min(count, 10u) - 1.0);
    const double row = std::clamp(std::floor(centre[1]), 0.0, rows - 1.0);
    return std::min(count - 1, uint32_t(10.0 * row + column));
}

/// The triangles of a tile, with the tile moved to the unit square.
measure::Layout take_tile(const measure::Layout& whole, uint32_t tile, uint32_t count) {
    measure::Layout out = whole;
    out.triangle_corners.clear();
    out.triangle_polygon.clear();
    uint32_t of_polygon = 0;
    for (uint32_t t = 0; t < whole.triangle_count(); ++t) {
        if (t == 0 || whole.triangle_polygon[t] != whole.triangle_polygon[t - 1])
            of_polygon = tile_of(whole, t, count);
        if (of_polygon == tile) {
            out.triangle_corners.insert(out.triangle_corners.end(),
                                        whole.triangle_corners.begin() + 3 * ptrdiff_t(t),
                                        whole.triangle_corners.begin() + 3 * ptrdiff_t(t) + 3);
            out.triangle_polygon.push_back(whole.triangle_polygon[t]);
        }
    }
    for (size_t i = 0; i < out.uvs.size(); ++i)
        out.uvs[i] -= float(i % 2 == 0 ? tile % 10 : tile / 10);
    return out;
}

void judge(const measure::Texture& texture, const measure::Promise& promise, Judgement& judgement) {
    judgement.measures = measure::measure(judgement.layout, texture);
    judgement.breaches = measure::verify(judgement.layout, judgement.measures, promise);
    judgement.over_limit =
        measure::find_over_limit(judgement.layout, judgement.measures, promise.max_stretch);
}

} // namespace

Judgement judge_layout(const host::ObjDocument& document, const host::Mesh& mesh,
                       const host::ObjUvs* uvs, const measure::Texture& texture,
                       const measure::Promise& promise) {
    Judgement judgement;
    judgement.layout = make_layout(document, mesh, uvs);
    judge(texture, promise, judgement);
    return judgement;
}

std::vector<Judgement> judge_tiles(const host::ObjDocument& document, const host::Mesh& mesh,
                                   int count, const measure::Texture& texture,
                                   const measure::Promise& promise) {
    const measure::Layout whole = make_layout(document, mesh, nullptr);
    std::vector<Judgement> tiles(static_cast<size_t>(count));
    for (uint32_t tile = 0; tile < tiles.size(); ++tile) {
        tiles[tile].layout = count == 1 ? whole : take_tile(whole, tile, uint32_t(count));
        judge(texture, promise, tiles[tile]);
    }
    return tiles;
}

std::string measures_json(const Judgement& judgement, bool per_chart) {
    Json out = Json::object();
    out["polygons"] = judgement.measures.polygons;
    out["triangles"] = judgement.measures.triangles;
    out["vertices"] = judgement.measures.vertices;
    add_shape_figures(judgement.measures, out);
    add_place_figures(judgement.measures, out);
    add_fault_figures(judgement, out);
    if (per_chart)
        out["chart_list"] = charts_json(judgement.measures);
    return out.dump();
}

std::string measures_table(const Judgement& judgement) {
    const measure::Measures& m = judgement.measures;
    Table table;
    table.line("polygons", m.polygons);
    table.line("triangles", m.triangles);
    table.gap();
    add_shape_lines(m, table);
    table.gap();
    add_place_lines(m, table);
    table.gap();
    add_fault_lines(judgement, table);
    return table.text();
}

std::string breach_text(const measure::Breach& breach) {
    constexpr size_t k_max_shown = 20;
    std::string text = breach.sentence;
    const size_t count = breach.polygons.size(), shown = std::min(count, k_max_shown);
    for (size_t i = 0; i < shown; ++i)
        text += (i == 0 ? (count == 1 ? ": polygon " : ": polygons ") : ", ") +
                std::to_string(breach.polygons[i]);
    if (count > shown)
        text += " and " + std::to_string(count - shown) + " more";
    return text;
}

std::string refusal_text(const std::vector<std::string>& breaches) {
    std::string text = "the result is not good enough to be written:";
    for (const std::string& breach : breaches)
        text += "\n  " + breach;
    return text;
}

} // namespace app
