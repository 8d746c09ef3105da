/// glTF files of models: polygons become triangles, corners that differ vertices of their own.
#include "formats/model_writers.h"
#include "polygon/triangulation.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace formats {
namespace {

constexpr int k_vertex_data = 34962, k_index_data = 34963, k_float = 5126;

/// A position and its values in all layers, by their numbers.
using Key = std::vector<uint32_t>;

class Writer {
public:
    explicit Writer(const Model& model) : model_(model) {}
    GltfFile run();

private:
    void add_nodes();
    Json mesh(uint32_t part);
    Json primitive(const std::vector<uint32_t>& polygons, uint32_t material);
    Key key_of(uint32_t corner) const;
    size_t add_accessor(const std::string& bytes, int target, Json accessor);
    size_t add_values(const std::vector<Key>& vertices, const ModelLayer& layer, size_t word,
                      const char* name);
    size_t add_indices(const std::vector<uint32_t>& indices, size_t vertex_count);
    size_t add_positions(const std::vector<Key>& vertices);
    static bool is_complete(const ModelLayer& layer, const std::vector<Key>& vertices, size_t word);

    Model model_;
    std::vector<std::vector<uint32_t>> polygons_; ///< of each part
    std::vector<size_t> mesh_of_part_;            ///< those without polygons are no meshes
    tessora::polygon::Triangulation triangles_;
    GltfFile file_;
};

template <class T>
void append(T value, std::string& bytes) {
    char raw[sizeof value];
    for (size_t i = 0; i < sizeof value; ++i)
        raw[i] = reinterpret_cast<const char*>(&value)[i];
    bytes.append(raw, sizeof value);
}

size_t Writer::add_accessor(const std::string& bytes, int target, Json accessor) {
    std::string& buffer = file_.buffers[0];
    buffer.resize((buffer.size() + 3) / 4 * 4);
    Json& views = file_.json["bufferViews"];
    views.push_back({{"buffer", 0},
                     {"byteOffset", buffer.size()},
                     {"byteLength", bytes.size()},
                     {"target", target}});
    buffer += bytes;
    Json whole = {{"bufferView", views.size() - 1}};
    whole.update(accessor);
    file_.json["accessors"].push_back(std::move(whole));
    return file_.json["accessors"].size() - 1;
}

size_t Writer::add_positions(const std::vector<Key>& vertices) {
    std::string bytes;
    float low[3] = {INFINITY, INFINITY, INFINITY}, high[3] = {-INFINITY, -INFINITY, -INFINITY};
    for (const Key& key : vertices)
        for (size_t k = 0; k < 3; ++k) {
            const float value = model_.positions[3 * size_t(key[0]) + k];
            append(value, bytes);
            low[k] = std::min(low[k], value);
            high[k] = std::max(high[k], value);
        }
    return add_accessor(bytes, k_vertex_data,
                        {{"componentType", k_float},
                         {"count", vertices.size()},
                         {"type", "VEC3"},
                         {"min", {low[0], low[1], low[2]}},
                         {"max", {high[0], high[1], high[2]}}});
}

/// Normals have length one, colours are 0 to 1, coordinates count downwards.
void adapt(const char* name, float* value) {
    if (name[0] == 'T') {
        value[1] = 1.0f - value[1];
        return;
    }
    if (name[0] == 'C') {
        for (size_t k = 0; k < 4; ++k)
            value[k] = std::clamp(value[k], 0.0f, 1.0f);
        return;
    }
    const double length = std::hypot(double(value[0]), double(value[1]), double(value[2]));
    for (size_t k = 0; k < 3; ++k)
        value[k] = float(double(value[k]) / length);
}

size_t Writer::add_values(const std::vector<Key>& vertices, const ModelLayer& layer, size_t word,
                          const char* name) {
    std::string bytes;
    for (const Key& key : vertices) {
        float value[4] = {};
        for (size_t k = 0; k < layer.components && key[word] != host::k_obj_none; ++k)
            value[k] = layer.values[layer.components * size_t(key[word]) + k];
        adapt(name, value);
        for (size_t k = 0; k < layer.components; ++k)
            append(value[k], bytes);
    }
    const char* const types[] = {"VEC2", "VEC3", "VEC4"};
    return add_accessor(bytes, k_vertex_data,
                        {{"componentType", k_float},
                         {"count", vertices.size()},
                         {"type", types[layer.components - 2]}});
}

/// Whether every vertex has a value, and normals a direction.
bool Writer::is_complete(const ModelLayer& layer, const std::vector<Key>& vertices, size_t word) {
    return std::all_of(vertices.begin(), vertices.end(), [&](const Key& key) {
        if (key[word] == host::k_obj_none)
            return false;
        const float* value = &layer.values[layer.components * size_t(key[word])];
        const auto is_finite = [](float f) { return std::isfinite(f); };
        return std::all_of(value, value + layer.components, is_finite) &&
               (layer.components != 3 || std::hypot(value[0], value[1], value[2]) > 1e-20f);
    });
}

Key Writer::key_of(uint32_t corner) const {
    Key key = {model_.corner_vertex[corner]};
    const auto add = [&](const ModelLayer& layer) {
        key.push_back(layer.is_present() ? layer.corner[corner] : host::k_obj_none);
    };
    add(model_.uvs);
    for (const ModelLayer& layer : model_.other_uvs)
        add(layer);
    add(model_.normals);
    add(model_.colors);
    return key;
}

size_t Writer::add_indices(const std::vector<uint32_t>& indices, size_t vertex_count) {
    const bool is_small = vertex_count <= 65535;
    std::string bytes;
    for (const uint32_t index : indices) {
        if (is_small)
            append(uint16_t(index), bytes);
        else
            append(index, bytes);
    }
    return add_accessor(
        bytes, k_index_data,
        {{"componentType", is_small ? 5123 : 5125}, {"count", indices.size()}, {"type", "SCALAR"}});
}

Json Writer::primitive(const std::vector<uint32_t>& polygons, uint32_t material) {
    std::map<Key, uint32_t> numbers;
    std::vector<Key> vertices;
    std::vector<uint32_t> indices;
    for (const uint32_t p : polygons) {
        const uint32_t begin = model_.corner_begin[p], end = model_.corner_begin[p + 1];
        const size_t first = 3 * (size_t(begin) - 2 * size_t(p));
        for (size_t i = first; i < first + 3 * size_t(end - begin - 2); ++i) {
            Key key = key_of(begin + triangles_.corners[i]);
            const auto [known, is_new] =
                numbers.try_emplace(std::move(key), uint32_t(vertices.size()));
            if (is_new)
                vertices.push_back(known->first);
            indices.push_back(known->second);
        }
    }
    Json attributes = {{"POSITION", add_positions(vertices)}};
    size_t word = 1;
    attributes["TEXCOORD_0"] = add_values(vertices, model_.uvs, word++, "TEXCOORD");
    for (size_t i = 0; i < model_.other_uvs.size(); ++i)
        attributes["TEXCOORD_" + std::to_string(i + 1)] =
            add_values(vertices, model_.other_uvs[i], word++, "TEXCOORD");
    if (is_complete(model_.normals, vertices, word))
        attributes["NORMAL"] = add_values(vertices, model_.normals, word, "NORMAL");
    if (is_complete(model_.colors, vertices, ++word))
        attributes["COLOR_0"] = add_values(vertices, model_.colors, word, "COLOR");
    Json result = {{"attributes", attributes}, {"indices", add_indices(indices, vertices.size())}};
    if (material != host::k_obj_none)
        result["material"] = material;
    return result;
}

/// A primitive for each material.
Json Writer::mesh(uint32_t part) {
    std::map<uint32_t, std::vector<uint32_t>> by_material;
    for (const uint32_t p : polygons_[part])
        by_material[model_.polygon_material[p]].push_back(p);
    Json mesh = Json::object();
    if (!model_.parts[part].empty())
        mesh["name"] = model_.parts[part];
    mesh["primitives"] = Json::array();
    for (const auto& [material, polygons] : by_material)
        mesh["primitives"].push_back(primitive(polygons, material));
    return mesh;
}

void Writer::add_nodes() {
    Json nodes = Json::array(), roots = Json::array();
    const double scale = model_.metres > 0.0 ? model_.metres : 1.0;
    for (size_t i = 0; i < model_.nodes.size(); ++i) {
        const ModelNode& node = model_.nodes[i];
        Matrix matrix = node.matrix;
        if (node.parent < 0)
            matrix = product({scale, 0, 0, 0, 0, scale, 0, 0, 0, 0, scale, 0, 0, 0, 0, 1}, matrix);
        Json out = Json::object();
        if (!node.name.empty())
            out["name"] = node.name;
        if (matrix != k_identity)
            out["matrix"] = matrix;
        if (node.part >= 0 && !polygons_[size_t(node.part)].empty())
            out["mesh"] = mesh_of_part_[size_t(node.part)];
        nodes.push_back(std::move(out));
        if (node.parent < 0)
            roots.push_back(i);
        else
            nodes[size_t(node.parent)]["children"].push_back(i);
    }
    file_.json["scene"] = 0;
    file_.json["scenes"] = Json::array({{{"nodes", roots}}});
    file_.json["nodes"] = std::move(nodes);
}

GltfFile Writer::run() {
    add_missing_nodes(model_);
    polygons_ = polygons_by_part(model_);
    triangles_ = tessora::polygon::triangulate(
        {model_.corner_begin.data(), uint32_t(model_.polygon_count()), model_.corner_vertex.data()},
        model_.positions.data());
    file_.buffers.emplace_back();
    file_.json["asset"] = {{"version", "2.0"}, {"generator", "tessora"}};
    size_t meshes = 0;
    for (const std::vector<uint32_t>& polygons : polygons_)
        mesh_of_part_.push_back(polygons.empty() ? meshes : meshes++);
    add_nodes();
    for (const std::string& name : model_.materials) {
        Json material = Json::object();
        if (!name.empty())
            material["name"] = name;
        file_.json["materials"].push_back(std::move(material));
    }
    for (uint32_t part = 0; part < model_.parts.size(); ++part)
        if (!polygons_[part].empty())
            file_.json["meshes"].push_back(mesh(part));
    file_.json["buffers"] = Json::array({{{"byteLength", file_.buffers[0].size()}}});
    return std::move(file_);
}

} // namespace

GltfFile model_to_gltf(const Model& model) { return Writer(model).run(); }

} // namespace formats
