#include "host/io/obj_export.h"

#include "host/io/mesh_block.h"
#include "host/io/obj_lexer.h"
#include "host/io/obj_mesh.h"
#include "host/io/obj_writer.h"

#include <array>
#include <charconv>
#include <cstring>
#include <sstream>

namespace host {

namespace {

/// How many elements of each kind the text holds so far; indices count from there.
struct Counts {
    uint64_t vertices = 0, textures = 0, normals = 0;
};

Float3 transformed(const Float3& p, const MMatrix& m) {
    const auto coordinate = [&](unsigned int column) {
        return float(double(p.x) * m[0][column] + double(p.y) * m[1][column] +
                     double(p.z) * m[2][column] + m[3][column]);
    };
    return {coordinate(0), coordinate(1), coordinate(2)};
}

std::string numbers(const Float3& p) {
    return shortest(p.x) + " " + shortest(p.y) + " " + shortest(p.z);
}

/// Writes a mesh that was not read from a file.
void write_plain(const ObjPart& part, const Counts& before, std::string& text) {
    const Mesh& mesh = *part.mesh;
    const Connectivity& connectivity = mesh.connectivity();
    text += "o " + part.name + "\n";
    const bool is_moved = part.matrix != MMatrix::identity;
    for (const Float3& p : mesh.points())
        text += "v " + numbers(is_moved ? transformed(p, part.matrix) : p) + "\n";
    const UvSet* set =
        mesh.current_uv_set() < 0 ? nullptr : &mesh.uv_set(uint32_t(mesh.current_uv_set()));
    for (size_t i = 0; set && i < set->u.size(); ++i)
        text += "vt " + shortest(set->u[i]) + " " + shortest(set->v[i]) + "\n";
    for (uint32_t p = 0; p < connectivity.polygon_count(); ++p) {
        text += "f";
        const uint32_t first = connectivity.first_corner(p);
        for (uint32_t c = first; c < first + connectivity.corners_of(p); ++c) {
            text += " " + std::to_string(before.vertices + connectivity.corner_vertex(c) + 1);
            if (set && set->corner_uvs[c] >= 0)
                text += "/" + std::to_string(before.textures + uint64_t(set->corner_uvs[c]) + 1);
        }
        text += "\n";
    }
}

bool same_bits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

bool same_values(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0);
}

/// The file with the mesh's current UVs; the file as it is if they are those of the file.
bool with_current_uvs(const Mesh& mesh, const ObjDocument& document, std::string& text,
                      std::string& error) {
    ObjUvs uvs;
    uvs.corner_uv.assign(document.corner_vertex.size(), -1);
    if (mesh.current_uv_set() >= 0) {
        const UvSet& set = mesh.uv_set(uint32_t(mesh.current_uv_set()));
        const UvSet read = uv_set_of_document(document);
        if (set.corner_uvs == read.corner_uvs && same_values(set.u, read.u) &&
            same_values(set.v, read.v)) {
            text = document.text;
            return true;
        }
        uvs = {set.u, set.v, set.corner_uvs};
    }
    return format_obj(document, uvs, text, error);
}

/// Copies the text of a file, replaces coordinates that changed and shifts indices.
class FileCopy {
public:
    FileCopy(const ObjPart& part, const ObjDocument& document, const std::string& source,
             const Counts& before, std::string& out)
        : part_(part), document_(document), source_(source), lexer_(source), before_(before),
          is_moved_(part.matrix != MMatrix::identity),
          normal_matrix_(part.matrix.inverse().transpose()), out_(out) {}

    /// Returns the counts including this file.
    Counts write() {
        Counts found;
        done_ = out_.empty() ? 0 : lexer_.offset(); // without a byte-order mark in the middle
        for (std::string_view keyword; lexer_.next_statement(); lexer_.skip_statement()) {
            if (!lexer_.next_word(keyword))
                continue;
            if (keyword == "v")
                vertex(found.vertices++);
            else if (keyword == "vn") {
                normal();
                ++found.normals;
            } else if (keyword == "vt")
                ++found.textures;
            else if (keyword == "f" || keyword == "l" || keyword == "p")
                shift_indices(0);
            else if (keyword == "curv")
                shift_indices(2);
            else if (keyword == "surf")
                shift_indices(4);
        }
        copy_to(source_.size());
        return {before_.vertices + found.vertices, before_.textures + found.textures,
                before_.normals + found.normals};
    }

private:
    void copy_to(uint64_t offset) {
        out_.append(source_, done_, offset - done_);
        done_ = offset;
    }

    /// Replaces the next three words.
    void replace_triple(const Float3& value) {
        std::array<std::string_view, 3> words;
        for (std::string_view& word : words)
            if (!lexer_.next_word(word))
                return;
        copy_to(lexer_.offset_of(words[0]));
        out_ += numbers(value);
        done_ = lexer_.offset_of(words[2]) + words[2].size();
    }

    void vertex(uint64_t index) {
        if (index >= part_.mesh->points().size() || index >= document_.vertex_count())
            return;
        const Float3& now = part_.mesh->points()[index];
        const float* read = document_.positions.data() + 3 * index;
        const bool is_edited =
            !same_bits(now.x, read[0]) || !same_bits(now.y, read[1]) || !same_bits(now.z, read[2]);
        if (is_moved_ || is_edited)
            replace_triple(is_moved_ ? transformed(now, part_.matrix) : now);
    }

    void normal() {
        if (!is_moved_)
            return;
        const uint64_t start = lexer_.offset();
        double n[3];
        for (double& value : n) {
            std::string_view word;
            if (!lexer_.next_word(word) ||
                std::from_chars(word.data(), word.data() + word.size(), value).ec != std::errc())
                return; // not a normal: kept as it is
        }
        lexer_.seek(start);
        const MVector turned = (MVector(n[0], n[1], n[2]) * normal_matrix_).normal();
        replace_triple({float(turned.x), float(turned.y), float(turned.z)});
    }

    /// Adds the counts of the files before this one to the absolute indices of v/vt/vn words.
    void shift_indices(int words_before) {
        if (before_.vertices == 0 && before_.textures == 0 && before_.normals == 0)
            return;
        std::string_view word;
        for (int i = 0; i < words_before; ++i)
            if (!lexer_.next_word(word))
                return;
        const uint64_t offsets[] = {before_.vertices, before_.textures, before_.normals};
        while (lexer_.next_word(word)) {
            const char* at = word.data();
            const char* const end = at + word.size();
            for (size_t kind = 0; kind < 3 && at <= end; ++kind) {
                const char* slash = at;
                while (slash < end && *slash != '/')
                    ++slash;
                uint64_t index = 0;
                // Negative indices count backwards and need no shift.
                if (std::from_chars(at, slash, index).ptr == slash && slash != at) {
                    copy_to(uint64_t(at - source_.data()));
                    out_ += std::to_string(index + offsets[kind]);
                    done_ = uint64_t(slash - source_.data());
                }
                at = slash + 1;
            }
        }
    }

    const ObjPart& part_;
    const ObjDocument& document_;
    const std::string& source_;
    ObjLexer lexer_;
    const Counts before_;
    const bool is_moved_;
    const MMatrix normal_matrix_;
    std::string& out_;
    uint64_t done_ = 0; ///< offset up to which `source_` was copied or replaced
};

/// What the lines before a file's first face set.
struct Opening {
    bool has_name = false;      ///< an o statement
    bool has_smoothing = false; ///< an s statement
};

Opening opening_of(const std::string& text) {
    Opening opening;
    ObjLexer lexer(text);
    for (std::string_view keyword; lexer.next_statement(); lexer.skip_statement()) {
        if (!lexer.next_word(keyword))
            continue;
        if (keyword == "f")
            break;
        opening.has_name = opening.has_name || keyword == "o";
        opening.has_smoothing = opening.has_smoothing || keyword == "s";
    }
    return opening;
}

} // namespace

bool obj_of_meshes(const std::vector<ObjPart>& parts, std::string& text, std::string& error) {
    text.clear();
    Counts counts;
    for (const ObjPart& part : parts) {
        if (!text.empty() && text.back() != '\n' && text.back() != '\r')
            text += '\n';
        const auto* const origin = dynamic_cast<const ObjOrigin*>(part.mesh->origin());
        if (!origin) {
            write_plain(part, counts, text);
            counts.vertices += part.mesh->points().size();
            if (part.mesh->current_uv_set() >= 0)
                counts.textures +=
                    part.mesh->uv_set(uint32_t(part.mesh->current_uv_set())).u.size();
            continue;
        }
        std::string file;
        if (!with_current_uvs(*part.mesh, origin->document, file, error))
            return false;
        // Names and smoothing of the file before must not extend to this one.
        if (!text.empty()) {
            const Opening opening = opening_of(file);
            if (!opening.has_name)
                text += "o " + part.name + "\n";
            if (!opening.has_smoothing)
                text += "s off\n";
        }
        counts = FileCopy(part, origin->document, file, counts, text).write();
    }
    return true;
}

bool has_other_lines(const Mesh& mesh) {
    const auto* const origin = dynamic_cast<const ObjOrigin*>(mesh.origin());
    if (origin == nullptr)
        return false;
    std::istringstream text(origin->document.text);
    std::string line, word;
    while (std::getline(text, line)) {
        word.clear();
        std::istringstream(line) >> word;
        if (!word.empty() && word != "v" && word != "vt" && word != "f")
            return true;
    }
    return false;
}

} // namespace host
