#include "formats/ply_mesh.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace formats {
namespace {

class Patch {
public:
    Patch(const PlyMesh& mesh, const host::ObjDocument& document, const host::ObjUvs& uvs,
          PlyUvs place, uint64_t max_vertices, std::string& bytes, std::string& error)
        : mesh_(mesh), file_(mesh.file), document_(document), uvs_(uvs), error_(error),
          bytes_(bytes), writer_(mesh.file.encoding, mesh.file.line_end, bytes),
          vertices_(*mesh.file.find("vertex")), faces_(*mesh.file.find("face")),
          max_vertices_(max_vertices) {
        per_vertex_ = place == PlyUvs::vertex || (place == PlyUvs::as_read && mesh.u >= 0);
    }
    bool run();

private:
    struct Copy {
        uint32_t row;
        int32_t uv;
    };
    bool check();
    void settle_types();
    bool split();
    static std::string line_of(const PlyProperty& property);
    PlyProperty coordinate_of(int property) const;
    void write_header();
    void write_vertices();
    void write_vertex(uint64_t row, int32_t uv);
    void write_face(uint64_t row, size_t& corner);
    void write_texcoord(size_t first, size_t count);
    void copy_rows(const PlyElement& element);
    std::vector<uint32_t> indices_of(uint64_t row) const;
    std::vector<std::string_view> slices_of(const PlyElement& element, uint64_t row) const;
    float u_of(int32_t id) const { return id < 0 ? 0.0f : uvs_.u[size_t(id)]; }
    float v_of(int32_t id) const { return id < 0 ? 0.0f : uvs_.v[size_t(id)]; }

    const PlyMesh& mesh_;
    const PlyFile& file_;
    const host::ObjDocument& document_;
    const host::ObjUvs& uvs_;
    std::string& error_;
    std::string& bytes_;
    PlyWriter writer_;
    const PlyElement& vertices_;
    const PlyElement& faces_;
    const uint64_t max_vertices_;
    bool per_vertex_;
    std::string new_u_, new_v_; ///< names of coordinates that the vertices do not have yet
    PlyProperty texcoord_;      ///< as written
    PlyProperty indices_;
    std::vector<int32_t> row_uv_;      ///< per row of the file; -1 if no corner uses it
    std::vector<Copy> copies_;         ///< rows behind the last
    std::vector<uint32_t> corner_row_; ///< per corner of the document, its row in the result
};

bool Patch::check() {
    const size_t count = uvs_.u.size();
    const bool fits =
        uvs_.v.size() == count && uvs_.corner_uv.size() == document_.corner_vertex.size();
    error_ = "the UV set does not fit the mesh";
    if (!fits)
        return false;
    for (const int32_t id : uvs_.corner_uv)
        if (id >= 0 && (size_t(id) >= count || !std::isfinite(uvs_.u[size_t(id)]) ||
                        !std::isfinite(uvs_.v[size_t(id)])))
            return false;
    error_.clear();
    for (const auto& [u, v] : {std::pair{"s", "t"}, {"u", "v"}, {"texture_u", "texture_v"}})
        if (new_u_.empty() && vertices_.find(u) < 0 && vertices_.find(v) < 0) {
            new_u_ = u;
            new_v_ = v;
        }
    if (per_vertex_ ? mesh_.u < 0 && new_u_.empty()
                    : mesh_.texcoord < 0 && faces_.find("texcoord") >= 0)
        error_ = "the names of texture coordinates are taken by properties that are none";
    if (error_.empty() && per_vertex_ &&
        std::any_of(uvs_.corner_uv.begin(), uvs_.corner_uv.end(), [](int32_t i) { return i < 0; }))
        error_ = "some polygons have no texture coordinates, which is not possible with those of "
                 "vertices; --ply_uvs face writes those of corners";
    return error_.empty();
}

std::vector<uint32_t> Patch::indices_of(uint64_t row) const {
    PlyCursor cursor(file_, faces_.rows[row]);
    uint64_t count = 0;
    for (int p = 0; p < mesh_.indices; ++p)
        cursor.skip(faces_.properties[size_t(p)], count);
    const PlyProperty& list = faces_.properties[size_t(mesh_.indices)];
    cursor.next_count(list, count);
    std::vector<uint32_t> indices(count);
    for (uint32_t& index : indices) {
        double value = 0.0;
        cursor.next(list.type, value);
        index = uint32_t(value);
    }
    return indices;
}

/// The bytes of each property of a row.
std::vector<std::string_view> Patch::slices_of(const PlyElement& element, uint64_t row) const {
    std::vector<std::string_view> slices;
    PlyCursor cursor(file_, element.rows[row]);
    for (const PlyProperty& property : element.properties) {
        uint64_t begin = 0;
        cursor.skip(property, begin);
        slices.push_back(std::string_view(file_.bytes).substr(begin, cursor.offset() - begin));
    }
    return slices;
}

/// Gives every corner a row; the first coordinate of a row stays there, others get a copy.
bool Patch::split() {
    row_uv_.assign(vertices_.rows.size(), -1);
    std::map<std::pair<uint32_t, std::pair<float, float>>, uint32_t> copies;
    size_t corner = 0;
    for (uint64_t face = 0; face < faces_.rows.size(); ++face) {
        const std::vector<uint32_t> rows = indices_of(face);
        for (size_t i = 0; rows.size() >= 3 && i < rows.size(); ++i, ++corner) {
            const int32_t id = uvs_.corner_uv[corner];
            int32_t& first = row_uv_[rows[i]];
            if (first < 0)
                first = id;
            if (u_of(first) == u_of(id) && v_of(first) == v_of(id)) {
                corner_row_.push_back(rows[i]);
                continue;
            }
            const auto [copy, is_new] = copies.try_emplace(
                {rows[i], {u_of(id), v_of(id)}}, uint32_t(vertices_.rows.size() + copies_.size()));
            if (is_new)
                copies_.push_back({rows[i], id});
            corner_row_.push_back(copy->second);
        }
    }
    if (vertices_.rows.size() + copies_.size() <= max_vertices_)
        return true;
    error_ = "splitting makes more than " + std::to_string(max_vertices_) + " vertices";
    return false;
}

/// Types with room for the new values; the old ones where they have it.
void Patch::settle_types() {
    indices_ = faces_.properties[size_t(mesh_.indices)];
    if (vertices_.rows.size() + copies_.size() > greatest_of(indices_.type) && !copies_.empty())
        indices_.type = PlyType::uint32;
    if (mesh_.texcoord >= 0)
        texcoord_ = faces_.properties[size_t(mesh_.texcoord)];
    else
        texcoord_ = {"texcoord", PlyType::float32, true, PlyType::uint8, 0};
    uint64_t longest = 0;
    for (size_t p = 0; p < document_.polygon_count(); ++p)
        longest = std::max<uint64_t>(
            longest, 2 * uint64_t(document_.corner_begin[p + 1] - document_.corner_begin[p]));
    if (longest > greatest_of(texcoord_.count_type))
        texcoord_.count_type = PlyType::uint32;
    if (!is_ply_real(texcoord_.type))
        texcoord_.type = PlyType::float32;
}

std::string Patch::line_of(const PlyProperty& property) {
    if (property.is_list)
        return std::string("property list ") + ply_name(property.count_type) + " " +
               ply_name(property.type) + " " + property.name;
    return std::string("property ") + ply_name(property.type) + " " + property.name;
}

/// The header's lines with those of coordinates replaced, removed or added.
void Patch::write_header() {
    std::map<size_t, std::string> changed; // empty: removed
    const auto change = [&](const PlyElement& element, int property, const std::string& line) {
        if (property >= 0)
            changed[element.properties[size_t(property)].line] = line;
    };
    changed[vertices_.line] =
        "element vertex " + std::to_string(vertices_.rows.size() + copies_.size());
    change(faces_, mesh_.indices, line_of(indices_));
    change(faces_, mesh_.texcoord, per_vertex_ ? "" : line_of(texcoord_));
    for (const int p : {mesh_.u, mesh_.v})
        if (p >= 0)
            change(vertices_, p, per_vertex_ ? line_of(coordinate_of(p)) : "");
    for (size_t line = 0; line < file_.header.size(); ++line) {
        const auto other = changed.find(line);
        const std::string& text = other == changed.end() ? file_.header[line] : other->second;
        if (!text.empty() || other == changed.end())
            bytes_ += text + file_.line_end;
        if (line == vertices_.properties.back().line && per_vertex_ && mesh_.u < 0)
            bytes_ += "property float " + new_u_ + file_.line_end + "property float " + new_v_ +
                      file_.line_end;
        if (line == faces_.properties.back().line && !per_vertex_ && mesh_.texcoord < 0)
            bytes_ += line_of(texcoord_) + file_.line_end;
    }
}

/// A vertex's coordinate property, as it is written.
PlyProperty Patch::coordinate_of(int property) const {
    PlyProperty written = vertices_.properties[size_t(property)];
    if (!is_ply_real(written.type))
        written.type = PlyType::float32;
    return written;
}

void Patch::write_vertex(uint64_t row, int32_t uv) {
    const std::vector<std::string_view> slices = slices_of(vertices_, row);
    for (int p = 0; p < int(slices.size()); ++p) {
        if (p != mesh_.u && p != mesh_.v)
            writer_.copy(slices[size_t(p)]);
        else if (per_vertex_)
            writer_.add(coordinate_of(p).type, p == mesh_.u ? u_of(uv) : v_of(uv));
    }
    if (per_vertex_ && mesh_.u < 0) {
        writer_.add(PlyType::float32, u_of(uv));
        writer_.add(PlyType::float32, v_of(uv));
    }
    writer_.end_row();
}

void Patch::write_vertices() {
    if (!per_vertex_ && mesh_.u < 0) {
        copy_rows(vertices_);
        return;
    }
    for (uint64_t row = 0; row < vertices_.rows.size(); ++row)
        write_vertex(row, per_vertex_ ? row_uv_[row] : -1);
    for (const Copy& copy : copies_)
        write_vertex(copy.row, copy.uv);
}

/// The coordinates of a polygon's corners; an empty list if one of them has none.
void Patch::write_texcoord(size_t first, size_t count) {
    const auto begin = uvs_.corner_uv.begin() + ptrdiff_t(first);
    if (std::any_of(begin, begin + ptrdiff_t(count), [](int32_t id) { return id < 0; }))
        count = 0;
    writer_.add(texcoord_.count_type, double(2 * count));
    for (size_t c = first; c < first + count; ++c) {
        writer_.add(texcoord_.type, u_of(uvs_.corner_uv[c]));
        writer_.add(texcoord_.type, v_of(uvs_.corner_uv[c]));
    }
}

void Patch::write_face(uint64_t row, size_t& corner) {
    const std::vector<std::string_view> slices = slices_of(faces_, row);
    const std::vector<uint32_t> rows = indices_of(row);
    const size_t count = rows.size() < 3 ? 0 : rows.size();
    for (int p = 0; p < int(slices.size()); ++p) {
        if (p == mesh_.texcoord && !per_vertex_)
            write_texcoord(corner, count);
        else if (p == mesh_.indices && per_vertex_) {
            writer_.add(indices_.count_type, double(rows.size()));
            for (size_t i = 0; i < rows.size(); ++i)
                writer_.add(indices_.type, count ? corner_row_[corner + i] : rows[i]);
        } else if (p != mesh_.texcoord)
            writer_.copy(slices[size_t(p)]);
    }
    if (mesh_.texcoord < 0 && !per_vertex_)
        write_texcoord(corner, count);
    writer_.end_row();
    corner += count;
}

void Patch::copy_rows(const PlyElement& element) {
    if (element.end == element.begin)
        return;
    writer_.copy(std::string_view(file_.bytes).substr(element.begin, element.end - element.begin));
    writer_.end_row();
}

bool Patch::run() {
    if (!check() || (per_vertex_ && !split()))
        return false;
    settle_types();
    bytes_.clear();
    write_header();
    for (const PlyElement& element : file_.elements) {
        size_t corner = 0;
        if (&element == &vertices_)
            write_vertices();
        else if (&element == &faces_)
            for (uint64_t row = 0; row < faces_.rows.size(); ++row)
                write_face(row, corner);
        else
            copy_rows(element);
    }
    return true;
}

} // namespace

bool patch_ply(const PlyMesh& mesh, const host::ObjDocument& document, const host::ObjUvs& uvs,
               PlyUvs place, uint64_t max_vertices, std::string& bytes, std::string& error) {
    return Patch(mesh, document, uvs, place, max_vertices, bytes, error).run();
}

} // namespace formats
