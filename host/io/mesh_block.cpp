#include "host/io/mesh_block.h"

#include "host/io/obj_mesh.h"
#include "host/io/obj_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace host {

namespace {

using script::ScriptFault;
using script::Token;
using script::TokenKind;

/// Items per setAttr statement, of sizes that other readers accept.
constexpr size_t k_triples_per_block = 166;
constexpr size_t k_faces_per_block = 500;

double number_of(const Token& token) {
    if (token.kind == TokenKind::integer || token.kind == TokenKind::real)
        return token.number.to_real();
    throw ScriptFault("A number is expected, not \"" + token.text + "\".");
}

int32_t int_of(const Token& token) {
    if (token.kind == TokenKind::integer)
        return token.number.to_int();
    throw ScriptFault("A whole number is expected, not \"" + token.text + "\".");
}

/// Returns "vt" and index 0 for "vt[0:7]"; the index is 0 if there is none.
std::string head_of(const std::string& path, size_t& index) {
    const size_t open = path.find('[');
    index =
        open == std::string::npos ? 0 : size_t(std::max(0L, std::atol(path.c_str() + open + 1)));
    return path.substr(0, open);
}

template <class T>
std::string shortest_text(T value) {
    if (value == T(0) && std::signbit(value))
        return "-0.0"; // "-0" would be read as a whole number, which has no sign
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, value);
    return std::string(text, end.ptr);
}

constexpr size_t k_max_uv_sets = 10000;

} // namespace

std::string shortest(float value) { return shortest_text(value); }
std::string shortest(double value) { return shortest_text(value); }

MeshBlock::Set& MeshBlock::set_at(size_t index) {
    if (index >= k_max_uv_sets)
        throw ScriptFault("There are too many UV sets.");
    if (index >= sets_.size())
        sets_.resize(index + 1);
    return sets_[index];
}

bool MeshBlock::take(const std::string& path, const std::vector<Token>& values) {
    size_t index = 0;
    const std::string head = head_of(path, index);
    if (head == "vt" || head == "vrts") {
        if (values.size() % 3 != 0)
            throw ScriptFault("Points come as triples of numbers.");
        for (size_t i = 0; i < values.size(); i += 3) {
            const Float3 p = {float(number_of(values[i])), float(number_of(values[i + 1])),
                              float(number_of(values[i + 2]))};
            points_.push_back(p);
        }
    } else if (head == "ed" || head == "edge") {
        if (values.size() % 3 != 0)
            throw ScriptFault("Edges come as triples of numbers.");
        for (const Token& value : values)
            edges_.push_back(int_of(value));
    } else if (head == "fc" || head == "face") {
        take_faces(values);
    } else if (head == "cuvs" || head == "currentUVSet") {
        if (!values.empty())
            current_set_ = values[0].text;
    } else if (head == k_obj_attribute) {
        if (!values.empty())
            obj_text_ = values[0].text;
    } else if (head == "uvst" || head == "uvSet") {
        const size_t dot = path.find("].");
        return dot == std::string::npos ? values.empty()
                                        : take_uvs(set_at(index), path.substr(dot + 2), values);
    } else {
        return false;
    }
    return true;
}

bool MeshBlock::take_uvs(Set& set, const std::string& path, const std::vector<Token>& values) {
    size_t index = 0;
    const std::string head = head_of(path, index);
    if (head == "uvsn" || head == "uvSetName") {
        if (!values.empty())
            set.name = values[0].text;
        return true;
    }
    if (head != "uvsp" && head != "uvSetPoints")
        return false;
    if (values.size() % 2 != 0)
        throw ScriptFault("UVs come in pairs of numbers.");
    for (size_t i = 0; i < values.size(); i += 2) {
        set.u.push_back(float(number_of(values[i])));
        set.v.push_back(float(number_of(values[i + 1])));
    }
    return true;
}

namespace {

/// Reads the words of a polyFaces statement one after the other.
class FaceWords {
public:
    explicit FaceWords(const std::vector<Token>& words) : words_(words) {}

    bool at_end() const { return next_ == words_.size(); }
    const Token& next() {
        if (at_end())
            throw ScriptFault("The list of faces ends too early.");
        return words_[next_++];
    }
    /// Appends a list "COUNT ID ID ..."; returns the count.
    uint32_t ids(std::vector<int32_t>& list) {
        const int32_t count = int_of(next());
        if (count < 0 || size_t(count) > words_.size() - next_)
            throw ScriptFault("A face has " + std::to_string(count) +
                              " corners, which are not there.");
        for (int32_t i = 0; i < count; ++i)
            list.push_back(int_of(next()));
        return uint32_t(count);
    }

private:
    const std::vector<Token>& words_;
    size_t next_ = 0;
};

} // namespace

void MeshBlock::take_faces(const std::vector<Token>& values) {
    FaceWords words(values);
    std::vector<int32_t> ignored;
    while (!words.at_end()) {
        const std::string key = words.next().text;
        if (key == "f") {
            counts_.push_back(words.ids(face_edges_));
        } else if (key == "h") {
            throw ScriptFault("Faces with holes are not supported.");
        } else if (key == "mu") {
            if (counts_.empty())
                throw ScriptFault("UVs come before the first face.");
            FaceUvs uvs;
            uvs.face = uint32_t(counts_.size() - 1);
            uvs.set = uint32_t(int_of(words.next()));
            words.ids(uvs.ids);
            face_uvs_.push_back(std::move(uvs));
        } else if (key == "mc") {
            words.next();
            words.ids(ignored);
        } else if (key == "fc" || key == "mf" || key == "mh") {
            words.ids(ignored);
        } else {
            throw ScriptFault("\"" + key + "\" is no part of a face.");
        }
    }
}

Mesh MeshBlock::build() const {
    std::vector<uint32_t> vertices;
    vertices.reserve(face_edges_.size());
    for (const int32_t id : face_edges_) {
        const size_t edge = id < 0 ? size_t(-(int64_t(id) + 1)) : size_t(id);
        if (edge * 3 + 2 >= edges_.size())
            throw ScriptFault("A face names edge " + std::to_string(edge) +
                              ", which is not there.");
        vertices.push_back(uint32_t(edges_[edge * 3 + (id < 0 ? 1 : 0)]));
    }
    Mesh mesh;
    if (!Mesh::make(points_, counts_, vertices, mesh))
        throw ScriptFault(
            "The faces do not make a mesh: a vertex is not there, or a face has fewer "
            "than three corners.");
    for (const Set& set : sets_) {
        UvSet& made = mesh.edit_uv_set(mesh.add_uv_set(set.name.c_str()));
        made.u = set.u;
        made.v = set.v;
        made.corner_uvs.assign(vertices.size(), -1);
    }
    for (const FaceUvs& uvs : face_uvs_) {
        if (uvs.set >= sets_.size())
            throw ScriptFault("A face names a UV set that is not there.");
        UvSet& set = mesh.edit_uv_set(uvs.set);
        const uint32_t first = mesh.connectivity().first_corner(uvs.face);
        if (uvs.ids.size() != mesh.connectivity().corners_of(uvs.face))
            throw ScriptFault("A face has another number of UVs than of corners.");
        for (size_t i = 0; i < uvs.ids.size(); ++i) {
            if (uvs.ids[i] < -1 || uvs.ids[i] >= int64_t(set.u.size()))
                throw ScriptFault("A face names a UV that is not there.");
            set.corner_uvs[first + i] = uvs.ids[i];
        }
    }
    const int current = mesh.find_uv_set(current_set_.c_str());
    if (current >= 0)
        mesh.set_current_uv_set(current);
    attach_origin(mesh);
    return mesh;
}

/// Attaches the OBJ file, if it is one and has the mesh's polygons.
void MeshBlock::attach_origin(Mesh& mesh) const {
    ObjDocument document;
    IoError error;
    if (obj_text_.empty() || !parse_obj("scene", obj_text_, document, error))
        return;
    const Connectivity& polygons = mesh.connectivity();
    bool is_same = document.polygon_count() == polygons.polygon_count() &&
                   document.vertex_count() <= polygons.vertex_count();
    for (uint32_t polygon = 0; is_same && polygon < polygons.polygon_count(); ++polygon)
        is_same = document.corner_begin[polygon + 1] - document.corner_begin[polygon] ==
                  polygons.corners_of(polygon);
    if (!is_same)
        return;
    document.unit_positions = {}; // not needed for an export
    mesh.set_origin(std::make_shared<ObjOrigin>(std::move(document)));
}

// --- writing ------------------------------------------------------------------------------------

namespace {

std::string range(size_t first, size_t count) {
    return "[" + std::to_string(first) + ":" + std::to_string(first + count - 1) + "]";
}

/// Writes items in statements `setAttr ".PATH[a:b]" ...` of at most `per_block` items each.
template <class Item>
void write_blocks(std::string& text, const std::string& path, const char* type, size_t count,
                  size_t per_block, Item item) {
    for (size_t first = 0; first < count; first += per_block) {
        const size_t size = std::min(per_block, count - first);
        text += "\tsetAttr ";
        if (first == 0)
            text += "-s " + std::to_string(count) + " ";
        text += "\"." + path + range(first, size) + "\"" + type;
        for (size_t i = first; i < first + size; ++i) {
            if (i % 8 == 0)
                text += "\n\t\t";
            item(i);
        }
        text += ";\n";
    }
}

void write_face(const Mesh& mesh, uint32_t face, std::string& text) {
    const Connectivity& connectivity = mesh.connectivity();
    const IndexSpan vertices = connectivity.polygon_vertices(face);
    const IndexSpan edges = connectivity.polygon_edges(face);
    text += "\n\t\tf " + std::to_string(edges.size());
    for (uint32_t i = 0; i < edges.size(); ++i) {
        const bool forward = connectivity.edge(edges[i]).first == vertices[i];
        text += " " + std::to_string(forward ? int64_t(edges[i]) : -int64_t(edges[i]) - 1);
    }
    const uint32_t first = connectivity.first_corner(face);
    for (uint32_t set = 0; set < mesh.uv_set_count(); ++set) {
        const std::vector<int32_t>& ids = mesh.uv_set(set).corner_uvs;
        bool mapped = false;
        for (uint32_t i = 0; i < edges.size(); ++i)
            mapped = mapped || ids[first + i] >= 0;
        if (!mapped)
            continue;
        text += "\n\t\tmu " + std::to_string(set) + " " + std::to_string(edges.size());
        for (uint32_t i = 0; i < edges.size(); ++i)
            text += " " + std::to_string(ids[first + i]);
    }
}

} // namespace

void write_mesh(const Mesh& mesh, std::string& text) {
    for (uint32_t i = 0; i < mesh.uv_set_count(); ++i) {
        const UvSet& set = mesh.uv_set(i);
        const std::string path = "uvst[" + std::to_string(i) + "]";
        text += "\tsetAttr \"." + path + ".uvsn\" -type \"string\" " +
                script::quoted(set.name.asChar()) + ";\n";
        write_blocks(text, path + ".uvsp", " -type \"float2\"", set.u.size(), 250, [&](size_t k) {
            text += " " + shortest(set.u[k]) + " " + shortest(set.v[k]);
        });
    }
    if (mesh.current_uv_set() >= 0)
        text += "\tsetAttr \".cuvs\" -type \"string\" " +
                script::quoted(mesh.uv_set(uint32_t(mesh.current_uv_set())).name.asChar()) + ";\n";
    const std::vector<Float3>& points = mesh.points();
    write_blocks(text, "vt", "", points.size(), k_triples_per_block, [&](size_t i) {
        text +=
            " " + shortest(points[i].x) + " " + shortest(points[i].y) + " " + shortest(points[i].z);
    });
    const Connectivity& connectivity = mesh.connectivity();
    write_blocks(text, "ed", "", connectivity.edge_count(), k_triples_per_block, [&](size_t i) {
        const auto& edge = connectivity.edge(uint32_t(i));
        text += " " + std::to_string(edge.first) + " " + std::to_string(edge.second) + " 0";
    });
    const size_t faces = connectivity.polygon_count();
    for (size_t first = 0; first < faces; first += k_faces_per_block) {
        const size_t size = std::min(k_faces_per_block, faces - first);
        text += "\tsetAttr ";
        if (first == 0)
            text += "-s " + std::to_string(faces) + " ";
        text += "\".fc" + range(first, size) + "\" -type \"polyFaces\"";
        for (size_t i = first; i < first + size; ++i)
            write_face(mesh, uint32_t(i), text);
        text += ";\n";
    }
}

} // namespace host
