#include "formats/model_writers.h"
#include "formats/text_parts.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace formats {
namespace {

constexpr double k_pi = 3.14159265358979323846;

/// A matrix as FBX has it: moved, turned about x, then y, then z (degrees), scaled.
struct Placement {
    double move[3], turn[3], scale[3];
};

/// Returns false if the matrix is none: it shears, or has no size in a direction.
bool decompose(const Matrix& m, Placement& placement) {
    double axis[3][3];
    for (size_t column = 0; column < 3; ++column) {
        placement.move[column] = m[12 + column];
        double& length = placement.scale[column] =
            std::hypot(m[4 * column], m[4 * column + 1], m[4 * column + 2]);
        if (!(length > 0.0) || !std::isfinite(length) || !std::isfinite(m[12 + column]))
            return false;
        for (size_t row = 0; row < 3; ++row)
            axis[column][row] = m[4 * column + row] / length;
    }
    const auto dot = [&](size_t a, size_t b) {
        return axis[a][0] * axis[b][0] + axis[a][1] * axis[b][1] + axis[a][2] * axis[b][2];
    };
    constexpr double k_shear = 1e-5;
    if (std::fabs(dot(0, 1)) > k_shear || std::fabs(dot(0, 2)) > k_shear ||
        std::fabs(dot(1, 2)) > k_shear || m[3] != 0.0 || m[7] != 0.0 || m[11] != 0.0 ||
        m[15] != 1.0)
        return false;
    const double volume = axis[0][0] * (axis[1][1] * axis[2][2] - axis[1][2] * axis[2][1]) +
                          axis[1][0] * (axis[2][1] * axis[0][2] - axis[2][2] * axis[0][1]) +
                          axis[2][0] * (axis[0][1] * axis[1][2] - axis[0][2] * axis[1][1]);
    if (volume < 0.0) { // a mirror is a negative scale
        placement.scale[0] = -placement.scale[0];
        for (double& value : axis[0])
            value = -value;
    }
    const double sine = std::clamp(-axis[0][2], -1.0, 1.0);
    const bool is_straight_up = std::fabs(sine) > 1.0 - 1e-12;
    placement.turn[1] = std::asin(sine) * 180.0 / k_pi;
    placement.turn[0] = (is_straight_up ? std::atan2(-axis[2][1], axis[1][1])
                                        : std::atan2(axis[1][2], axis[2][2])) *
                        180.0 / k_pi;
    placement.turn[2] = is_straight_up ? 0.0 : std::atan2(axis[0][1], axis[0][0]) * 180.0 / k_pi;
    return true;
}

std::string quoted(const std::string& name) {
    std::string text;
    for (const char c : one_line(name))
        text += c == '"' ? "&quot;" : std::string(1, c);
    return text;
}

class Writer {
public:
    Writer(const Model& model, std::string& text) : model_(model), text_(text) {}
    void run();

private:
    void add_head();
    void add_geometry(uint32_t part);
    void add_points(uint32_t part);
    void add_node(size_t node, const Placement& placement);
    void add_connections();
    void add_layer(const ModelLayer& layer, uint32_t part, size_t number, const char* kind,
                   const char* values, const char* index);
    void add_materials(uint32_t part);
    void add_material(size_t material);
    template <class Number>
    void add_array(const char* name, const std::vector<Number>& values, const char* tabs);
    void line(const std::string& text) { text_ += text + "\n"; }
    std::vector<uint32_t> materials_of(uint32_t part) const;
    int64_t geometry_id(size_t part) const { return int64_t(1000000 + part); }
    int64_t node_id(size_t node) const { return int64_t(2000000000 + node); }
    int64_t material_id(size_t material) const { return int64_t(3000000000 + int64_t(material)); }

    const Model& model_;
    std::string& text_;
    std::vector<std::vector<uint32_t>> polygons_; ///< of each part
};

void append_value(int32_t value, std::string& text, char before) {
    append_number(value, text, before);
}

/// Readers such as Assimp's sum what stands before and behind the point in single precision and
/// take an exponent for a power: the shortest text may come back as the next value. Nine digits
/// without an exponent come back as they were.
void append_value(float value, std::string& text, char before) {
    const double size = std::fabs(double(value));
    if (!(size >= 1e-6 && size < 1e18))
        return append_number(value, text, before);
    const int decimals = std::max(0, 8 - int(std::floor(std::log10(size))));
    char digits[40];
    char* end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals)
            .ptr;
    while (decimals > 0 && end[-1] == '0')
        --end;
    text += before;
    text.append(digits, end[-1] == '.' ? end - 1 : end);
}

template <class Number>
void Writer::add_array(const char* name, const std::vector<Number>& values, const char* tabs) {
    text_ +=
        std::string(tabs) + name + ": *" + std::to_string(values.size()) + " {\n" + tabs + "\ta: ";
    for (size_t i = 0; i < values.size(); ++i) {
        append_value(values[i], text_, i == 0 ? ' ' : ',');
        if (i % 64 == 63 && i + 1 < values.size())
            text_ += "\n"; // some readers limit the length of a line
    }
    text_ += std::string("\n") + tabs + "}\n";
}

void Writer::add_head() {
    const double unit = model_.metres > 0.0 ? 100.0 * model_.metres : 1.0; // in centimetres
    line("; FBX 7.4.0 project file");
    line("FBXHeaderExtension:  {\n\tFBXHeaderVersion: 1003\n\tFBXVersion: 7400\n"
         "\tCreator: \"tessora\"\n}");
    line("GlobalSettings:  {\n\tVersion: 1000\n\tProperties70:  {");
    for (const char* setting :
         {"UpAxis\", \"int\", \"Integer\", \"\",1", "UpAxisSign\", \"int\", \"Integer\", \"\",1",
          "FrontAxis\", \"int\", \"Integer\", \"\",2",
          "FrontAxisSign\", \"int\", \"Integer\", \"\",1",
          "CoordAxis\", \"int\", \"Integer\", \"\",0",
          "CoordAxisSign\", \"int\", \"Integer\", \"\",1"})
        line(std::string("\t\tP: \"") + setting);
    text_ += "\t\tP: \"UnitScaleFactor\", \"double\", \"Number\", \"\"";
    append_number(unit, text_, ',');
    line("\n\t}\n}");
    line("Definitions:  {\n\tVersion: 100\n\tCount: " +
         std::to_string(1 + model_.nodes.size() + model_.parts.size() + model_.materials.size()) +
         "\n\tObjectType: \"GlobalSettings\" {\n\t\tCount: 1\n\t}");
    const std::pair<const char*, size_t> types[] = {{"Model", model_.nodes.size()},
                                                    {"Geometry", model_.parts.size()},
                                                    {"Material", model_.materials.size()}};
    for (const auto& [type, count] : types)
        line(std::string("\tObjectType: \"") + type + "\" {\n\t\tCount: " + std::to_string(count) +
             "\n\t}");
    line("}");
}

void Writer::add_points(uint32_t part) {
    std::map<uint32_t, int32_t> numbers; // in the order of the vertices
    for (const uint32_t p : polygons_[part])
        for (uint32_t c = model_.corner_begin[p]; c < model_.corner_begin[p + 1]; ++c)
            numbers[model_.corner_vertex[c]] = 0;
    std::vector<float> points;
    for (auto& [vertex, number] : numbers) {
        number = int32_t(points.size() / 3);
        for (size_t k = 0; k < 3; ++k)
            points.push_back(model_.positions[3 * size_t(vertex) + k]);
    }
    std::vector<int32_t> corners;
    for (const uint32_t p : polygons_[part]) {
        for (uint32_t c = model_.corner_begin[p]; c < model_.corner_begin[p + 1]; ++c)
            corners.push_back(numbers[model_.corner_vertex[c]]);
        corners.back() = -corners.back() - 1; // the last of its polygon
    }
    add_array("Vertices", points, "\t\t");
    add_array("PolygonVertexIndex", corners, "\t\t");
}

/// The values that the part's corners use, and per corner which. A corner without gets zeros.
void Writer::add_layer(const ModelLayer& layer, uint32_t part, size_t number, const char* kind,
                       const char* values, const char* index) {
    std::map<uint32_t, int32_t> numbers;
    std::vector<float> used;
    std::vector<int32_t> corners;
    for (const uint32_t p : polygons_[part])
        for (uint32_t c = model_.corner_begin[p]; c < model_.corner_begin[p + 1]; ++c) {
            const uint32_t id = layer.corner[c];
            const auto [known, is_new] =
                numbers.try_emplace(id, int32_t(used.size() / layer.components));
            for (size_t k = 0; k < layer.components && is_new; ++k)
                used.push_back(id == host::k_obj_none
                                   ? 0.0f
                                   : layer.values[layer.components * size_t(id) + k]);
            corners.push_back(known->second);
        }
    line(std::string("\t\t") + kind + ": " + std::to_string(number) + " {\n\t\t\tVersion: 101\n" +
         "\t\t\tName: \"" + quoted(layer.name) +
         "\"\n\t\t\tMappingInformationType: \"ByPolygonVertex\"\n"
         "\t\t\tReferenceInformationType: \"IndexToDirect\"");
    add_array(values, used, "\t\t\t");
    add_array(index, corners, "\t\t\t");
    line("\t\t}");
}

std::vector<uint32_t> Writer::materials_of(uint32_t part) const {
    std::vector<uint32_t> materials;
    for (const uint32_t p : polygons_[part])
        if (const uint32_t m = model_.polygon_material[p]; m != host::k_obj_none)
            if (std::find(materials.begin(), materials.end(), m) == materials.end())
                materials.push_back(m);
    return materials;
}

/// Numbers of materials count those of the node, in the order of their connections.
void Writer::add_materials(uint32_t part) {
    const std::vector<uint32_t> materials = materials_of(part);
    std::vector<int32_t> numbers;
    for (const uint32_t p : polygons_[part]) {
        const auto at = std::find(materials.begin(), materials.end(), model_.polygon_material[p]);
        numbers.push_back(at == materials.end() ? 0 : int32_t(at - materials.begin()));
    }
    line("\t\tLayerElementMaterial: 0 {\n\t\t\tVersion: 101\n\t\t\tName: \"\"\n"
         "\t\t\tMappingInformationType: \"ByPolygon\"\n"
         "\t\t\tReferenceInformationType: \"IndexToDirect\"");
    add_array("Materials", numbers, "\t\t\t");
    line("\t\t}");
}

void Writer::add_geometry(uint32_t part) {
    line("\tGeometry: " + std::to_string(geometry_id(part)) + ", \"Geometry::" +
         quoted(model_.parts[part]) + "\", \"Mesh\" {\n\t\tGeometryVersion: 124");
    add_points(part);
    std::vector<std::string> layers;
    const auto name_layer = [&](const char* kind, size_t number) {
        layers.resize(std::max(layers.size(), number + 1));
        layers[number] += std::string("\t\t\tLayerElement:  {\n\t\t\t\tType: \"") + kind +
                          "\"\n\t\t\t\tTypedIndex: " + std::to_string(number) + "\n\t\t\t}\n";
    };
    if (model_.normals.is_present()) {
        add_layer(model_.normals, part, 0, "LayerElementNormal", "Normals", "NormalsIndex");
        name_layer("LayerElementNormal", 0);
    }
    if (model_.colors.is_present()) {
        add_layer(model_.colors, part, 0, "LayerElementColor", "Colors", "ColorIndex");
        name_layer("LayerElementColor", 0);
    }
    add_layer(model_.uvs, part, 0, "LayerElementUV", "UV", "UVIndex");
    name_layer("LayerElementUV", 0);
    for (size_t i = 0; i < model_.other_uvs.size(); ++i) {
        add_layer(model_.other_uvs[i], part, i + 1, "LayerElementUV", "UV", "UVIndex");
        name_layer("LayerElementUV", i + 1);
    }
    add_materials(part);
    name_layer("LayerElementMaterial", 0);
    for (size_t i = 0; i < layers.size(); ++i)
        line("\t\tLayer: " + std::to_string(i) + " {\n\t\t\tVersion: 100\n" + layers[i] + "\t\t}");
    line("\t}");
}

void Writer::add_node(size_t number, const Placement& placement) {
    const ModelNode& node = model_.nodes[number];
    line("\tModel: " + std::to_string(node_id(number)) + ", \"Model::" + quoted(node.name) +
         "\", \"" + (node.part >= 0 ? "Mesh" : "Null") +
         "\" {\n\t\tVersion: 232\n\t\tProperties70:  {");
    const std::pair<const char*, const double*> properties[] = {{"Lcl Translation", placement.move},
                                                                {"Lcl Rotation", placement.turn},
                                                                {"Lcl Scaling", placement.scale}};
    for (const auto& [name, values] : properties) {
        text_ += std::string("\t\t\tP: \"") + name + "\", \"" + name + "\", \"\", \"A\"";
        for (size_t k = 0; k < 3; ++k)
            append_number(values[k], text_, ',');
        text_ += '\n';
    }
    line("\t\t}\n\t\tShading: T\n\t\tCulling: \"CullingOff\"\n\t}");
}

void Writer::add_material(size_t material) {
    line("\tMaterial: " + std::to_string(material_id(material)) +
         ", \"Material::" + quoted(model_.materials[material]) +
         "\", \"\" {\n\t\tVersion: 102\n\t\tShadingModel: \"lambert\"\n\t}");
}

void Writer::add_connections() {
    const auto connect = [&](int64_t child, int64_t parent) {
        line("\tC: \"OO\"," + std::to_string(child) + "," + std::to_string(parent));
    };
    line("Connections:  {");
    for (size_t i = 0; i < model_.nodes.size(); ++i) {
        const ModelNode& node = model_.nodes[i];
        connect(node_id(i), node.parent < 0 ? 0 : node_id(size_t(node.parent)));
        if (node.part < 0)
            continue;
        connect(geometry_id(size_t(node.part)), node_id(i));
        for (const uint32_t material : materials_of(uint32_t(node.part)))
            connect(material_id(material), node_id(i));
    }
    line("}");
}

void Writer::run() {
    polygons_ = polygons_by_part(model_);
    text_.clear();
    add_head();
    line("Objects:  {");
    for (uint32_t part = 0; part < model_.parts.size(); ++part)
        add_geometry(part);
    for (size_t i = 0; i < model_.nodes.size(); ++i) {
        Placement placement = {};
        decompose(model_.nodes[i].matrix, placement);
        add_node(i, placement);
    }
    for (size_t i = 0; i < model_.materials.size(); ++i)
        add_material(i);
    line("}");
    add_connections();
}

} // namespace

bool model_to_fbx(const Model& original, std::string& text, std::string& error) {
    Model model = original;
    Placement ignored;
    for (const ModelNode& node : original.nodes)
        if (!decompose(node.matrix, ignored)) {
            if (!flatten(original, model, error))
                return false;
            break;
        }
    add_missing_nodes(model);
    Writer(model, text).run();
    return true;
}

} // namespace formats
