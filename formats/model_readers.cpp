#include "formats/model_readers.h"

#include "formats/gltf_accessor.h"
#include "host/io/obj_lexer.h"
#include "host/io/obj_number.h"

#include <cmath>
#include <map>

namespace formats {
namespace {

using host::k_obj_none;

/// Numbers of names, in the order in which they come.
class Names {
public:
    explicit Names(std::vector<std::string>& names) : names_(names) {}
    uint32_t of(const std::string& name) {
        const auto [known, is_new] = numbers_.try_emplace(name, uint32_t(names_.size()));
        if (is_new)
            names_.push_back(name);
        return known->second;
    }

private:
    std::vector<std::string>& names_;
    std::map<std::string, uint32_t> numbers_;
};

/// Normals, objects (or groups, if there are none) and material names of an OBJ text, which was
/// checked when it was read.
class ObjScan {
public:
    ObjScan(const host::ObjDocument& document, Model& model)
        : model_(model), lexer_(document.text), parts_(model.parts), materials_(model.materials) {}
    void run();

private:
    void take_normals(std::vector<uint32_t> normals);
    std::string rest_of_line();
    uint32_t normal_of(std::string_view corner) const;

    Model& model_;
    host::ObjLexer lexer_;
    Names parts_, materials_;
    std::string part_;
    uint32_t material_ = k_obj_none;
    bool has_objects_ = false;
};

std::string ObjScan::rest_of_line() {
    std::string rest;
    std::string_view word;
    while (lexer_.next_word(word))
        rest += (rest.empty() ? "" : " ") + std::string(word);
    return rest;
}

uint32_t ObjScan::normal_of(std::string_view corner) const {
    const size_t slash = corner.find('/');
    const size_t second = slash == corner.npos ? slash : corner.find('/', slash + 1);
    int64_t number = 0;
    if (second == corner.npos ||
        host::parse_integer(corner.substr(second + 1), number) != host::NumberFault::none)
        return k_obj_none;
    const auto count = int64_t(model_.normals.values.size() / 3);
    number = number < 0 ? count + number : number - 1;
    return number >= 0 && number < int64_t(k_obj_none) ? uint32_t(number) : k_obj_none;
}

void ObjScan::run() {
    model_.normals.components = 3;
    std::vector<uint32_t> normals;
    std::string_view word;
    while (lexer_.next_statement()) {
        lexer_.next_word(word);
        const std::string keyword(word);
        if (keyword == "vn") {
            float value[3] = {};
            double exact = 0.0;
            for (float& component : value)
                if (lexer_.next_word(word))
                    host::parse_number(word, component, exact);
            model_.normals.values.insert(model_.normals.values.end(), value, value + 3);
        } else if (keyword == "o" || (keyword == "g" && !has_objects_)) {
            has_objects_ |= keyword == "o";
            part_ = rest_of_line();
        } else if (keyword == "usemtl") {
            material_ = materials_.of(rest_of_line());
        } else if (keyword == "f" || keyword == "fo") {
            const size_t first = normals.size();
            while (lexer_.next_word(word))
                normals.push_back(normal_of(word));
            if (normals.size() < first + 3) {
                normals.resize(first);
            } else {
                model_.polygon_part.push_back(parts_.of(part_));
                model_.polygon_material.push_back(material_);
            }
        }
        lexer_.skip_statement();
    }
    take_normals(std::move(normals));
}

void ObjScan::take_normals(std::vector<uint32_t> normals) {
    const auto count = uint32_t(model_.normals.values.size() / 3);
    bool has_normals = false;
    for (uint32_t& normal : normals) {
        normal = normal < count ? normal : k_obj_none;
        has_normals |= normal != k_obj_none;
    }
    if (has_normals)
        model_.normals.corner = std::move(normals);
}

/// Normals and colours of a PLY file's vertices.
class PlyScan {
public:
    PlyScan(const PlyMesh& mesh, Model& model) : mesh_(mesh), model_(model) {}
    void run();

private:
    void add_layer(const std::vector<const char*>& names, ModelLayer& layer);
    void add_corners(ModelLayer& layer);

    const PlyMesh& mesh_;
    Model& model_;
    std::vector<uint32_t> corner_row_;
};

/// The faces' corners by rows of the file, which the document may have merged.
void PlyScan::add_corners(ModelLayer& layer) {
    if (corner_row_.empty()) {
        const PlyElement& faces = *mesh_.file.find("face");
        for (const uint64_t row : faces.rows) {
            PlyCursor cursor(mesh_.file, row);
            uint64_t count = 0;
            for (int p = 0; p < mesh_.indices; ++p)
                cursor.skip(faces.properties[size_t(p)], count);
            const PlyProperty& list = faces.properties[size_t(mesh_.indices)];
            cursor.next_count(list, count);
            for (uint64_t i = 0; i < count && count >= 3; ++i) {
                double value = 0.0;
                cursor.next(list.type, value);
                corner_row_.push_back(uint32_t(value));
            }
        }
    }
    layer.corner = corner_row_;
}

void PlyScan::add_layer(const std::vector<const char*>& names, ModelLayer& layer) {
    const PlyElement& vertices = *mesh_.file.find("vertex");
    std::vector<int> places;
    double scale = 1.0;
    for (const char* name : names) {
        places.push_back(vertices.find(name));
        const bool may_miss = std::string(name) == "alpha";
        if (places.back() < 0 ? !may_miss : vertices.properties[size_t(places.back())].is_list)
            return;
        if (names.size() == 4 && places.back() >= 0)
            if (const uint64_t most = greatest_of(vertices.properties[size_t(places.back())].type))
                scale = double(most);
    }
    layer.components = names.size();
    for (const uint64_t row : vertices.rows) {
        PlyCursor cursor(mesh_.file, row);
        float values[4] = {0.0f, 0.0f, 0.0f, 1.0f};
        for (int p = 0; p < int(vertices.properties.size()); ++p) {
            double value = 0.0;
            uint64_t ignored = 0;
            if (vertices.properties[size_t(p)].is_list)
                cursor.skip(vertices.properties[size_t(p)], ignored);
            else
                cursor.next(vertices.properties[size_t(p)].type, value);
            for (size_t k = 0; k < places.size(); ++k)
                if (places[k] == p)
                    values[k] = float(value / scale);
        }
        layer.values.insert(layer.values.end(), values, values + layer.components);
    }
    add_corners(layer);
}

void PlyScan::run() {
    add_layer({"nx", "ny", "nz"}, model_.normals);
    add_layer({"red", "green", "blue", "alpha"}, model_.colors);
}

/// Everything of a glTF file that a model has.
class GltfScan {
public:
    GltfScan(const GltfMesh& mesh, Model& model, std::string& error)
        : mesh_(mesh), json_(mesh.file.json), model_(model), error_(error) {}
    bool run();

private:
    bool add_primitive(const GltfPrimitive& primitive);
    bool add_layer(const GltfPrimitive& primitive, const Json& attributes, const std::string& name,
                   ModelLayer& layer, size_t components);
    void add_nodes();
    static Matrix matrix_of(const Json& node);
    std::string name_of(const char* list, size_t number) const;

    const GltfMesh& mesh_;
    const Json& json_;
    Model& model_;
    std::string& error_;
};

std::string GltfScan::name_of(const char* list, size_t number) const {
    const Json& thing = json_.at(list).at(number);
    const auto name = thing.find("name");
    return name != thing.end() && name->is_string() ? name->get<std::string>() : "";
}

/// The attribute for the primitive's corners; none for them if it has no such attribute.
bool GltfScan::add_layer(const GltfPrimitive& primitive, const Json& attributes,
                         const std::string& name, ModelLayer& layer, size_t components) {
    const auto first = uint32_t(layer.values.size() / components);
    layer.components = components;
    layer.corner.resize(primitive.first_corner, k_obj_none);
    GltfElements elements;
    if (!attributes.contains(name))
        return true;
    if (!read_accessor(mesh_.file, attributes[name], elements, error_))
        return false;
    for (size_t i = 0; i < elements.count; ++i)
        for (size_t k = 0; k < components; ++k) {
            float value = int(k) < elements.components ? float(elements.number(i, k)) : 1.0f;
            value = std::isfinite(value) ? value : 0.0f;
            layer.values.push_back(name[0] == 'T' && k == 1 ? 1.0f - value : value);
        }
    for (const uint32_t vertex : primitive.corners)
        layer.corner.push_back(vertex < elements.count ? first + vertex : k_obj_none);
    return true;
}

bool GltfScan::add_primitive(const GltfPrimitive& primitive) {
    const Json& json = json_["meshes"][primitive.mesh]["primitives"][primitive.number];
    const Json& attributes = json["attributes"];
    size_t set = 0;
    for (int n = 0; n < 8; ++n) {
        const std::string name = "TEXCOORD_" + std::to_string(n);
        if (n == mesh_.set || !attributes.contains(name))
            continue;
        if (model_.other_uvs.size() <= set) {
            model_.other_uvs.emplace_back();
            model_.other_uvs.back().name = name;
        }
        if (!add_layer(primitive, attributes, name, model_.other_uvs[set++], 2))
            return false;
    }
    if ((attributes.contains("NORMAL") &&
         !add_layer(primitive, attributes, "NORMAL", model_.normals, 3)) ||
        (attributes.contains("COLOR_0") &&
         !add_layer(primitive, attributes, "COLOR_0", model_.colors, 4)))
        return false;
    uint32_t material = k_obj_none;
    const Json number = json.value("material", Json());
    if (number.is_number_unsigned() && number.get<uint64_t>() < model_.materials.size())
        material = number.get<uint32_t>();
    model_.polygon_material.resize(model_.polygon_material.size() + primitive.corners.size() / 3,
                                   material);
    model_.polygon_part.resize(model_.polygon_part.size() + primitive.corners.size() / 3,
                               uint32_t(primitive.mesh));
    return true;
}

Matrix GltfScan::matrix_of(const Json& node) {
    if (node.contains("matrix"))
        return node["matrix"].get<Matrix>();
    const auto t = node.value("translation", std::array<double, 3>{0, 0, 0});
    const auto s = node.value("scale", std::array<double, 3>{1, 1, 1});
    const auto q = node.value("rotation", std::array<double, 4>{0, 0, 0, 1});
    const double x = q[0], y = q[1], z = q[2], w = q[3];
    Matrix matrix = {1 - 2 * (y * y + z * z),
                     2 * (x * y + z * w),
                     2 * (x * z - y * w),
                     0,
                     2 * (x * y - z * w),
                     1 - 2 * (x * x + z * z),
                     2 * (y * z + x * w),
                     0,
                     2 * (x * z + y * w),
                     2 * (y * z - x * w),
                     1 - 2 * (x * x + y * y),
                     0,
                     t[0],
                     t[1],
                     t[2],
                     1};
    for (size_t column = 0; column < 3; ++column)
        for (size_t row = 0; row < 3; ++row)
            matrix[4 * column + row] *= s[column];
    return matrix;
}

/// Nodes with their parents before them; nodes in a circle do not show anything. A node that is
/// listed more than once shows once: listing each twice makes 2^40 of 40 nodes.
void GltfScan::add_nodes() {
    const Json nodes = json_.value("nodes", Json::array());
    std::vector<std::vector<size_t>> children(nodes.size());
    std::vector<uint8_t> has_parent(nodes.size(), 0);
    for (size_t i = 0; i < nodes.size(); ++i)
        for (const Json& child : nodes[i].value("children", Json::array()))
            if (uint8_t& taken = has_parent[child.get<size_t>()]; !taken) {
                taken = 1;
                children[i].push_back(child.get<size_t>());
            }
    std::vector<std::pair<size_t, int32_t>> open; // a node, and its parent in the model
    for (size_t i = nodes.size(); i-- > 0;)
        if (!has_parent[i])
            open.emplace_back(i, -1);
    while (!open.empty()) {
        const auto [number, above] = open.back();
        open.pop_back();
        const Json& json = nodes[number];
        ModelNode node;
        node.name = name_of("nodes", number);
        node.parent = above;
        node.matrix = matrix_of(json);
        if (json.contains("mesh"))
            node.part = json["mesh"].get<int32_t>();
        const auto id = int32_t(model_.nodes.size());
        model_.nodes.push_back(std::move(node));
        for (size_t i = children[number].size(); i-- > 0;)
            open.emplace_back(children[number][i], id);
    }
}

bool GltfScan::run() {
    for (size_t i = 0; i < json_["meshes"].size(); ++i)
        model_.parts.push_back(name_of("meshes", i));
    for (size_t i = 0; i < json_.value("materials", Json::array()).size(); ++i)
        model_.materials.push_back(name_of("materials", i));
    for (const GltfPrimitive& primitive : mesh_.primitives)
        if (!add_primitive(primitive))
            return false;
    model_.metres = 1.0;
    add_nodes();
    return true;
}

void scan_solids(const MeshFile& file, Model& model) {
    for (size_t i = 0; i < file.solids.size(); ++i) {
        model.parts.push_back(file.solids[i].name);
        const size_t end = i + 1 < file.solids.size() ? file.solids[i + 1].first_polygon
                                                      : file.document.polygon_count();
        model.polygon_part.resize(end, uint32_t(i));
    }
}

/// Corners behind the last that a layer knows of have no value.
void fill_layers(Model& model) {
    const auto fill = [&](ModelLayer& layer) {
        if (layer.is_present())
            layer.corner.resize(model.corner_vertex.size(), k_obj_none);
    };
    fill(model.normals);
    fill(model.colors);
    for (ModelLayer& layer : model.other_uvs)
        fill(layer);
}

} // namespace

bool model_of(const MeshFile& file, const host::ObjUvs& uvs, Model& model, std::string& error) {
    model = file.model;
    if (file.is_foreign()) {
        // all is there but the coordinates
    } else if (file.format == Format::obj)
        ObjScan(file.document, model).run();
    else if (file.format == Format::ply)
        PlyScan(file.ply, model).run();
    else if (file.format == Format::stl)
        scan_solids(file, model);
    else
        try {
            if (!GltfScan(file.gltf, model, error).run())
                return false;
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception&) { // a member is used as what it is not
            error = k_wrong_type;
            return false;
        }
    take_mesh(file.document, uvs, model);
    if (model.uvs.name.empty())
        model.uvs.name = "map1";
    fill_layers(model);
    return true;
}

} // namespace formats
