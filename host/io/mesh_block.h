/// Polygon meshes in scene files: points, edges, faces as lists of directed edges, UV sets.
#pragma once

#include "host/mesh/mesh.h"
#include "host/script/lexer.h"

#include <string>
#include <vector>

namespace host {

/// Attribute of a mesh node with the text of the OBJ file that the mesh was read from.
inline constexpr const char* k_obj_attribute = "objText";

/// Collects the setAttr statements of one mesh node and builds its mesh.
class MeshBlock {
public:
    /// Adds the values of an attribute such as "vt[0:7]", "uvst[0].uvsp[0:3]" or "fc[0:5]". Returns
    /// false if the attribute is not geometry. Throws ScriptFault if the values are malformed.
    bool take(const std::string& path, const std::vector<script::Token>& values);
    bool has_geometry() const { return !points_.empty(); }
    /// Throws ScriptFault if an index is out of range, a face has fewer than three corners, or its
    /// number of UVs differs from its number of corners.
    Mesh build() const;

private:
    struct Set {
        std::string name;
        std::vector<float> u, v;
    };
    struct FaceUvs {
        uint32_t face, set;
        std::vector<int32_t> ids;
    };
    void take_faces(const std::vector<script::Token>& values);
    bool take_uvs(Set& set, const std::string& path, const std::vector<script::Token>& values);
    Set& set_at(size_t index);
    void attach_origin(Mesh& mesh) const;

    std::vector<Float3> points_;
    std::vector<int32_t> edges_; ///< per edge: two vertices and smoothness
    std::vector<uint32_t> counts_;
    std::vector<int32_t> face_edges_;
    std::vector<FaceUvs> face_uvs_;
    std::vector<Set> sets_;
    std::string current_set_;
    std::string obj_text_;
};

/// Appends a mesh to `text` as the setAttr statements that MeshBlock reads.
void write_mesh(const Mesh& mesh, std::string& text);

/// The shortest decimal that reads back as the same value.
std::string shortest(float value);
std::string shortest(double value);

} // namespace host
