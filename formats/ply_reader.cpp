#include "formats/ply_mesh.h"
#include "formats/value_ids.h"
#include "host/io/obj_scale.h"

#include <cmath>
#include <limits>

namespace formats {
namespace {

class Reader {
public:
    Reader(uint64_t max_corners, PlyMesh& mesh, host::ObjDocument& document, host::IoError& error)
        : max_corners_(max_corners), mesh_(mesh), document_(document), error_(error) {}
    bool run();

private:
    bool find_properties();
    bool read_vertices();
    bool read_vertex(uint64_t row, PlyCursor& cursor);
    bool read_faces();
    bool read_indices(uint64_t row, PlyCursor& cursor);
    bool read_texcoord(PlyCursor& cursor);
    void add_corners();
    void finish();
    bool fail(const std::string& reason, host::IoError::Kind kind = host::IoError::malformed) {
        error_ = {kind, document_.name + ": " + reason};
        return false;
    }
    bool fail_at(const PlyCursor& cursor, const std::string& reason) {
        return fail(ply_place(mesh_.file, cursor.begin_of_last()) + ": " + reason);
    }

    const uint64_t max_corners_;
    PlyMesh& mesh_;
    host::ObjDocument& document_;
    host::IoError& error_;
    const PlyElement* vertices_ = nullptr;
    const PlyElement* faces_ = nullptr;
    int xyz_[3] = {-1, -1, -1};
    std::vector<double> exact_;
    std::vector<uint32_t> vertex_of_row_; ///< empty if they are the same
    std::vector<float> row_uv_;           ///< per row of the file, if vertices have coordinates
    ValueIds places_, coordinates_;
    std::vector<uint32_t> face_; ///< the present face's rows
    std::vector<float> face_uv_; ///< its coordinates; empty if it has none
    uint64_t small_faces_ = 0, odd_lists_ = 0;
};

bool Reader::find_properties() {
    const PlyFile& file = mesh_.file;
    vertices_ = file.find("vertex");
    faces_ = file.find("face");
    if (!faces_ && file.find("tristrips"))
        return fail("its triangles are strips (element tristrips), which are not read; save it "
                    "with faces");
    if (!vertices_)
        return fail("no mesh in the file: it has no vertices");
    if (!faces_)
        return fail("no faces in the file, only " + std::to_string(vertices_->count) + " vertices");
    const char* const names[] = {"x", "y", "z"};
    for (int k = 0; k < 3; ++k) {
        xyz_[k] = vertices_->find(names[k]);
        if (xyz_[k] < 0 || vertices_->properties[size_t(xyz_[k])].is_list)
            return fail(std::string("the vertices have no ") + names[k]);
    }
    const auto is_list = [&](int p) { return p >= 0 && faces_->properties[size_t(p)].is_list; };
    for (const char* name : {"vertex_indices", "vertex_index"})
        if (mesh_.indices < 0)
            mesh_.indices = faces_->find(name);
    if (!is_list(mesh_.indices) || is_ply_real(faces_->properties[size_t(mesh_.indices)].type))
        return fail("the faces have no list of whole numbers named vertex_indices");
    mesh_.texcoord = faces_->find("texcoord");
    if (!is_list(mesh_.texcoord))
        mesh_.texcoord = -1;
    for (const auto& [u, v] : {std::pair{"s", "t"}, {"u", "v"}, {"texture_u", "texture_v"}})
        if (const int a = vertices_->find(u), b = vertices_->find(v);
            mesh_.u < 0 && a >= 0 && b >= 0 && !vertices_->properties[size_t(a)].is_list &&
            !vertices_->properties[size_t(b)].is_list) {
            mesh_.u = a;
            mesh_.v = b;
        }
    return true;
}

bool Reader::read_vertex(uint64_t row, PlyCursor& cursor) {
    double place[3] = {}, uv[2] = {};
    for (int p = 0; p < int(vertices_->properties.size()); ++p) {
        const PlyProperty& property = vertices_->properties[size_t(p)];
        double value = 0.0;
        uint64_t ignored = 0;
        if (property.is_list ? !cursor.skip(property, ignored) : !cursor.next(property.type, value))
            return fail_at(cursor, cursor.error());
        for (int k = 0; k < 3; ++k)
            if (p == xyz_[k]) {
                place[k] = value;
                if (!std::isfinite(float(value)))
                    return fail_at(cursor, "vertex " + std::to_string(row) +
                                               " has a position that is not finite");
            }
        if (p == mesh_.u)
            uv[0] = value;
        if (p == mesh_.v)
            uv[1] = value;
    }
    const float single[3] = {float(place[0]), float(place[1]), float(place[2])};
    auto vertex = uint32_t(document_.vertex_count());
    if (mesh_.u >= 0) {
        row_uv_.insert(row_uv_.end(), {float(uv[0]), float(uv[1])});
        vertex = places_.of(single, 3, vertex);
        vertex_of_row_.push_back(vertex);
        if (vertex < document_.vertex_count())
            return true;
    }
    document_.positions.insert(document_.positions.end(), single, single + 3);
    exact_.insert(exact_.end(), place, place + 3);
    return true;
}

bool Reader::read_vertices() {
    if (vertices_->count > max_corners_)
        return fail("more than " + std::to_string(max_corners_) + " vertices",
                    host::IoError::too_large);
    for (uint64_t row = 0; row < vertices_->rows.size(); ++row) {
        PlyCursor cursor(mesh_.file, vertices_->rows[row]);
        if (!read_vertex(row, cursor))
            return false;
    }
    return true;
}

bool Reader::read_indices(uint64_t row, PlyCursor& cursor) {
    const PlyProperty& list = faces_->properties[size_t(mesh_.indices)];
    uint64_t count = 0;
    cursor.next_count(list, count); // checked before, as all values below
    face_.clear();
    for (uint64_t i = 0; i < count; ++i) {
        double value = 0.0;
        cursor.next(list.type, value);
        if (!(value >= 0.0 && value < double(vertices_->rows.size())) || value != std::floor(value))
            return fail_at(cursor, "face " + std::to_string(row) +
                                       " names a vertex that the file " +
                                       "does not have (there are " +
                                       std::to_string(vertices_->rows.size()) + ", from 0)");
        face_.push_back(uint32_t(value));
    }
    return true;
}

bool Reader::read_texcoord(PlyCursor& cursor) {
    const PlyProperty& list = faces_->properties[size_t(mesh_.texcoord)];
    uint64_t count = 0;
    cursor.next_count(list, count);
    face_uv_.clear();
    for (uint64_t i = 0; i < count; ++i) {
        double value = 0.0;
        cursor.next(list.type, value);
        face_uv_.push_back(float(value));
    }
    return true;
}

void Reader::add_corners() {
    const bool has_list = face_uv_.size() == 2 * face_.size();
    odd_lists_ += !has_list && !face_uv_.empty();
    for (size_t c = 0; c < face_.size(); ++c) {
        const uint32_t row = face_[c];
        const float* uv = has_list                             ? &face_uv_[2 * c]
                          : mesh_.texcoord < 0 && mesh_.u >= 0 ? &row_uv_[2 * size_t(row)]
                                                               : nullptr;
        uint32_t id = host::k_obj_none;
        if (uv && std::isfinite(uv[0]) && std::isfinite(uv[1])) {
            id = coordinates_.of(uv, 2, uint32_t(document_.texture_count()));
            if (id == document_.texture_count())
                document_.texture_coords.insert(document_.texture_coords.end(), uv, uv + 2);
        }
        document_.corner_vertex.push_back(vertex_of_row_.empty() ? row : vertex_of_row_[row]);
        document_.corner_texture.push_back(id);
    }
    document_.corner_begin.push_back(uint32_t(document_.corner_vertex.size()));
}

bool Reader::read_faces() {
    document_.corner_begin.push_back(0);
    for (uint64_t row = 0; row < faces_->rows.size(); ++row) {
        PlyCursor cursor(mesh_.file, faces_->rows[row]);
        face_uv_.clear();
        for (int p = 0; p < int(faces_->properties.size()); ++p) {
            uint64_t ignored = 0;
            const bool good = p == mesh_.indices ? read_indices(row, cursor)
                              : p == mesh_.texcoord
                                  ? read_texcoord(cursor)
                                  : cursor.skip(faces_->properties[size_t(p)], ignored);
            if (!good)
                return false;
        }
        if (face_.size() < 3)
            ++small_faces_;
        else
            add_corners();
        if (document_.corner_vertex.size() > max_corners_)
            return fail("more than " + std::to_string(max_corners_) + " face corners",
                        host::IoError::too_large);
    }
    return true;
}

void Reader::finish() {
    const auto warn = [&](uint64_t count, const char* what) {
        if (count > 0)
            document_.warnings.push_back(document_.name + ": " + what + " (" +
                                         std::to_string(count) + ")");
    };
    warn(small_faces_, "faces with fewer than three corners stay in the file and get no texture "
                       "coordinates");
    warn(odd_lists_, "lists texcoord that do not have two numbers per corner count as none");
    fit_to_single_precision(exact_, document_);
}

bool Reader::run() {
    if (!find_properties() || !read_vertices() || !read_faces())
        return false;
    if (document_.polygon_count() == 0)
        return fail("no faces in the file, only " + std::to_string(vertices_->count) + " vertices");
    finish();
    return true;
}

} // namespace

bool read_ply_mesh(const std::string& name, std::string bytes, uint64_t max_corners, PlyMesh& mesh,
                   host::ObjDocument& document, host::IoError& error) {
    mesh = PlyMesh();
    document = host::ObjDocument();
    document.name = name;
    std::string reason;
    if (!read_ply(std::move(bytes), mesh.file, reason)) {
        error = {host::IoError::malformed, name + ": " + reason};
        return false;
    }
    return Reader(max_corners, mesh, document, error).run();
}

} // namespace formats
