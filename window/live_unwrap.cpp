#include "window/live_unwrap.h"

#include "app/layout_command.h"
#include "app/system.h"
#include "host/graph/data.h"
#include "host/graph/evaluate.h"
#include "host/io/obj_mesh.h"
#include "host/io/obj_reader.h"
#include "host/io/write_file.h"
#include "host/script/value.h"
#include "window/node_settings.h"
#include "window/own_density.h"

#include <algorithm>
#include <cstdio>
#include <random>

namespace window {
namespace {

namespace fs = std::filesystem;
using host::graph::Node;
using host::graph::Slot;
using host::script::quoted;

std::string text(Node& node, const char* attribute) {
    const Slot* slot = node.slot(attribute);
    return slot && slot->value.kind() == host::graph::ValueKind::text
               ? slot->value.as_text().asChar()
               : std::string();
}

/// The set that the node writes; in its input, the one whose borders it keeps.
int set_of(const host::Mesh& mesh, Node& node) {
    const int named = mesh.find_uv_set(text(node, "UV_Set").c_str());
    return named >= 0 ? named : mesh.current_uv_set();
}

bool is_same_set(const host::UvSet& a, const host::UvSet& b) {
    return &a == &b || (a.corner_uvs == b.corner_uvs && a.u == b.u && a.v == b.v);
}

/// By value where storage differs: nodes behind one that keeps an old result make their meshes anew
/// with every evaluation.
bool is_same_input(const host::Mesh& a, const host::Mesh& b, Node& node) {
    const int set = set_of(a, node);
    const auto is_same_point = [](const host::Float3& p, const host::Float3& q) {
        return p.x == q.x && p.y == q.y && p.z == q.z;
    };
    const bool has_same_points = &a.points() == &b.points() ||
                                 std::equal(a.points().begin(), a.points().end(),
                                            b.points().begin(), b.points().end(), is_same_point);
    return &a.connectivity() == &b.connectivity() && has_same_points && set == set_of(b, node) &&
           (set < 0 || is_same_set(a.uv_set(uint32_t(set)), b.uv_set(uint32_t(set))));
}

bool read_uvs(const fs::path& file, host::UvSet& uvs, std::string& error) {
    std::string bytes;
    host::IoError failure;
    host::ObjDocument document;
    if (host::read_text(file.string(), bytes, failure) &&
        host::parse_obj(file.string(), std::move(bytes), document, failure)) {
        uvs = host::uv_set_of_document(document);
        return true;
    }
    error = failure.message;
    return false;
}

/// Gives the charts of a new layout the densities that most of their areas had before, and packs
/// them for the texture of the subject.
bool give_densities(const Subject& subject, const std::vector<float>& densities, int set,
                    host::Mesh& mesh, std::string& error) {
    const UvMap map(mesh, set, subject.texture);
    const std::vector<double> wanted = chart_densities(map, densities);
    if (wanted.empty())
        return true;
    host::UvSet uvs = mesh.uv_set(uint32_t(set));
    std::vector<double> scale(uvs.u.size(), 1.0);
    for (uint32_t t = 0; t < map.triangle_count(); ++t) {
        if (map.triangle_chart()[t] == k_none)
            continue;
        const uint32_t polygon = map.triangle_polygon()[t];
        const uint32_t first = mesh.connectivity().first_corner(polygon);
        for (uint32_t c = 0; c < mesh.connectivity().corners_of(polygon); ++c)
            if (const int32_t uv = uvs.corner_uvs[first + c]; uv >= 0)
                scale[size_t(uv)] = wanted[map.triangle_chart()[t]];
    }
    for (size_t i = 0; i < scale.size(); ++i) {
        uvs.u[i] = static_cast<float>(scale[i] * static_cast<double>(uvs.u[i]));
        uvs.v[i] = static_cast<float>(scale[i] * static_cast<double>(uvs.v[i]));
    }
    mesh.edit_uv_set(uint32_t(set)) = std::move(uvs);
    host::graph::UvLayout layout;
    layout.width = static_cast<int>(subject.texture.width);
    layout.height = static_cast<int>(subject.texture.height);
    layout.gutter = subject.gutter;
    host::UvSet packed;
    if (!app::pack_charts(mesh, uint32_t(set), layout, packed, error))
        return false;
    mesh.edit_uv_set(uint32_t(set)) = std::move(packed);
    return true;
}

} // namespace

fs::path make_private_folder() {
    std::error_code failure;
    const fs::path parent = fs::temp_directory_path(failure);
    std::random_device random;
    for (int i = 0; i < 100; ++i) {
        const fs::path folder = parent / ("tessora_window." + std::to_string(random()));
        if (fs::create_directory(folder, failure)) {
            fs::permissions(folder, fs::perms::owner_all, failure);
            return folder;
        }
    }
    return fs::path();
}

const host::Mesh* input_of(Node& node) {
    const Slot* slot = node.slot("inMesh");
    host::Object* data = slot ? slot->value.as_data() : nullptr;
    return data && data->as_mesh() ? data->as_mesh()->mesh() : nullptr;
}

std::string obj_text(const host::Mesh& mesh, int uv_set) {
    std::string out;
    char line[80];
    for (const host::Float3& p : mesh.points()) {
        std::snprintf(line, sizeof line, "v %.9g %.9g %.9g\n", double(p.x), double(p.y),
                      double(p.z));
        out += line;
    }
    const host::UvSet* set = uv_set < 0 ? nullptr : &mesh.uv_set(uint32_t(uv_set));
    for (size_t i = 0; set && i < set->u.size(); ++i) {
        std::snprintf(line, sizeof line, "vt %.9g %.9g\n", double(set->u[i]), double(set->v[i]));
        out += line;
    }
    const host::Connectivity& polygons = mesh.connectivity();
    for (uint32_t p = 0; p < polygons.polygon_count(); ++p) {
        out += 'f';
        for (uint32_t c = 0; c < polygons.corners_of(p); ++c) {
            const uint32_t corner = polygons.first_corner(p) + c;
            out += " " + std::to_string(polygons.corner_vertex(corner) + 1);
            if (set && set->corner_uvs[corner] >= 0)
                out += "/" + std::to_string(set->corner_uvs[corner] + 1);
        }
        out += '\n';
    }
    return out;
}

LiveUnwrap::LiveUnwrap() : child_(app::program_file()) {}

LiveUnwrap::~LiveUnwrap() { stop(); }

void LiveUnwrap::stop() {
    child_.stop();
    node_ = host::Ref<Node>();
    input_ = host::Mesh();
    revision_ = 0;
    std::error_code ignored;
    if (!folder_.empty())
        fs::remove_all(folder_, ignored);
    folder_.clear();
}

bool LiveUnwrap::awaits(const Subject& subject) const {
    Node* node = subject.has_later_edits ? nullptr : subject.node.get();
    const host::Mesh* input = node ? input_of(*node) : nullptr;
    return is_busy() && input && node == node_.get() && is_same_input(*input, input_, *node);
}

bool LiveUnwrap::follow(const Subject& subject, size_t revision, std::string& error) {
    if (revision == revision_)
        return true;
    revision_ = revision;
    Node* node = subject.has_later_edits ? nullptr : subject.node.get();
    // Undo and redo bring the node's result back without its input.
    if (Slot* slot = node ? node->slot("inMesh") : nullptr)
        host::graph::evaluate(*slot);
    const host::Mesh* input = node ? input_of(*node) : nullptr;
    if (!input || (node == node_.get() && is_same_input(*input, input_, *node)))
        return true;
    node_ = subject.node;
    input_ = *input;
    begun_ = Clock::now();
    if (folder_.empty())
        folder_ = make_private_folder();
    app::UnwrapRequest request;
    request.settings = settings_of(*node); // whose "map1" is the only set of the file that travels
    request.input = (folder_ / "in.obj").string();
    request.output = (folder_ / "out.obj").string();
    if (child_.is_busy())
        child_.stop(); // it may be reading the file
    return host::write_file(request.input, obj_text(input_, set_of(input_, *node)),
                            host::Durability::process, error) &&
           child_.begin(request, error);
}

bool LiveUnwrap::take_result(const Subject& subject, std::string& error) {
    const auto answer = child_.take_answer();
    if (!answer)
        return false;
    host::UvSet uvs;
    if (answer->code != 0)
        error = answer->reason;
    if (answer->code != 0 || !read_uvs(folder_ / "out.obj", uvs, error))
        return false;
    host::Mesh mesh = input_;
    const int set = set_of(mesh, *node_);
    if (set < 0 || uvs.corner_uvs.size() != mesh.connectivity().corner_count()) {
        error = "the unwrapped mesh is another one";
        return false;
    }
    host::UvSet& target = mesh.edit_uv_set(uint32_t(set));
    target.u = std::move(uvs.u);
    target.v = std::move(uvs.v);
    target.corner_uvs = std::move(uvs.corner_uvs);
    const MString name = target.name;
    const std::vector<float> densities =
        own_densities(input_, set, last_layout(subject, node_.get(), name));
    if (!densities.empty() && !give_densities(subject, densities, set, mesh, error))
        return false;
    Slot& output = *node_->slot("outMesh");
    output.value = host::graph::PlugValue::of_data(host::graph::mesh_data(&mesh).get());
    host::graph::announce_change(output);
    host::graph::assign(*node_->slot("Charts_result"),
                        host::graph::PlugValue::of_int(answer->charts));
    host::graph::assign(*node_->slot("Stretch_result"),
                        host::graph::PlugValue::of_double(answer->stretch));
    last_time_ = Clock::now() - begun_;
    return true;
}

std::string statement_beginning_live(const Subject& subject, bool has_uvs) {
    const std::string follow = "tessora -keep_seams on -stretch 1;";
    if (!has_uvs) // as few seams as can be are there to begin with
        return "{ tessora -stretch 1; delete -constructionHistory; " + follow + " }";
    if (!subject.node || subject.has_later_edits)
        return follow;
    return "setAttr " + quoted(subject.node_name() + ".Keep_Borders") + " 1;";
}

} // namespace window
