#include "formats/model_stream.h"

#include "formats/json_text.h"
#include "formats/text_parts.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace formats {
namespace {

using host::k_obj_none;

template <class T>
void append(const std::vector<T>& values, std::string& bytes) {
    bytes.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T));
}

bool are_finite(const std::vector<float>& values) {
    return std::all_of(values.begin(), values.end(), [](float v) { return std::isfinite(v); });
}

/// Units and matrices up to here have finite products.
constexpr double k_most_scale = 1e100;

bool is_scale(double value) { return std::abs(value) <= k_most_scale; }

Json layer_json(const ModelLayer& layer) {
    return {{"name", layer.name},
            {"components", layer.components},
            {"values", layer.values.size()},
            {"corners", layer.corner.size()}};
}

/// Every layer of a model, with its name in the stream.
template <class M, class Visit>
void visit_layers(M& model, Visit visit) {
    visit(model.uvs);
    visit(model.normals);
    visit(model.colors);
    for (auto& layer : model.other_uvs)
        visit(layer);
}

class Reader {
public:
    Reader(std::string_view bytes, Model& model) : bytes_(bytes), model_(model) {}
    bool run(std::string& error);

private:
    template <class T>
    bool take(uint64_t count, std::vector<T>& values);
    bool read_layer(const Json& facts, size_t components, ModelLayer& layer);
    bool read_layers(const Json& json);
    bool read_nodes(const Json& json);
    bool read(const Json& json);
    bool is_consistent() const;

    std::string_view bytes_;
    Model& model_;
};

template <class T>
bool Reader::take(uint64_t count, std::vector<T>& values) {
    if (count > bytes_.size() / sizeof(T))
        return false;
    values.resize(size_t(count));
    if (count > 0)
        std::memcpy(values.data(), bytes_.data(), values.size() * sizeof(T));
    bytes_.remove_prefix(values.size() * sizeof(T));
    return true;
}

/// Reads a layer whose values have so many numbers.
bool Reader::read_layer(const Json& facts, size_t components, ModelLayer& layer) {
    layer.name = facts.at("name").get<std::string>();
    layer.components = facts.at("components").get<size_t>();
    if (!take(facts.at("values").get<uint64_t>(), layer.values) ||
        !take(facts.at("corners").get<uint64_t>(), layer.corner))
        return false;
    if (!layer.is_present())
        return layer.values.empty();
    const auto is_known = [&](uint32_t id) {
        return id == k_obj_none || id < layer.values.size() / components;
    };
    return layer.components == components && layer.values.size() % components == 0 &&
           layer.corner.size() == model_.corner_vertex.size() &&
           std::all_of(layer.corner.begin(), layer.corner.end(), is_known) &&
           are_finite(layer.values);
}

bool Reader::read_layers(const Json& json) {
    constexpr size_t k_first = 3, k_most_sets = 8;
    if (json.size() < k_first || json.size() > k_first + k_most_sets ||
        !read_layer(json.at(0), 2, model_.uvs) || !read_layer(json.at(1), 3, model_.normals) ||
        !read_layer(json.at(2), 4, model_.colors))
        return false;
    for (size_t i = k_first; i < json.size(); ++i) {
        model_.other_uvs.emplace_back();
        if (!read_layer(json.at(i), 2, model_.other_uvs.back()) ||
            !model_.other_uvs.back().is_present())
            return false;
    }
    return true;
}

bool Reader::read_nodes(const Json& json) {
    for (const Json& facts : json) {
        ModelNode node;
        node.name = facts.at("name").get<std::string>();
        node.parent = facts.at("parent").get<int32_t>();
        node.part = facts.at("part").get<int32_t>();
        node.matrix = facts.at("matrix").get<Matrix>();
        if (!std::all_of(node.matrix.begin(), node.matrix.end(), is_scale) || node.parent < -1 ||
            node.parent >= int64_t(model_.nodes.size()) || node.part < -1 ||
            node.part >= int64_t(model_.parts.size()))
            return false;
        model_.nodes.push_back(std::move(node));
    }
    return true;
}

bool Reader::is_consistent() const {
    const std::vector<uint32_t>& begin = model_.corner_begin;
    if (begin.empty() || begin[0] != 0 || begin.back() != model_.corner_vertex.size() ||
        model_.polygon_material.size() != begin.size() - 1 ||
        model_.polygon_part.size() != begin.size() - 1 || model_.positions.size() % 3 != 0)
        return false;
    for (size_t p = 0; p + 1 < begin.size(); ++p)
        if (begin[p + 1] < begin[p] || begin[p + 1] - begin[p] < 3 ||
            model_.polygon_part[p] >= model_.parts.size() ||
            (model_.polygon_material[p] != k_obj_none &&
             model_.polygon_material[p] >= model_.materials.size()))
            return false;
    return std::all_of(model_.corner_vertex.begin(), model_.corner_vertex.end(),
                       [&](uint32_t v) { return v < model_.vertex_count(); });
}

bool Reader::read(const Json& json) {
    model_.metres = json.at("metres").get<double>();
    model_.materials = json.at("materials").get<std::vector<std::string>>();
    model_.parts = json.at("parts").get<std::vector<std::string>>();
    model_.left_out = json.at("left_out").get<std::vector<std::string>>();
    return is_scale(model_.metres) &&
           take(json.at("positions").get<uint64_t>(), model_.positions) &&
           take(json.at("polygons").get<uint64_t>() + 1, model_.corner_begin) &&
           take(json.at("corners").get<uint64_t>(), model_.corner_vertex) &&
           take(json.at("polygons").get<uint64_t>(), model_.polygon_material) &&
           take(json.at("polygons").get<uint64_t>(), model_.polygon_part) && is_consistent() &&
           read_layers(json.at("layers")) && read_nodes(json.at("nodes")) && bytes_.empty();
}

bool Reader::run(std::string& error) {
    const size_t end = bytes_.find('\n');
    Json json;
    std::string ignored;
    error = "the importer's answer is damaged";
    if (end == bytes_.npos || !parse_json(bytes_.substr(0, end), json, ignored))
        return false;
    bytes_.remove_prefix(end + 1);
    try {
        if (json.contains("failure")) {
            error = one_line(json.at("failure").get<std::string>());
            return false;
        }
        if (!read(json))
            return false;
    } catch (const Json::exception&) {
        return false;
    }
    error = "no mesh in the file: it has no polygons";
    if (model_.polygon_count() == 0)
        return false;
    error = "a vertex has a position that is not finite";
    return are_finite(model_.positions);
}

} // namespace

std::string write_model_stream(const Model& model) {
    Json json = {{"metres", model.metres},
                 {"materials", model.materials},
                 {"parts", model.parts},
                 {"left_out", model.left_out},
                 {"positions", model.positions.size()},
                 {"polygons", model.polygon_count()},
                 {"corners", model.corner_vertex.size()},
                 {"layers", Json::array()},
                 {"nodes", Json::array()}};
    visit_layers(model,
                 [&](const ModelLayer& layer) { json["layers"].push_back(layer_json(layer)); });
    for (const ModelNode& node : model.nodes)
        json["nodes"].push_back({{"name", node.name},
                                 {"parent", node.parent},
                                 {"part", node.part},
                                 {"matrix", node.matrix}});
    std::string bytes = json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    append(model.positions, bytes);
    append(model.corner_begin, bytes);
    append(model.corner_vertex, bytes);
    append(model.polygon_material, bytes);
    append(model.polygon_part, bytes);
    visit_layers(model, [&](const ModelLayer& layer) {
        append(layer.values, bytes);
        append(layer.corner, bytes);
    });
    return bytes;
}

std::string write_model_failure(const std::string& reason) {
    return Json({{"failure", reason}}).dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

bool read_model_stream(std::string_view bytes, Model& model, std::string& error) {
    model = Model();
    if (!Reader(bytes, model).run(error))
        return false;
    error.clear();
    return true;
}

} // namespace formats
