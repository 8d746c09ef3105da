#include "formats/gltf_accessor.h"
#include "formats/gltf_mesh.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace formats {
namespace {

constexpr int k_vertex_data = 34962, k_index_data = 34963; // bufferView.target

/// A vertex with one of its texture coordinates.
struct Use {
    uint32_t vertex;
    float u, v; ///< as the file counts: v from the top
    friend bool operator<(const Use& a, const Use& b) {
        return std::tie(a.vertex, a.u, a.v) < std::tie(b.vertex, b.u, b.v);
    }
    friend bool operator==(const Use& a, const Use& b) {
        return a.vertex == b.vertex && a.u == b.u && a.v == b.v;
    }
};

template <class T>
void append(T value, std::string& bytes) {
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.append(raw, sizeof value);
}

class Patch {
public:
    Patch(const GltfMesh& mesh, const host::ObjUvs& uvs, GltfFile& result, std::string& error)
        : mesh_(mesh), uvs_(uvs), result_(result), error_(error),
          set_name_("TEXCOORD_" + std::to_string(mesh.set)) {}
    bool run();

private:
    bool check();
    Use use_of(const GltfPrimitive& primitive, size_t corner) const;
    bool patch_group(size_t group);
    bool copy_vertices(const GltfGroup& group, const std::vector<Use>& uses, Json& attributes,
                       Json& targets);
    bool copy_accessor(const Json& index, const std::vector<Use>& uses, Json& copy);
    void patch_primitive(const GltfPrimitive& primitive, const std::vector<Use>& uses);
    size_t add_view(const std::string& bytes, int target, size_t stride);
    size_t add_accessor(Json accessor);
    size_t add_coordinates(const std::vector<Use>& uses);
    void finish_buffer();

    const GltfMesh& mesh_;
    const host::ObjUvs& uvs_;
    GltfFile& result_;
    std::string& error_;
    std::string set_name_;
    size_t buffer_ = 0; ///< the buffer that new bytes go to
    std::string* bytes_ = nullptr;
};

bool Patch::check() {
    size_t corners = 0;
    for (const GltfPrimitive& primitive : mesh_.primitives)
        corners += primitive.corners.size();
    const auto count = uvs_.u.size();
    const bool fits = uvs_.v.size() == count && uvs_.corner_uv.size() == corners;
    error_ = "the UV set does not fit the mesh";
    for (const int32_t id : uvs_.corner_uv)
        if (!fits || id < 0 || size_t(id) >= count || !std::isfinite(uvs_.u[size_t(id)]) ||
            !std::isfinite(uvs_.v[size_t(id)]))
            return false;
    if (fits)
        error_.clear();
    return fits;
}

Use Patch::use_of(const GltfPrimitive& primitive, size_t corner) const {
    const auto id = size_t(uvs_.corner_uv[primitive.first_corner + corner]);
    return {primitive.corners[corner], uvs_.u[id], 1.0f - uvs_.v[id]};
}

/// New data go behind the old in the binary chunk, or into a buffer of their own in a text file.
size_t Patch::add_view(const std::string& bytes, int target, size_t stride) {
    bytes_->resize((bytes_->size() + 3) / 4 * 4);
    Json view = {{"buffer", buffer_}, {"byteOffset", bytes_->size()}, {"byteLength", bytes.size()}};
    if (stride)
        view["byteStride"] = stride;
    view["target"] = target;
    *bytes_ += bytes;
    Json& views = result_.json["bufferViews"];
    views.push_back(std::move(view));
    return views.size() - 1;
}

size_t Patch::add_accessor(Json accessor) {
    Json& accessors = result_.json["accessors"];
    accessors.push_back(std::move(accessor));
    return accessors.size() - 1;
}

size_t Patch::add_coordinates(const std::vector<Use>& uses) {
    std::string bytes;
    for (const Use& use : uses) {
        append(use.u, bytes);
        append(use.v, bytes);
    }
    const size_t view = add_view(bytes, k_vertex_data, 0);
    return add_accessor(
        {{"bufferView", view}, {"componentType", 5126}, {"count", uses.size()}, {"type", "VEC2"}});
}

/// An accessor with the elements of the new vertices; everything else it says still holds, because
/// every old vertex has at least one new one.
bool Patch::copy_accessor(const Json& index, const std::vector<Use>& uses, Json& copy) {
    GltfElements elements;
    if (!read_accessor(mesh_.file, index, elements, error_))
        return false;
    const size_t stride = (elements.size + 3) / 4 * 4; // what vertex data must be aligned to
    std::string bytes(uses.size() * stride, '\0');
    for (size_t i = 0; i < uses.size(); ++i) {
        if (uses[i].vertex >= elements.count) {
            error_ = "accessor " + index.dump() + ": it has " + std::to_string(elements.count) +
                     " elements for more vertices";
            return false;
        }
        std::memcpy(bytes.data() + i * stride,
                    elements.bytes.data() + uses[i].vertex * elements.size, elements.size);
    }
    const size_t view = add_view(bytes, k_vertex_data, stride == elements.size ? 0 : stride);
    Json accessor = {{"bufferView", view}};
    for (const auto& [key, value] : mesh_.file.json["accessors"][index.get<size_t>()].items())
        if (key != "bufferView" && key != "byteOffset" && key != "sparse")
            accessor[key] = key == "count" ? Json(uses.size()) : value;
    copy = add_accessor(std::move(accessor));
    return true;
}

bool Patch::copy_vertices(const GltfGroup& group, const std::vector<Use>& uses, Json& attributes,
                          Json& targets) {
    std::vector<std::pair<Json, Json>> copies; // an accessor may be several attributes
    const auto replace = [&](Json& index) {
        for (const auto& [old, copy] : copies)
            if (old == index) {
                index = copy;
                return true;
            }
        const Json old = index;
        if (!copy_accessor(old, uses, index))
            return false;
        copies.emplace_back(old, index);
        return true;
    };
    attributes = group.attributes;
    targets = group.targets;
    for (const auto& [name, index] : attributes.items())
        if (name != set_name_ && !replace(index))
            return false;
    for (Json& target : targets)
        for (const auto& [name, index] : target.items())
            if (!replace(index))
                return false;
    return true;
}

void Patch::patch_primitive(const GltfPrimitive& primitive, const std::vector<Use>& uses) {
    Json& target = result_.json["meshes"][primitive.mesh]["primitives"][primitive.number];
    GltfElements old;
    std::string ignored;
    int type = uses.size() > 65535 ? 5125 : 5123; // 65535 itself may end a strip
    if (target.contains("indices") && read_accessor(mesh_.file, target["indices"], old, ignored) &&
        (old.component_type == 5125 || (old.component_type == 5121 && uses.size() <= 255)))
        type = old.component_type;
    std::string bytes;
    for (size_t c = 0; c < primitive.corners.size(); ++c) {
        const auto place = std::lower_bound(uses.begin(), uses.end(), use_of(primitive, c));
        const auto index = uint32_t(place - uses.begin());
        if (type == 5121)
            append(uint8_t(index), bytes);
        else if (type == 5123)
            append(uint16_t(index), bytes);
        else
            append(index, bytes);
    }
    const size_t view = add_view(bytes, k_index_data, 0);
    target["indices"] = add_accessor({{"bufferView", view},
                                      {"componentType", type},
                                      {"count", primitive.corners.size()},
                                      {"type", "SCALAR"}});
    if (target.contains("mode"))
        target["mode"] = 4;
}

bool Patch::patch_group(size_t number) {
    const GltfGroup& group = mesh_.groups[number];
    std::vector<Use> uses;
    std::vector<char> is_used(group.vertex_count, 0);
    for (const GltfPrimitive& primitive : mesh_.primitives)
        if (primitive.group == number)
            for (size_t c = 0; c < primitive.corners.size(); ++c) {
                uses.push_back(use_of(primitive, c));
                is_used[uses.back().vertex] = 1;
            }
    for (uint32_t v = 0; v < group.vertex_count; ++v)
        if (!is_used[v]) // stays, so that the others keep their numbers
            uses.push_back({v, 0.0f, 0.0f});
    std::sort(uses.begin(), uses.end());
    uses.erase(std::unique(uses.begin(), uses.end()), uses.end());
    const bool splits = uses.size() > group.vertex_count;
    Json attributes = group.attributes, targets = group.targets;
    if (splits && !copy_vertices(group, uses, attributes, targets))
        return false;
    attributes[set_name_] = add_coordinates(uses);
    for (const GltfPrimitive& primitive : mesh_.primitives) {
        if (primitive.group != number)
            continue;
        Json& target = result_.json["meshes"][primitive.mesh]["primitives"][primitive.number];
        target["attributes"] = attributes;
        if (!targets.empty())
            target["targets"] = targets;
        if (splits)
            patch_primitive(primitive, uses);
    }
    return true;
}

void Patch::finish_buffer() {
    Json& buffer = result_.json["buffers"][buffer_];
    buffer["byteLength"] = bytes_->size();
    if (!result_.is_binary)
        buffer["uri"] = "data:application/octet-stream;base64," + to_base64(*bytes_);
}

bool Patch::run() {
    if (!check())
        return false;
    result_ = mesh_.file;
    Json& buffers = result_.json["buffers"];
    if (!result_.is_binary || result_.buffers.empty() || buffers[0].contains("uri")) {
        buffer_ = result_.buffers.size();
        result_.buffers.emplace_back();
        buffers.push_back({{"byteLength", 0}});
    }
    bytes_ = &result_.buffers[buffer_];
    for (size_t group = 0; group < mesh_.groups.size(); ++group)
        if (!patch_group(group))
            return false;
    finish_buffer();
    return true;
}

} // namespace

bool patch_gltf(const GltfMesh& mesh, const host::ObjUvs& uvs, GltfFile& result,
                std::string& error) {
    try {
        return Patch(mesh, uvs, result, error).run();
    } catch (const Json::exception&) {
        error = k_wrong_type;
        return false;
    }
}

} // namespace formats
