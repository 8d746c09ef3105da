#include "formats/stl_mesh.h"
#include "formats/value_ids.h"
#include "host/io/obj_number.h"
#include "host/io/obj_scale.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace formats {
namespace {

constexpr size_t k_header = 84, k_record = 50; ///< bytes of a binary file's head and triangles

class Reader {
public:
    Reader(std::string_view bytes, uint64_t max_triangles, std::vector<StlSolid>& solids,
           host::ObjDocument& document, host::IoError& error)
        : bytes_(bytes), max_triangles_(max_triangles), solids_(solids), document_(document),
          error_(error) {}
    bool run();

private:
    bool read_binary();
    bool read_text();
    bool read_solid();
    bool read_facet();
    bool add_corner(const float* place, const std::string& where);
    bool next_word();
    bool expect(const char* word);
    bool read_number(float& value);
    std::string line() const;
    bool fail(const std::string& reason, host::IoError::Kind kind = host::IoError::malformed) {
        error_ = {kind, document_.name + ": " + reason};
        return false;
    }

    bool fail_too_large() {
        return fail("more than " + std::to_string(max_triangles_) + " triangles",
                    host::IoError::too_large);
    }

    std::string_view bytes_, word_;
    const uint64_t max_triangles_;
    std::vector<StlSolid>& solids_;
    host::ObjDocument& document_;
    host::IoError& error_;
    size_t at_ = 0;
    ValueIds places_;
    std::vector<double> exact_;
};

std::string Reader::line() const {
    const size_t begin = word_.empty() ? at_ : size_t(word_.data() - bytes_.data());
    const auto end = bytes_.begin() + ptrdiff_t(begin);
    return "line " + std::to_string(1 + std::count(bytes_.begin(), end, '\n')) + ": ";
}

bool Reader::next_word() {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    at_ = std::min(bytes_.find_first_not_of(blanks, at_), bytes_.size());
    const size_t begin = at_;
    at_ = std::min(bytes_.find_first_of(blanks, at_), bytes_.size());
    word_ = bytes_.substr(begin, at_ - begin);
    return !word_.empty();
}

bool Reader::expect(const char* word) {
    next_word();
    std::string lower(word_.substr(0, 40));
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? char(c + 32) : c;
    return lower == word || fail(line() + "'" + word + "' is expected, not " +
                                 (lower.empty() ? "the end of the file"
                                                : "'" + std::string(word_.substr(0, 40)) + "'"));
}

bool Reader::read_number(float& value) {
    double exact = 0.0;
    next_word();
    const host::NumberFault fault = host::parse_number(word_, value, exact);
    return fault == host::NumberFault::none ||
           fail(line() + "'" + std::string(word_.substr(0, 40)) + "' is not a finite number");
}

bool Reader::add_corner(const float* place, const std::string& where) {
    for (int k = 0; k < 3; ++k)
        if (!std::isfinite(place[k]))
            return fail(where + "it has a position that is not finite");
    const auto next = uint32_t(document_.vertex_count());
    const uint32_t vertex = places_.of(place, 3, next);
    if (vertex == next) {
        document_.positions.insert(document_.positions.end(), place, place + 3);
        exact_.insert(exact_.end(), place, place + 3);
    }
    document_.corner_vertex.push_back(vertex);
    document_.corner_texture.push_back(host::k_obj_none);
    if (document_.corner_vertex.size() % 3 == 0)
        document_.corner_begin.push_back(uint32_t(document_.corner_vertex.size()));
    return true;
}

bool Reader::read_binary() {
    if (bytes_.size() < k_header)
        return fail("byte " + std::to_string(bytes_.size()) +
                    ": the file ends before the number of triangles");
    uint32_t count = 0;
    for (int k = 3; k >= 0; --k)
        count = count << 8 | static_cast<unsigned char>(bytes_[size_t(80 + k)]);
    const size_t have = (bytes_.size() - k_header) / k_record;
    if (have < count)
        return fail("byte " + std::to_string(bytes_.size()) + ": the file ends after " +
                    std::to_string(have) + " of " + std::to_string(count) + " triangles");
    if (bytes_.size() != k_header + count * k_record)
        return fail("byte " + std::to_string(k_header + count * k_record) + ": " +
                    std::to_string(bytes_.size() - k_header - count * k_record) +
                    " bytes follow the last triangle");
    if (count > max_triangles_)
        return fail_too_large();
    for (uint32_t t = 0; t < count; ++t)
        for (size_t corner = 0; corner < 3; ++corner) {
            float place[3];
            for (size_t k = 0; k < 3; ++k) {
                const char* raw =
                    bytes_.data() + k_header + t * k_record + 12 + 12 * corner + 4 * k;
                uint32_t bits = 0;
                for (int b = 3; b >= 0; --b)
                    bits = bits << 8 | static_cast<unsigned char>(raw[b]);
                std::memcpy(&place[k], &bits, sizeof bits);
            }
            if (!add_corner(place, "triangle " + std::to_string(t) + ": "))
                return false;
        }
    return true;
}

bool Reader::read_facet() {
    float ignored = 0.0f, place[3];
    if (!expect("normal"))
        return false;
    for (int k = 0; k < 3; ++k) { // often not finite, and not needed
        next_word();
        double exact = 0.0;
        if (host::parse_number(word_, ignored, exact) == host::NumberFault::not_a_number)
            return fail(line() + "'" + std::string(word_.substr(0, 40)) + "' is not a number");
    }
    if (!expect("outer") || !expect("loop"))
        return false;
    for (int corner = 0; corner < 3; ++corner)
        if (!expect("vertex") || !read_number(place[0]) || !read_number(place[1]) ||
            !read_number(place[2]) || !add_corner(place, line()))
            return false;
    if (document_.polygon_count() > max_triangles_)
        return fail_too_large();
    return expect("endloop") && expect("endfacet");
}

/// "solid" has been read. Its name is the rest of the line.
bool Reader::read_solid() {
    const size_t end = std::min(bytes_.find('\n', at_), bytes_.size());
    std::string name(bytes_.substr(at_, end - at_));
    name.erase(0, std::min(name.find_first_not_of(" \t"), name.size()));
    name.erase(name.find_last_not_of(" \t\r") + 1);
    solids_.push_back({name, document_.polygon_count()});
    at_ = end;
    while (next_word()) {
        if (word_ == "endsolid" || word_ == "ENDSOLID") {
            at_ = std::min(bytes_.find('\n', at_), bytes_.size());
            return true;
        }
        at_ -= word_.size();
        if (!expect("facet") || !read_facet())
            return false;
    }
    return fail(line() + "'endsolid' is expected, not the end of the file");
}

bool Reader::read_text() {
    while (next_word()) {
        at_ -= word_.size();
        if (!expect("solid") || !read_solid())
            return false;
    }
    return true;
}

/// Some binary files begin with "solid" as well; in a text, "facet" or "endsolid" begins the next
/// line.
bool is_text(std::string_view bytes) {
    const size_t begin = bytes.find_first_not_of(" \t\r\n");
    if (begin == bytes.npos ||
        (bytes.substr(begin, 5) != "solid" && bytes.substr(begin, 5) != "SOLID"))
        return false;
    const size_t end = bytes.find('\n', begin);
    const size_t word = end == bytes.npos ? end : bytes.find_first_not_of(" \t\r\n", end);
    if (word == bytes.npos)
        return bytes.size() < k_header;
    for (const char* next : {"facet", "FACET", "endsolid", "ENDSOLID"})
        if (bytes.compare(word, std::strlen(next), next) == 0)
            return true;
    return false;
}

bool Reader::run() {
    document_.corner_begin.push_back(0);
    if (bytes_.empty())
        return fail("no mesh in the file: it is empty");
    if (!(is_text(bytes_) ? read_text() : read_binary()))
        return false;
    if (document_.polygon_count() == 0)
        return fail("no mesh in the file: it has no triangles");
    document_.warnings.push_back(document_.name + ": STL files have no common vertices; " +
                                 std::to_string(document_.corner_vertex.size()) +
                                 " corners became " + std::to_string(document_.vertex_count()) +
                                 " vertices where their positions are equal");
    fit_to_single_precision(exact_, document_);
    return true;
}

} // namespace

bool read_stl_mesh(const std::string& name, std::string_view bytes, uint64_t max_corners,
                   std::vector<StlSolid>& solids, host::ObjDocument& document,
                   host::IoError& error) {
    solids.clear();
    document = host::ObjDocument();
    document.name = name;
    return Reader(bytes, max_corners / 3, solids, document, error).run();
}

} // namespace formats
