/// A mesh on its way from one format into another: what most formats can say about one.
///
/// Readers make it from a file that was read (model_readers.cpp), or the importer sends it
/// (model_stream.h); writers make new files of it (model_writers.h). docs/formats.md tells what
/// each format keeps.
#pragma once

#include "host/io/obj_document.h"
#include "host/io/obj_writer.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace formats {

/// Values at corners: texture coordinates, normals or colours.
struct ModelLayer {
    std::string name;
    size_t components = 0; ///< 2, 3 or 4
    std::vector<float> values;
    std::vector<uint32_t> corner; ///< per corner a value's number or k_obj_none; empty: no layer

    bool is_present() const { return !corner.empty(); }
    const float* at(size_t c) const { return &values[components * corner[c]]; }
    void add(const float* value) {
        corner.push_back(uint32_t(values.size() / components));
        values.insert(values.end(), value, value + components);
    }
};

/// By columns, as glTF has it.
using Matrix = std::array<double, 16>;
inline constexpr Matrix k_identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

struct ModelNode {
    std::string name;
    int32_t parent = -1;        ///< a node before this one, or -1
    int32_t part = -1;          ///< that is shown here, or -1
    Matrix matrix = k_identity; ///< to the parent's space
};

struct Model {
    std::vector<float> positions;             ///< 3 per vertex, in the space of its part
    std::vector<uint32_t> corner_begin = {0}; ///< polygons + 1 entries
    std::vector<uint32_t> corner_vertex;
    ModelLayer uvs;                    ///< the set that unwrapping makes anew
    std::vector<ModelLayer> other_uvs; ///< in their order in the file
    ModelLayer normals, colors;
    std::vector<std::string> materials;
    std::vector<uint32_t> polygon_material; ///< per polygon, k_obj_none if it has none
    std::vector<std::string> parts;         ///< names of meshes
    std::vector<uint32_t> polygon_part;
    std::vector<ModelNode> nodes;
    double metres = 0.0;               ///< a unit of length; 0 if the file does not tell
    std::vector<std::string> left_out; ///< kinds of things that the imported file has beside these

    size_t vertex_count() const { return positions.size() / 3; }
    size_t polygon_count() const { return corner_begin.size() - 1; }
};

/// Corner by corner of the document as it is in memory, with the coordinates given.
void take_mesh(const host::ObjDocument& document, const host::ObjUvs& uvs, Model& model);
/// The document of a model, for the program to work on. Positions must be finite.
host::ObjDocument document_of(const Model& model, const std::string& name);

/// Gives every part at least one node.
void add_missing_nodes(Model& model);
/// All parts where their nodes show them, as one mesh in one space, a part for each showing. A node
/// that mirrors reverses the polygons.
/// Errors: false with a reason in `error` if that is more than 2^31 - 1 corners, or positions that
///         are not finite.
bool flatten(const Model& model, Model& flat, std::string& error);
/// The polygons of each part.
std::vector<std::vector<uint32_t>> polygons_by_part(const Model& model);

Matrix product(const Matrix& a, const Matrix& b);

} // namespace formats
