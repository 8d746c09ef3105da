#include "formats/ply_file.h"

#include "host/io/obj_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace formats {
namespace {

/// Far more than real files have; their names are compared with each other.
constexpr size_t k_max_elements = 1000, k_max_properties = 10000;

struct TypeFacts {
    PlyType type;
    const char* name;
    const char* other_name;
    size_t size;
    uint64_t greatest;
};

constexpr TypeFacts k_types[] = {
    {PlyType::int8, "char", "int8", 1, INT8_MAX},
    {PlyType::uint8, "uchar", "uint8", 1, UINT8_MAX},
    {PlyType::int16, "short", "int16", 2, INT16_MAX},
    {PlyType::uint16, "ushort", "uint16", 2, UINT16_MAX},
    {PlyType::int32, "int", "int32", 4, INT32_MAX},
    {PlyType::uint32, "uint", "uint32", 4, UINT32_MAX},
    {PlyType::float32, "float", "float32", 4, 0},
    {PlyType::float64, "double", "float64", 8, 0},
};

const TypeFacts& facts_of(PlyType type) { return k_types[size_t(type)]; }

bool type_of(std::string_view name, PlyType& type) {
    for (const TypeFacts& facts : k_types)
        if (name == facts.name || name == facts.other_name) {
            type = facts.type;
            return true;
        }
    return false;
}

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\0'; }

std::vector<std::string_view> words_of(std::string_view line) {
    std::vector<std::string_view> words;
    for (size_t at = 0; at < line.size();) {
        const size_t begin = at;
        while (at < line.size() && !is_blank(line[at]))
            ++at;
        if (at > begin)
            words.push_back(line.substr(begin, at - begin));
        else
            ++at;
    }
    return words;
}

bool is_little_endian() {
    const uint16_t one = 1;
    char first;
    std::memcpy(&first, &one, 1);
    return first == 1;
}

template <class T>
double from_bytes(const char* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return double(value);
}

double decode(PlyType type, const char* bytes) {
    switch (type) {
    case PlyType::int8:
        return from_bytes<int8_t>(bytes);
    case PlyType::uint8:
        return from_bytes<uint8_t>(bytes);
    case PlyType::int16:
        return from_bytes<int16_t>(bytes);
    case PlyType::uint16:
        return from_bytes<uint16_t>(bytes);
    case PlyType::int32:
        return from_bytes<int32_t>(bytes);
    case PlyType::uint32:
        return from_bytes<uint32_t>(bytes);
    case PlyType::float32:
        return from_bytes<float>(bytes);
    case PlyType::float64:
        break;
    }
    return from_bytes<double>(bytes);
}

template <class T>
void to_bytes(double value, char* bytes) {
    const T narrow = static_cast<T>(value);
    std::memcpy(bytes, &narrow, sizeof narrow);
}

void encode(PlyType type, double value, char* bytes) {
    switch (type) {
    case PlyType::int8:
        return to_bytes<int8_t>(value, bytes);
    case PlyType::uint8:
        return to_bytes<uint8_t>(value, bytes);
    case PlyType::int16:
        return to_bytes<int16_t>(value, bytes);
    case PlyType::uint16:
        return to_bytes<uint16_t>(value, bytes);
    case PlyType::int32:
        return to_bytes<int32_t>(value, bytes);
    case PlyType::uint32:
        return to_bytes<uint32_t>(value, bytes);
    case PlyType::float32:
        return to_bytes<float>(value, bytes);
    case PlyType::float64:
        return to_bytes<double>(value, bytes);
    }
}

class Reader {
public:
    Reader(PlyFile& file, std::string& error) : file_(file), error_(error) {}
    bool run();

private:
    bool next_line(std::string_view& line);
    bool header();
    bool statement(const std::vector<std::string_view>& words);
    bool add_format(const std::vector<std::string_view>& words);
    bool add_element(const std::vector<std::string_view>& words);
    bool add_property(const std::vector<std::string_view>& words);
    bool find_rows(PlyElement& element);
    bool skip_fixed(PlyElement& element, bool& is_fixed);
    bool check_rest();
    bool fail(const std::string& reason) {
        error_ = "line " + std::to_string(file_.header.size()) + ": " + reason;
        return false;
    }

    PlyFile& file_;
    std::string& error_;
    uint64_t at_ = 0;
    bool has_format_ = false;
};

/// Lines end with a line feed, a carriage return or both; the first line's end counts for all.
bool Reader::next_line(std::string_view& line) {
    const std::string_view rest = std::string_view(file_.bytes).substr(at_);
    if (file_.line_end.empty()) {
        const size_t end = rest.find_first_of("\r\n");
        if (end == rest.npos)
            return false;
        file_.line_end = rest.substr(end, rest.substr(end, 2) == "\r\n" ? 2 : 1);
    }
    const size_t end = rest.find(file_.line_end);
    if (end == rest.npos)
        return false;
    line = rest.substr(0, end);
    at_ += end + file_.line_end.size();
    file_.header.emplace_back(line);
    return true;
}

bool Reader::header() {
    std::string_view line;
    if (file_.bytes.compare(0, 3, "ply") != 0 || !next_line(line) || words_of(line).size() != 1 ||
        words_of(line)[0] != "ply") {
        error_ = "this is not a PLY file: its first line is not 'ply'";
        return false;
    }
    while (next_line(line)) {
        const std::vector<std::string_view> words = words_of(line);
        if (words.empty() || words[0] == "comment" || words[0] == "obj_info")
            continue;
        if (words[0] == "end_header")
            return has_format_ || fail("the header has no format");
        if (!statement(words))
            return false;
    }
    file_.header.emplace_back();
    return fail("the header has no end_header");
}

bool Reader::statement(const std::vector<std::string_view>& words) {
    if (words[0] == "format")
        return add_format(words);
    if (words[0] == "element")
        return add_element(words);
    if (words[0] == "property")
        return add_property(words);
    return fail("'" + std::string(words[0].substr(0, 40)) + "' is no statement of a PLY header");
}

bool Reader::add_format(const std::vector<std::string_view>& words) {
    const char* const names[] = {"ascii", "binary_little_endian", "binary_big_endian"};
    for (int i = 0; i < 3; ++i)
        if (words.size() == 3 && words[1] == names[i] && words[2] == "1.0") {
            file_.encoding = PlyEncoding(i);
            has_format_ = true;
            return true;
        }
    return fail("the format is not ascii, binary_little_endian or binary_big_endian 1.0");
}

bool Reader::add_element(const std::vector<std::string_view>& words) {
    PlyElement element;
    const std::string_view count = words.size() == 3 ? words[2] : "";
    const auto read = std::from_chars(count.data(), count.data() + count.size(), element.count);
    if (count.empty() || read.ec != std::errc() || read.ptr != count.data() + count.size())
        return fail("an element needs a name and how many there are");
    element.name = words[1];
    element.line = file_.header.size() - 1;
    if (file_.elements.size() == k_max_elements)
        return fail("the header has more than " + std::to_string(k_max_elements) + " elements");
    if (file_.find(element.name))
        return fail("there is a second element '" + element.name.substr(0, 40) + "'");
    file_.elements.push_back(std::move(element));
    return true;
}

bool Reader::add_property(const std::vector<std::string_view>& words) {
    PlyProperty property;
    property.is_list = words.size() == 5 && words[1] == "list";
    property.line = file_.header.size() - 1;
    if (file_.elements.empty())
        return fail("a property stands before every element");
    if (words.size() != (property.is_list ? 5u : 3u))
        return fail("a property is 'property TYPE NAME' or 'property list TYPE TYPE NAME'");
    for (size_t i = property.is_list ? 2 : 1; i + 1 < words.size(); ++i)
        if (!type_of(words[i], i == 2 && property.is_list ? property.count_type : property.type))
            return fail("'" + std::string(words[i].substr(0, 40)) + "' is no type of a PLY file");
    if (property.is_list && is_ply_real(property.count_type))
        return fail("the length of a list is a whole number");
    property.name = words.back();
    PlyElement& element = file_.elements.back();
    if (element.properties.size() == k_max_properties)
        return fail("an element has more than " + std::to_string(k_max_properties) + " properties");
    if (element.find(property.name) >= 0)
        return fail("there is a second property '" + property.name.substr(0, 40) + "'");
    element.properties.push_back(std::move(property));
    return true;
}

/// Rows of a binary element without lists have one size.
bool Reader::skip_fixed(PlyElement& element, bool& is_fixed) {
    uint64_t size = 0;
    for (const PlyProperty& property : element.properties) {
        is_fixed &= !property.is_list;
        size += ply_size(property.type);
    }
    if (!is_fixed)
        return true;
    const uint64_t left = file_.bytes.size() - at_;
    if (size > 0 && element.count > left / size) {
        error_ = "byte " + std::to_string(at_) + ": the header says " +
                 std::to_string(element.count) + " of '" + element.name + "', " +
                 std::to_string(size) + " bytes each; the file has " + std::to_string(left) +
                 " more bytes";
        return false;
    }
    if (element.name == "vertex" || element.name == "face")
        for (uint64_t i = 0; size > 0 && i < element.count; ++i)
            element.rows.push_back(at_ + i * size);
    at_ += element.count * size;
    element.end = at_;
    return true;
}

bool Reader::find_rows(PlyElement& element) {
    element.begin = element.end = at_;
    bool is_fixed = file_.encoding != PlyEncoding::ascii;
    if (element.properties.empty() || !skip_fixed(element, is_fixed))
        return element.properties.empty();
    if (is_fixed)
        return true;
    const bool is_kept = element.name == "vertex" || element.name == "face";
    PlyCursor cursor(file_, at_);
    for (uint64_t row = 0; row < element.count; ++row)
        for (size_t p = 0; p < element.properties.size(); ++p) {
            uint64_t begin = 0;
            if (!cursor.skip(element.properties[p], begin)) {
                error_ = ply_place(file_, cursor.offset()) + ": " + element.name + " " +
                         std::to_string(row) + " of " + std::to_string(element.count) + ", " +
                         element.properties[p].name + ": " + cursor.error();
                return false;
            }
            if (row == 0 && p == 0)
                element.begin = begin;
            if (is_kept && p == 0)
                element.rows.push_back(begin);
        }
    element.end = at_ = cursor.offset();
    return true;
}

/// What follows the last row is not the file's: a count in the header is too small.
bool Reader::check_rest() {
    if (file_.encoding == PlyEncoding::ascii)
        while (at_ < file_.bytes.size() && is_blank(file_.bytes[at_]))
            ++at_;
    if (at_ == file_.bytes.size())
        return true;
    error_ = ply_place(file_, at_) + ": " + std::to_string(file_.bytes.size() - at_) +
             " bytes follow the last element; the counts in the header are wrong";
    return false;
}

bool Reader::run() {
    if (!header())
        return false;
    for (PlyElement& element : file_.elements)
        if (!find_rows(element))
            return false;
    return check_rest();
}

} // namespace

size_t ply_size(PlyType type) { return facts_of(type).size; }
bool is_ply_real(PlyType type) { return facts_of(type).greatest == 0; }
uint64_t greatest_of(PlyType type) { return facts_of(type).greatest; }
const char* ply_name(PlyType type) { return facts_of(type).name; }

int PlyElement::find(std::string_view property) const {
    for (size_t i = 0; i < properties.size(); ++i)
        if (properties[i].name == property)
            return int(i);
    return -1;
}

const PlyElement* PlyFile::find(std::string_view element) const {
    for (const PlyElement& e : elements)
        if (e.name == element)
            return &e;
    return nullptr;
}

bool PlyCursor::next_word(std::string_view& word) {
    const std::string& text = file_.bytes;
    while (at_ < text.size() && is_blank(text[at_]))
        ++at_;
    last_ = at_;
    while (at_ < text.size() && !is_blank(text[at_]))
        ++at_;
    word = std::string_view(text).substr(last_, at_ - last_);
    return !word.empty() || fail("the file ends here");
}

bool PlyCursor::next(PlyType type, double& value) {
    if (file_.encoding == PlyEncoding::ascii) {
        std::string_view word;
        float single = 0.0f;
        if (!next_word(word))
            return false;
        const host::NumberFault fault = host::parse_number(word, single, value);
        if (fault == host::NumberFault::not_finite)
            value = std::numeric_limits<double>::infinity();
        return fault != host::NumberFault::not_a_number ||
               fail("'" + std::string(word.substr(0, 40)) + "' is not a number");
    }
    char bytes[8];
    const size_t size = ply_size(type);
    last_ = at_;
    if (left() < size)
        return fail("the file ends here");
    std::memcpy(bytes, file_.bytes.data() + at_, size);
    if (is_little_endian() != (file_.encoding == PlyEncoding::little_endian))
        std::reverse(bytes, bytes + size);
    at_ += size;
    value = decode(type, bytes);
    return true;
}

bool PlyCursor::next_count(const PlyProperty& list, uint64_t& count) {
    double value = 0.0;
    if (!next(list.count_type, value))
        return false;
    // Each item of a text takes a digit and a blank.
    const uint64_t least = file_.encoding == PlyEncoding::ascii ? 2 : ply_size(list.type);
    value = std::min(std::max(value, -1e9), 1e18); // what an integer holds
    if (!(value >= 0.0 && value <= 4294967295.0) || value != std::floor(value) ||
        uint64_t(value) > (left() + 1) / least)
        return fail("a list of " + std::to_string(int64_t(value)) + " items, with " +
                    std::to_string(left()) + " bytes left in the file");
    count = uint64_t(value);
    return true;
}

bool PlyCursor::skip(const PlyProperty& property, uint64_t& begin) {
    uint64_t count = 1;
    if (property.is_list && !next_count(property, count))
        return false;
    const uint64_t begin_of_count = last_;
    if (file_.encoding != PlyEncoding::ascii) {
        const uint64_t size = ply_size(property.type);
        begin = property.is_list ? begin_of_count : at_;
        if (left() / size < count)
            return fail("the file ends here");
        at_ += count * size;
        return true;
    }
    double ignored = 0.0;
    for (uint64_t i = 0; i < count; ++i) {
        if (!next(property.type, ignored))
            return false;
        if (i == 0)
            begin = last_;
    }
    if (property.is_list)
        begin = begin_of_count;
    return true;
}

std::string ply_place(const PlyFile& file, uint64_t offset) {
    if (file.encoding != PlyEncoding::ascii)
        return "byte " + std::to_string(offset);
    const auto end = file.bytes.begin() + ptrdiff_t(std::min<uint64_t>(offset, file.bytes.size()));
    return "line " + std::to_string(1 + std::count(file.bytes.begin(), end, file.line_end.back()));
}

bool read_ply(std::string bytes, PlyFile& file, std::string& error) {
    file = PlyFile();
    file.bytes = std::move(bytes);
    return Reader(file, error).run();
}

void PlyWriter::add(PlyType type, double value) {
    char bytes[32];
    if (encoding_ != PlyEncoding::ascii) {
        const size_t size = ply_size(type);
        encode(type, value, bytes);
        if (is_little_endian() != (encoding_ == PlyEncoding::little_endian))
            std::reverse(bytes, bytes + size);
        bytes_.append(bytes, size);
        return;
    }
    char* end = bytes;
    if (type == PlyType::float32)
        end = std::to_chars(bytes, bytes + sizeof bytes, float(value)).ptr;
    else if (type == PlyType::float64)
        end = std::to_chars(bytes, bytes + sizeof bytes, value).ptr;
    else
        end = std::to_chars(bytes, bytes + sizeof bytes, int64_t(value)).ptr;
    copy({bytes, size_t(end - bytes)});
}

void PlyWriter::copy(std::string_view property) {
    if (encoding_ == PlyEncoding::ascii && row_has_begun_)
        bytes_ += ' ';
    bytes_ += property;
    row_has_begun_ = true;
}

void PlyWriter::end_row() {
    if (encoding_ == PlyEncoding::ascii)
        bytes_ += line_end_;
    row_has_begun_ = false;
}

} // namespace formats
