#include "window/state.h"

#include "host/commands/session.h"
#include "host/graph/undo.h"

#include <algorithm>
#include <cmath>

namespace window {
namespace {

constexpr uint32_t k_flat = 0xFF8C8A86u;
constexpr uint32_t k_fault = 0xFF2A2AE6u;

uint32_t packed(double r, double g, double b) {
    const auto byte = [](double value) {
        return static_cast<uint32_t>(std::clamp(value, 0.0, 1.0) * 255.0 + 0.5);
    };
    return 0xFF000000u | byte(b) << 16 | byte(g) << 8 | byte(r);
}

uint32_t from_hsv(double hue, double saturation, double value) {
    const auto part = [&](double shift) {
        const double place = std::fmod(shift + 6.0 * hue, 6.0);
        return value - value * saturation * std::clamp(std::min(place, 4.0 - place), 0.0, 1.0);
    };
    return packed(part(5.0), part(3.0), part(1.0));
}

/// True if both are the same storage (copy-on-write); equal values in other storage do not count.
bool has_same_uvs(const host::Mesh& a, int a_set, const host::Mesh& b, int b_set) {
    if (a_set < 0 || b_set < 0)
        return a_set == b_set;
    return &a.uv_set(uint32_t(a_set)) == &b.uv_set(uint32_t(b_set));
}

bool same_mesh(const host::Mesh& a, const host::Mesh& b, int a_set, int b_set) {
    return &a.connectivity() == &b.connectivity() && &a.points() == &b.points() && a_set == b_set &&
           has_same_uvs(a, a_set, b, b_set);
}

bool same_texture(const measure::Texture& a, const measure::Texture& b) {
    return a.width == b.width && a.height == b.height;
}

ShownAttribute row_of(host::graph::Slot& slot, const std::string& node) {
    ShownAttribute row;
    row.name = slot.attribute().long_name();
    row.plug = node + "." + row.name;
    row.is_input = slot.attribute().flags.writable && !slot.source();
    row.number = slot.value.number();
    switch (slot.attribute().kind()) {
    case host::graph::AttributeKind::boolean:
        row.kind = ShownAttribute::Kind::boolean;
        break;
    case host::graph::AttributeKind::text:
        row.kind = ShownAttribute::Kind::text;
        if (slot.value.kind() == host::graph::ValueKind::text)
            row.text = slot.value.as_text().asChar();
        break;
    case host::graph::AttributeKind::real32:
    case host::graph::AttributeKind::real64:
        break;
    default:
        row.kind = ShownAttribute::Kind::integer;
    }
    return row;
}

} // namespace

void State::refresh() {
    Subject next = find_subject(subject);
    const bool has_same_map = next.shape.get() == subject.shape.get() && next.shape &&
                              same_mesh(next.mesh, subject.mesh, next.uv_set, subject.uv_set) &&
                              same_texture(next.texture, subject.texture);
    subject = std::move(next);
    if (!has_same_map) {
        picker.reset();
        const UvMap before = std::move(map);
        map = subject.shape ? UvMap(subject.mesh, subject.uv_set, subject.texture) : UvMap();
        hovered = k_none;
        if (map.triangle_chart() != before.triangle_chart())
            chosen = k_none; // charts were cut or sewn; moved ones are still meant
        breaches_.reset();
        check_frame = -1;
        ++map_revision;
    }
    take_selection();
    take_rows();
    is_overlay_on = subject.node && window::is_overlay_on(*subject.node);
    if (is_overlay_on && !is_live)
        hidden_overlay.clear(); // the user wants it again
    const host::graph::UndoQueue& queue = host::graph::UndoQueue::current();
    undo_name = queue.undo_name();
    redo_name = queue.redo_name();
    is_modified = host::graph::Scene::current().is_modified;
    ++scene_revision;
}

void State::take_selection() {
    marked.clear();
    picked.clear();
    picked_uvs.clear();
    std::vector<bool> is_marked;
    std::vector<int> edges;
    for (const host::graph::SelectionItem& item : host::graph::Scene::current().selection()) {
        if (!item.component || item.node.get() != subject.shape.get())
            continue;
        if (item.component->kind() == host::graph::ComponentKind::edge)
            edges.insert(edges.end(), item.component->ids().begin(), item.component->ids().end());
        if (item.component->kind() != host::graph::ComponentKind::face)
            continue;
        is_marked.resize(subject.mesh.connectivity().polygon_count());
        for (const int face : item.component->ids())
            is_marked[static_cast<size_t>(face)] = true;
    }
    for (uint32_t t = 0; !is_marked.empty() && t < map.triangle_count(); ++t)
        if (is_marked[map.triangle_polygon()[t]])
            marked.push_back(t);
    take_picked(edges);
}

void State::take_picked(const std::vector<int>& edges) {
    picked.assign(edges.begin(), edges.end());
    std::sort(picked.begin(), picked.end());
    picked.erase(std::unique(picked.begin(), picked.end()), picked.end());
    if (subject.uv_set < 0)
        return;
    const host::Connectivity& polygons = subject.mesh.connectivity();
    const host::UvSet& set = subject.mesh.uv_set(uint32_t(subject.uv_set));
    for (const uint32_t edge : picked)
        for (const uint32_t polygon : polygons.edge_polygons(edge)) {
            const host::IndexSpan sides = polygons.polygon_edges(polygon);
            const auto side = uint32_t(std::find(sides.begin(), sides.end(), edge) - sides.begin());
            for (const uint32_t corner : {side, (side + 1) % polygons.corners_of(polygon)}) {
                const int32_t uv = set.corner_uvs[polygons.first_corner(polygon) + corner];
                picked_uvs.push_back(uv < 0 ? 0.0f : set.u[size_t(uv)]);
                picked_uvs.push_back(uv < 0 ? 0.0f : set.v[size_t(uv)]);
            }
        }
}

std::string State::shape_path() const {
    return host::graph::full_name(subject.shape->as_dag_node()->path());
}

const std::vector<measure::Breach>& State::breaches() {
    if (!breaches_)
        breaches_ = find_breaches(subject);
    return *breaches_;
}

void State::say(const std::string& words) {
    status = words;
    status_revision = console.revision();
}

void State::undo() {
    if (undo_name.empty())
        say("There is nothing to undo");
    else
        run("undo;");
}

void State::redo() {
    if (redo_name.empty())
        say("There is nothing to redo");
    else
        run("redo;");
}

void State::take_rows() {
    rows.clear();
    rows_node.clear();
    has_changed_rows = false;
    if (!subject.shape)
        return;
    host::graph::Node* node = subject.node.get();
    if (!node) {
        const auto history = host::graph::Scene::current().history_of(
            static_cast<host::graph::MeshNode&>(*subject.shape), false);
        node = history.empty() ? subject.shape.get() : history.front();
    }
    rows_node = node->name_text();
    for (host::graph::Slot* slot : editable_slots(*node))
        rows.push_back(row_of(*slot, rows_node));
    if (subject.node)
        explain_rows();
    compare_rows();
}

/// Labels the settings of the unwrap node and puts them first, in the order of the dialog; all else
/// but the drawing of seams is kept by the node itself and cannot be edited.
void State::explain_rows() {
    const auto rank = [this](const ShownAttribute& row) {
        const auto setting = settings.find(row.name);
        return setting != settings.end() ? setting->second.row : row.is_input ? 1000 : 1001;
    };
    for (ShownAttribute& row : rows) {
        const auto setting = settings.find(row.name);
        if (setting != settings.end()) {
            row.label = setting->second.label;
            row.help = setting->second.help;
            row.has_effect = setting->second.has_effect;
        } else if (row.name == k_overlay_attribute) {
            row.label = "Show seams";
            row.help = "Draws the seams of the unwrap in the model panels. Default: on.";
        } else {
            row.is_input = false;
            row.help = "Kept by the node; it cannot be edited here.";
        }
    }
    std::stable_sort(
        rows.begin(), rows.end(),
        [&](const ShownAttribute& a, const ShownAttribute& b) { return rank(a) < rank(b); });
}

void State::compare_rows() {
    has_changed_rows = false;
    if (!subject.node)
        return;
    for (auto made = used_settings_.begin(); made != used_settings_.end();)
        made = host::graph::Scene::current().find(made->first) ? std::next(made)
                                                               : used_settings_.erase(made);
    const auto [made, is_new] = used_settings_.try_emplace(rows_node);
    const UsedSettings& before = made->second;
    if (is_new || !has_same_uvs(before.mesh, before.uv_set, subject.mesh, subject.uv_set)) {
        made->second = {subject.mesh, subject.uv_set, rows};
        return;
    }
    for (size_t i = 0; i < rows.size() && i < before.rows.size(); ++i) {
        const ShownAttribute& old = before.rows[i];
        rows[i].has_changed = rows[i].is_input && rows[i].name != k_skip_attribute &&
                              rows[i].name != k_overlay_attribute && rows[i].name == old.name &&
                              (rows[i].number != old.number || rows[i].text != old.text);
        has_changed_rows = has_changed_rows || rows[i].has_changed;
    }
}

MeshPicker& State::mesh_picker() {
    if (!picker)
        picker.emplace(map.points());
    return *picker;
}

void State::run(const std::string& statements) {
    if (!jobs.add(statements))
        console.warning("Something is being computed; \"" + statements + "\" was not run.");
}

void State::run_on_shown(const std::string& statements) {
    if (host::graph::Scene::current().selection().empty() && subject.shape)
        run("select " + host::script::quoted(shape_path()) + ";");
    run(statements);
}

uint32_t chart_colour(uint32_t chart) {
    const double value = chart % 3 == 0 ? 0.86 : chart % 3 == 1 ? 0.72 : 0.79;
    return from_hsv(std::fmod(chart * 0.61803398875 + 0.56, 1.0), chart % 2 ? 0.50 : 0.38, value);
}

uint32_t stretch_colour(float stretch) {
    static constexpr double k_stops[][3] = {{0.12, 0.20, 0.55},
                                            {0.26, 0.53, 0.85},
                                            {0.47, 0.76, 0.47},
                                            {0.93, 0.74, 0.27},
                                            {0.75, 0.12, 0.13}};
    if (!(stretch > 0.0f))
        return k_fault;
    const double limited = std::clamp(static_cast<double>(stretch), 0.5, 2.0);
    const double place = 2.0 * (1.0 + std::log2(limited));
    const int stop = std::clamp(static_cast<int>(place), 0, 3);
    const double share = place - stop;
    const auto mix = [&](int i) {
        return k_stops[stop][i] * (1.0 - share) + k_stops[stop + 1][i] * share;
    };
    return packed(mix(0), mix(1), mix(2));
}

uint32_t triangle_colour(const UvMap& map, uint32_t triangle, Display display) {
    const uint32_t chart = map.triangle_chart()[triangle];
    if (chart == k_none || display == Display::plain)
        return k_flat;
    if (display == Display::picture)
        return 0xFFFFFFFFu;
    if (display == Display::stretch)
        return stretch_colour(map.triangle_stretch()[triangle]);
    return display == Display::density ? stretch_colour(map.triangle_density()[triangle])
                                       : chart_colour(chart);
}

std::vector<uint32_t> corner_colours(const UvMap& map, Display display) {
    std::vector<uint32_t> colours;
    colours.reserve(3 * size_t(map.triangle_count()));
    for (uint32_t t = 0; t < map.triangle_count(); ++t)
        colours.insert(colours.end(), 3, triangle_colour(map, t, display));
    return colours;
}

} // namespace window
