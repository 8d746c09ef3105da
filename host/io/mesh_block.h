/// The polygon mesh of a scene file: points, edges, faces made of directed edges, UV sets.
#pragma once

#include "host/mesh/mesh.h"
#include "host/script/lexer.h"

#include <string>
#include <vector>

namespace host {

/// Gathers the setAttr statements of one mesh node.
class MeshBlock {
public:
    /// Takes the values set on an attribute path ("vt[0:7]", "uvst[0].uvsp[0:3]", "fc[0:5]"); false
    /// when the path is no part of the geometry. Throws ScriptFault on malformed values.
    bool take(const std::string& path, const std::vector<script::Token>& values);
    bool has_geometry() const { return !points_.empty(); }
    /// Throws ScriptFault when edges, vertices or UVs are named that are not there, and for faces
    /// with holes, which the host's mesh does not have.
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

    std::vector<Float3> points_;
    std::vector<int32_t> edges_; ///< two vertices and the smoothness each
    std::vector<uint32_t> counts_;
    std::vector<int32_t> face_edges_;
    std::vector<FaceUvs> face_uvs_;
    std::vector<Set> sets_;
    std::string current_set_;
};

/// Appends the setAttr lines that MeshBlock reads.
void write_mesh(const Mesh& mesh, std::string& text);

/// The shortest decimal that reads back as the same bits.
std::string shortest(float value);
std::string shortest(double value);

} // namespace host
