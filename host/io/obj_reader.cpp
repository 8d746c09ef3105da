#include "host/io/obj_reader.h"

#include "host/io/obj_lexer.h"
#include "host/io/obj_number.h"
#include "host/io/obj_scale.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace host {
namespace {

/// The host's indices are signed 32-bit integers.
constexpr uint64_t k_max_count = 0x7FFFFFFF;

/// A word quoted for a message: truncated, control characters replaced.
std::string quoted(std::string_view word) {
    std::string out = "'";
    for (char c : word.substr(0, 40))
        out += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    return out + (word.size() > 40 ? "...'" : "'");
}

/// Counts warnings of one kind, to report them as one that names the first line.
struct Tally {
    uint64_t first = 0; // offset in the text
    uint64_t count = 0;
    std::string text;
    void add(uint64_t offset, std::string_view sentence) {
        if (count++ == 0) {
            first = offset;
            text = sentence;
        }
    }
};

class Parser {
public:
    Parser(ObjDocument& document, IoError& error)
        : doc_(document), error_(error), lexer_(document.text) {}

    bool run();

private:
    bool statement();
    bool vertex();
    bool texture();
    bool face();
    bool corner(std::string_view word, uint64_t (&corner)[2]);
    bool index(std::string_view word, std::string_view whole, const char* what, uint64_t count,
               uint64_t& id);
    bool check_indices();
    void fit_positions();
    bool check_present();
    bool find_fault(uint64_t polygon);
    void finish_warnings();
    bool fail(uint64_t offset, const std::string& reason, IoError::Kind kind = IoError::malformed) {
        error_ = {kind, where(offset) + reason};
        return false;
    }
    std::string where(uint64_t offset) const {
        return doc_.name + ":" + std::to_string(lexer_.line_number(offset)) + ": ";
    }

    ObjDocument& doc_;
    IoError& error_;
    ObjLexer lexer_;
    uint64_t begin_ = 0; // offset of the current statement's keyword
    uint64_t normals_ = 0;
    uint64_t highest_normal_ = 0;
    uint64_t highest_normal_at_ = 0;
    uint64_t unknown_ = 0;
    std::vector<double> exact_; // positions in double precision
    bool seen_face_ = false;
    bool insert_after_ = false; // new `vt` lines go after the current statement
    Tally small_faces_, bad_textures_, bad_normals_, coarse_faces_;
};

bool Parser::run() {
    if (doc_.text.empty()) {
        error_ = {IoError::malformed, doc_.name + ": no mesh in the file: it is empty"};
        return false;
    }
    if (doc_.text.compare(0, 2, "\xFF\xFE") == 0 || doc_.text.compare(0, 2, "\xFE\xFF") == 0)
        return fail(0, "the file is 16-bit text; save it as UTF-8");
    doc_.corner_begin.push_back(0);
    while (lexer_.next_statement()) {
        begin_ = lexer_.offset();
        if (!statement())
            return false;
        const uint64_t after = lexer_.skip_statement();
        if (insert_after_)
            doc_.insert_at = after;
    }
    if (!check_present() || !check_indices())
        return false;
    fit_positions();
    finish_warnings();
    return true;
}

bool Parser::statement() {
    std::string_view keyword;
    lexer_.next_word(keyword);
    insert_after_ = !seen_face_ && (keyword == "v" || keyword == "vn");
    if (keyword == "v")
        return vertex();
    if (keyword == "vt")
        return texture();
    if (keyword == "f" || keyword == "fo")
        return face();
    if (keyword == "vn")
        ++normals_;
    else if (keyword == "l" || keyword == "surf")
        doc_.statements.push_back({begin_, ObjStatement::bare});
    else if (keyword != "g" && keyword != "o" && keyword != "s" && keyword != "usemtl" &&
             keyword != "mtllib" && keyword != "p")
        ++unknown_;
    return true;
}

bool Parser::vertex() {
    const auto label = [&] { return "vertex " + std::to_string(doc_.vertex_count() + 1); };
    float value[3] = {0.0f, 0.0f, 0.0f};
    double exact[3] = {0.0, 0.0, 0.0};
    std::string_view word;
    int have = 0;
    for (; lexer_.next_word(word); ++have) {
        float ignored = 0.0f; // weight or colour, not used
        double ignored_too = 0.0;
        const bool is_used = have < 3;
        const NumberFault fault = parse_number(word, is_used ? value[have] : ignored,
                                               is_used ? exact[have] : ignored_too);
        if (fault == NumberFault::not_a_number || (have < 3 && fault != NumberFault::none))
            return fail(lexer_.offset_of(word),
                        label() + ": " + quoted(word) + " " + fault_text(fault));
    }
    if (have < 3)
        return fail(begin_, label() + " needs three coordinates and has " + std::to_string(have));
    doc_.positions.insert(doc_.positions.end(), value, value + 3);
    exact_.insert(exact_.end(), exact, exact + 3);
    if (doc_.vertex_count() > k_max_count)
        return fail(begin_, "more than 2147483647 vertices", IoError::too_large);
    return true;
}

bool Parser::texture() {
    float value[2] = {0.0f, 0.0f};
    std::string_view word;
    bool finite = true;
    int have = 0;
    for (; lexer_.next_word(word); ++have) {
        float ignored = 0.0f;
        double exact = 0.0;
        const NumberFault fault = parse_number(word, have < 2 ? value[have] : ignored, exact);
        if (fault == NumberFault::not_a_number)
            return fail(lexer_.offset_of(word), "texture coordinate " +
                                                    std::to_string(doc_.texture_count() + 1) +
                                                    ": " + quoted(word) + " is not a number");
        finite &= have >= 2 || fault == NumberFault::none;
    }
    if (have == 0)
        return fail(begin_, "texture coordinate " + std::to_string(doc_.texture_count() + 1) +
                                " has no number");
    if (!finite) {
        bad_textures_.add(begin_, "texture coordinate is not a finite number; the corners that use "
                                  "it count as having none");
        value[0] = value[1] = std::numeric_limits<float>::quiet_NaN();
    }
    doc_.texture_coords.insert(doc_.texture_coords.end(), value, value + 2);
    if (doc_.texture_count() > k_max_count)
        return fail(begin_, "more than 2147483647 texture coordinates", IoError::too_large);
    doc_.statements.push_back({begin_, ObjStatement::texture});
    return true;
}

/// Converts an index as written (from 1, or negative and relative to `count`) to one from 0.
/// Positive indices are checked against the final count after the whole file is read.
bool Parser::index(std::string_view word, std::string_view whole, const char* what, uint64_t count,
                   uint64_t& id) {
    const uint64_t at = lexer_.offset_of(whole);
    int64_t value = 0;
    const NumberFault fault = parse_integer(word, value);
    if (fault == NumberFault::not_a_number)
        return fail(at, "face corner " + quoted(whole) +
                            " is not of the form v, v/vt, v//vn or "
                            "v/vt/vn with whole numbers");
    if (fault == NumberFault::none && value == 0)
        return fail(at, std::string("face uses ") + what + " 0, but numbers start at 1");
    const bool too_low = value < 0 && static_cast<uint64_t>(-(value + 1)) >= count;
    if (fault != NumberFault::none || too_low || value > static_cast<int64_t>(k_max_count))
        return fail(at, std::string("face uses ") + what + " " + quoted(word) +
                            ", which the file does not have (" + std::to_string(count) +
                            " up to this line)");
    id = value > 0 ? static_cast<uint64_t>(value - 1) : count - static_cast<uint64_t>(-value);
    return true;
}

bool Parser::corner(std::string_view word, uint64_t (&corner)[2]) {
    const size_t slash = word.find('/');
    const size_t second = slash == word.npos ? word.npos : word.find('/', slash + 1);
    if (!index(word.substr(0, slash), word, "vertex", doc_.vertex_count(), corner[0]))
        return false;
    corner[1] = k_obj_none;
    if (slash == word.npos)
        return true;
    const std::string_view texture = word.substr(slash + 1, second - slash - 1);
    if (!texture.empty() &&
        !index(texture, word, "texture coordinate", doc_.texture_count(), corner[1]))
        return false;
    if (second == word.npos || second + 1 == word.size())
        return true;
    int64_t normal = 0;
    const NumberFault fault = parse_integer(word.substr(second + 1), normal);
    uint64_t unused = 0;
    if (fault == NumberFault::not_a_number) // fails with the message about the whole corner
        return index(word.substr(second + 1), word, "normal", normals_, unused);
    if (fault != NumberFault::none || normal == 0 ||
        (normal < 0 && static_cast<uint64_t>(-(normal + 1)) >= normals_))
        bad_normals_.add(lexer_.offset_of(word), "face uses a normal that the file does not have");
    else if (normal > 0 && static_cast<uint64_t>(normal) > highest_normal_) {
        highest_normal_ = static_cast<uint64_t>(normal);
        highest_normal_at_ = lexer_.offset_of(word);
    }
    return true;
}

bool Parser::face() {
    if (!seen_face_ && doc_.insert_at == 0)
        doc_.insert_at = lexer_.line_start(begin_);
    seen_face_ = true;
    const size_t first = doc_.corner_vertex.size();
    std::string_view word;
    while (lexer_.next_word(word)) {
        uint64_t ids[2];
        if (!corner(word, ids))
            return false;
        doc_.corner_vertex.push_back(static_cast<uint32_t>(ids[0]));
        doc_.corner_texture.push_back(static_cast<uint32_t>(ids[1]));
    }
    const size_t count = doc_.corner_vertex.size() - first;
    if (doc_.corner_vertex.size() > k_max_count)
        return fail(begin_, "more than 2147483647 face corners", IoError::too_large);
    if (count < 3) {
        doc_.corner_vertex.resize(first);
        doc_.corner_texture.resize(first);
        doc_.statements.push_back({begin_, ObjStatement::bare});
        small_faces_.add(begin_, "face with fewer than three corners stays in the file and gets no "
                                 "texture coordinates");
        return true;
    }
    doc_.corner_begin.push_back(static_cast<uint32_t>(doc_.corner_vertex.size()));
    doc_.statements.push_back({begin_, ObjStatement::polygon});
    return true;
}

void Parser::fit_positions() {
    const CoarsePolygons coarse = fit_to_single_precision(exact_, doc_);
    if (coarse.count == 0)
        return;
    uint64_t polygon = 0;
    for (const ObjStatement& statement : doc_.statements)
        if (statement.kind == ObjStatement::polygon && polygon++ == coarse.first) {
            coarse_faces_.add(statement.offset,
                              "face is so small that single precision distorts it beside the size "
                              "of the whole mesh; such faces may be cut apart or lost");
            break;
        }
    coarse_faces_.count = coarse.count;
}

bool Parser::check_present() {
    if (doc_.polygon_count() > 0)
        return true;
    error_.kind = IoError::malformed;
    if (doc_.positions.empty() && small_faces_.count == 0)
        error_.message = doc_.name + (unknown_ ? ": this is not an OBJ file: it has neither "
                                                 "vertices nor faces"
                                               : ": no mesh in the file: it has neither vertices "
                                                 "nor faces");
    else if (small_faces_.count)
        error_.message =
            where(small_faces_.first) + "no faces in the file: none has three corners or more";
    else
        error_.message = doc_.name + ": no faces in the file, only " +
                         std::to_string(doc_.vertex_count()) + " vertices";
    return false;
}

/// Reports the first invalid corner of a polygon, with its line.
bool Parser::find_fault(uint64_t polygon) {
    uint64_t seen = 0;
    for (const ObjStatement& statement : doc_.statements) {
        if (statement.kind != ObjStatement::polygon || seen++ != polygon)
            continue;
        lexer_.seek(statement.offset);
        std::string_view word;
        lexer_.next_word(word);
        for (uint32_t c = doc_.corner_begin[polygon]; c < doc_.corner_begin[polygon + 1]; ++c) {
            lexer_.next_word(word);
            const bool bad_vertex = doc_.corner_vertex[c] >= doc_.vertex_count();
            if (!bad_vertex && (doc_.corner_texture[c] == k_obj_none ||
                                doc_.corner_texture[c] < doc_.texture_count()))
                continue;
            const uint64_t id = bad_vertex ? doc_.corner_vertex[c] : doc_.corner_texture[c];
            const size_t have = bad_vertex ? doc_.vertex_count() : doc_.texture_count();
            return fail(lexer_.offset_of(word),
                        std::string("face uses ") +
                            (bad_vertex ? "vertex " : "texture coordinate ") +
                            std::to_string(id + 1) + ", but the file has " + std::to_string(have));
        }
    }
    return fail(0, "a face uses an index that the file does not have");
}

bool Parser::check_indices() {
    const size_t vertices = doc_.vertex_count(), textures = doc_.texture_count();
    for (size_t p = 0; p < doc_.polygon_count(); ++p)
        for (uint32_t c = doc_.corner_begin[p]; c < doc_.corner_begin[p + 1]; ++c) {
            uint32_t& texture = doc_.corner_texture[c];
            if (doc_.corner_vertex[c] >= vertices || (texture != k_obj_none && texture >= textures))
                return find_fault(p);
            if (texture != k_obj_none && std::isnan(doc_.texture_coords[2 * size_t(texture)]))
                texture = k_obj_none;
        }
    return true;
}

void Parser::finish_warnings() {
    if (bad_normals_.count == 0 && highest_normal_ > normals_)
        bad_normals_.add(highest_normal_at_, "face uses a normal that the file does not have");
    for (const Tally* tally : {&small_faces_, &bad_textures_, &bad_normals_, &coarse_faces_})
        if (tally->count) {
            const std::string more =
                tally->count > 1 ? " (" + std::to_string(tally->count) + " in all)" : "";
            doc_.warnings.push_back(where(tally->first) + tally->text + more);
        }
}

} // namespace

bool parse_obj(const std::string& name, std::string text, ObjDocument& document, IoError& error) {
    try {
        document = ObjDocument();
        document.name = name;
        document.text = std::move(text);
        return Parser(document, error).run();
    } catch (const std::bad_alloc&) {
        error = {IoError::too_large, name + ": not enough memory for the file"};
        return false;
    }
}

} // namespace host
