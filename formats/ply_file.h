/// PLY files, ASCII and binary: the header, and where each row of vertices and faces lies.
/// Source: G. Turk, "The PLY Polygon File Format" (1994).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace formats {

enum class PlyType { int8, uint8, int16, uint16, int32, uint32, float32, float64 };
enum class PlyEncoding { ascii, little_endian, big_endian };

size_t ply_size(PlyType type); ///< in bytes, 1 to 8
bool is_ply_real(PlyType type);
/// The greatest number that the type counts or points to; 0 for the floating-point types.
uint64_t greatest_of(PlyType type);

struct PlyProperty {
    std::string name;
    PlyType type = PlyType::float32; ///< of the value, or of a list's items
    bool is_list = false;
    PlyType count_type = PlyType::uint8; ///< of a list's length
    size_t line = 0;                     ///< in PlyFile::header
};

struct PlyElement {
    std::string name;
    uint64_t count = 0;
    std::vector<PlyProperty> properties;
    size_t line = 0;
    uint64_t begin = 0, end = 0; ///< of all its rows, offsets into the file's bytes
    std::vector<uint64_t> rows;  ///< offset of each row; only of "vertex" and "face"

    /// The property's number, or -1 if there is none of this name.
    int find(std::string_view property) const;
};

struct PlyFile {
    std::string bytes;
    std::vector<std::string> header; ///< its lines, without their ends
    std::string line_end;
    PlyEncoding encoding = PlyEncoding::ascii;
    std::vector<PlyElement> elements;

    const PlyElement* find(std::string_view element) const;
};

/// Reads values of a PLY file's body one after the other.
class PlyCursor {
public:
    PlyCursor(const PlyFile& file, uint64_t at) : file_(file), at_(at) {}

    /// Reads one value; numbers of a text that are not finite become infinite.
    /// Errors: false with a reason in `error()`.
    bool next(PlyType type, double& value);
    /// Reads the length of a list, which the rest of the file has room for.
    bool next_count(const PlyProperty& list, uint64_t& count);
    /// Passes over one property of a row. `begin` gets the offset of its first byte.
    bool skip(const PlyProperty& property, uint64_t& begin);
    uint64_t offset() const { return at_; }
    uint64_t begin_of_last() const { return last_; } ///< of the last value read
    const std::string& error() const { return error_; }

private:
    bool next_word(std::string_view& word);
    uint64_t left() const { return file_.bytes.size() - at_; }
    bool fail(const std::string& reason) {
        error_ = reason;
        return false;
    }

    const PlyFile& file_;
    uint64_t at_, last_ = 0;
    std::string error_;
};

/// Reads the header and finds the rows. Counts in the header are believed only as far as the bytes
/// go.
/// Errors: false with "line N: reason" or "byte N: reason" in `error`.
bool read_ply(std::string bytes, PlyFile& file, std::string& error);

/// "line N" of an ASCII file, "byte N" of a binary one.
std::string ply_place(const PlyFile& file, uint64_t offset);

/// Appends values to a PLY file's body.
class PlyWriter {
public:
    PlyWriter(PlyEncoding encoding, const std::string& line_end, std::string& bytes)
        : encoding_(encoding), line_end_(line_end), bytes_(bytes) {}
    void add(PlyType type, double value);
    /// A property of a file of the same encoding, as it is there.
    void copy(std::string_view property);
    void end_row();

private:
    PlyEncoding encoding_;
    const std::string& line_end_;
    std::string& bytes_;
    bool row_has_begun_ = false;
};

const char* ply_name(PlyType type);

} // namespace formats
