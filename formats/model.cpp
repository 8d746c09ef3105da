#include "formats/model.h"

#include "formats/limits.h"
#include "host/io/obj_scale.h"

#include <algorithm>
#include <cmath>

namespace formats {
namespace {

/// Of every node to the space of all.
std::vector<Matrix> world_matrices(const Model& model) {
    std::vector<Matrix> matrices;
    for (const ModelNode& node : model.nodes) // parents come first
        matrices.push_back(node.parent < 0 ? node.matrix
                                           : product(matrices[size_t(node.parent)], node.matrix));
    return matrices;
}

/// Of the upper left three rows and columns; entry (row, column) is at [row + 3 * column].
std::array<double, 9> cofactors(const Matrix& m) {
    std::array<double, 9> result;
    for (size_t column = 0; column < 3; ++column)
        for (size_t row = 0; row < 3; ++row) {
            const size_t r1 = (row + 1) % 3, r2 = (row + 2) % 3, c1 = (column + 1) % 3,
                         c2 = (column + 2) % 3;
            result[row + 3 * column] =
                m[r1 + 4 * c1] * m[r2 + 4 * c2] - m[r1 + 4 * c2] * m[r2 + 4 * c1];
        }
    return result;
}

/// Copies parts of a model to another, moved to where a node shows them.
class Placer {
public:
    Placer(const Model& from, Model& to)
        : from_(from), to_(to), matrices_(world_matrices(from)), polygons_(polygons_by_part(from)),
          vertices_(from.vertex_count(), host::k_obj_none) {}
    void place(size_t node);
    /// Of the result.
    uint64_t corner_count() const;

private:
    uint32_t vertex(uint32_t old, const Matrix& matrix);
    void copy_corner(uint32_t corner, const std::array<double, 9>& turn);

    const Model& from_;
    Model& to_;
    std::vector<Matrix> matrices_;                ///< of each node
    std::vector<std::vector<uint32_t>> polygons_; ///< of each part
    std::vector<uint32_t> vertices_, used_;       ///< of the present node
};

uint32_t Placer::vertex(uint32_t old, const Matrix& m) {
    uint32_t& known = vertices_[old];
    if (known != host::k_obj_none)
        return known;
    known = uint32_t(to_.vertex_count());
    used_.push_back(old);
    const float* p = &from_.positions[3 * size_t(old)];
    for (size_t row = 0; row < 3; ++row)
        to_.positions.push_back(float(m[row] * double(p[0]) + m[row + 4] * double(p[1]) +
                                      m[row + 8] * double(p[2]) + m[row + 12]));
    return known;
}

void Placer::copy_corner(uint32_t corner, const std::array<double, 9>& turn) {
    const auto copy = [&](const ModelLayer& from, ModelLayer& to) {
        if (from.is_present())
            to.corner.push_back(from.corner[corner]);
    };
    copy(from_.uvs, to_.uvs);
    copy(from_.colors, to_.colors);
    for (size_t i = 0; i < from_.other_uvs.size(); ++i)
        copy(from_.other_uvs[i], to_.other_uvs[i]);
    if (!from_.normals.is_present())
        return;
    if (from_.normals.corner[corner] == host::k_obj_none) {
        to_.normals.corner.push_back(host::k_obj_none);
        return;
    }
    const float* n = from_.normals.at(corner);
    double turned[3], length = 0.0;
    for (size_t row = 0; row < 3; ++row) {
        turned[row] =
            turn[row] * double(n[0]) + turn[row + 3] * double(n[1]) + turn[row + 6] * double(n[2]);
        length += turned[row] * turned[row];
    }
    if (!std::isfinite(length)) {
        to_.normals.corner.push_back(host::k_obj_none);
        return;
    }
    length = length > 0.0 ? std::sqrt(length) : 1.0;
    const float value[3] = {float(turned[0] / length), float(turned[1] / length),
                            float(turned[2] / length)};
    to_.normals.add(value);
}

uint64_t Placer::corner_count() const {
    std::vector<uint64_t> corners(polygons_.size(), 0);
    for (size_t part = 0; part < polygons_.size(); ++part)
        for (const uint32_t p : polygons_[part])
            corners[part] += from_.corner_begin[p + 1] - from_.corner_begin[p];
    uint64_t count = 0;
    for (const ModelNode& node : from_.nodes)
        count += node.part < 0 ? 0 : corners[size_t(node.part)];
    return count;
}

void Placer::place(size_t node) {
    const auto part = uint32_t(from_.nodes[node].part);
    const Matrix& matrix = matrices_[node];
    std::array<double, 9> turn = cofactors(matrix);
    const bool mirrors = matrix[0] * turn[0] + matrix[1] * turn[1] + matrix[2] * turn[2] < 0.0;
    for (double& value : turn)
        value = mirrors ? -value : value;
    const auto new_part = uint32_t(to_.parts.size());
    to_.parts.push_back(from_.nodes[node].name.empty() ? from_.parts[part]
                                                       : from_.nodes[node].name);
    for (const uint32_t p : polygons_[part]) {
        const uint32_t begin = from_.corner_begin[p], end = from_.corner_begin[p + 1];
        for (uint32_t c = begin; c < end; ++c) {
            const uint32_t corner = mirrors ? begin + (end - 1 - c) : c;
            to_.corner_vertex.push_back(vertex(from_.corner_vertex[corner], matrix));
            copy_corner(corner, turn);
        }
        to_.corner_begin.push_back(uint32_t(to_.corner_vertex.size()));
        to_.polygon_material.push_back(from_.polygon_material[p]);
        to_.polygon_part.push_back(new_part);
    }
    for (const uint32_t old : used_)
        vertices_[old] = host::k_obj_none;
    used_.clear();
}

} // namespace

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix result = {};
    for (size_t column = 0; column < 4; ++column)
        for (size_t row = 0; row < 4; ++row)
            for (size_t k = 0; k < 4; ++k)
                result[row + 4 * column] += a[row + 4 * k] * b[k + 4 * column];
    return result;
}

void take_mesh(const host::ObjDocument& document, const host::ObjUvs& uvs, Model& model) {
    model.positions = document.positions;
    model.corner_begin = document.corner_begin;
    model.corner_vertex = document.corner_vertex;
    model.uvs.components = 2;
    model.uvs.values.clear();
    for (size_t i = 0; i < uvs.u.size(); ++i)
        model.uvs.values.insert(model.uvs.values.end(), {uvs.u[i], uvs.v[i]});
    model.uvs.corner.assign(uvs.corner_uv.begin(), uvs.corner_uv.end()); // -1 is k_obj_none
    model.polygon_material.resize(model.polygon_count(), host::k_obj_none);
    model.polygon_part.resize(model.polygon_count(), 0);
    if (model.parts.empty())
        model.parts.emplace_back();
}

host::ObjDocument document_of(const Model& model, const std::string& name) {
    host::ObjDocument document;
    document.name = name;
    document.positions = model.positions;
    document.corner_begin = model.corner_begin;
    document.corner_vertex = model.corner_vertex;
    document.texture_coords = model.uvs.values;
    document.corner_texture = model.uvs.corner;
    document.corner_texture.resize(document.corner_vertex.size(), host::k_obj_none);
    std::vector<double> exact(model.positions.begin(), model.positions.end());
    fit_to_single_precision(exact, document);
    return document;
}

void add_missing_nodes(Model& model) {
    std::vector<char> is_shown(model.parts.size(), 0);
    for (const ModelNode& node : model.nodes)
        if (node.part >= 0)
            is_shown[size_t(node.part)] = 1;
    for (size_t part = 0; part < is_shown.size(); ++part)
        if (!is_shown[part]) {
            model.nodes.emplace_back();
            model.nodes.back().name = model.parts[part];
            model.nodes.back().part = int32_t(part);
        }
}

std::vector<std::vector<uint32_t>> polygons_by_part(const Model& model) {
    std::vector<std::vector<uint32_t>> polygons(model.parts.size());
    for (size_t p = 0; p < model.polygon_count(); ++p)
        polygons[model.polygon_part[p]].push_back(uint32_t(p));
    return polygons;
}

bool flatten(const Model& original, Model& flat, std::string& error) {
    Model model = original;
    if (model.nodes.empty()) { // all parts lie in one space, and may have common vertices
        flat = std::move(model);
        return true;
    }
    add_missing_nodes(model);
    flat = Model();
    flat.materials = model.materials;
    flat.metres = model.metres;
    const auto begin_layer = [](const ModelLayer& from, ModelLayer& to) {
        to.name = from.name;
        to.components = from.components;
        to.values = from.values;
    };
    begin_layer(model.uvs, flat.uvs);
    begin_layer(model.colors, flat.colors);
    flat.normals.components = 3;
    flat.other_uvs.resize(model.other_uvs.size());
    for (size_t i = 0; i < model.other_uvs.size(); ++i)
        begin_layer(model.other_uvs[i], flat.other_uvs[i]);
    Placer placer(model, flat);
    if (placer.corner_count() > k_max_corners) {
        error =
            "its instances have more than " + std::to_string(k_max_corners) + " corners together";
        return false;
    }
    for (size_t node = 0; node < model.nodes.size(); ++node)
        if (model.nodes[node].part >= 0)
            placer.place(node);
    const auto is_finite = [](float value) { return std::isfinite(value); };
    if (!std::all_of(flat.positions.begin(), flat.positions.end(), is_finite)) {
        error = "its nodes move vertices beyond what single precision can hold";
        return false;
    }
    return true;
}

} // namespace formats
