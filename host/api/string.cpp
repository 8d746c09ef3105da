#include <maya/MString.h>
#include <maya/MStringArray.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ostream>

namespace {

/// Formats a number with up to six significant digits, as scripts print it.
std::string number_text(double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), "%g", value);
    return buffer;
}

/// Parses a whole number; the text may have blanks around it but nothing else.
bool parse_int(const std::string& text, int& value) {
    const char* begin = text.c_str();
    char* end = NULL;
    errno = 0;
    const long parsed = std::strtol(begin, &end, 10);
    const bool whole =
        end != begin && text.find_first_not_of(" \t\r\n", static_cast<std::size_t>(end - begin)) ==
                            std::string::npos;
    if (!whole || errno == ERANGE || parsed != static_cast<int>(parsed))
        return false;
    value = static_cast<int>(parsed);
    return true;
}

bool parse_double(const std::string& text, double& value) {
    const char* begin = text.c_str();
    char* end = NULL;
    const double parsed = std::strtod(begin, &end);
    const bool whole =
        end != begin && text.find_first_not_of(" \t\r\n", static_cast<std::size_t>(end - begin)) ==
                            std::string::npos;
    if (!whole || !std::isfinite(parsed))
        return false;
    value = parsed;
    return true;
}

} // namespace

MString::MString() = default;
MString::MString(const char* text) : text_(text == NULL ? "" : text) {}
MString::MString(const char* text, int length)
    : text_(text == NULL ? "" : text,
            text == NULL || length < 0 ? 0 : static_cast<std::size_t>(length)) {}
MString::MString(const MString& other) = default;
MString::MString(MString&& other) noexcept = default;
MString::~MString() = default;

MString& MString::operator=(const MString& other) = default;
MString& MString::operator=(MString&& other) noexcept = default;

MString& MString::operator=(const char* text) {
    text_ =
        std::string(text == NULL ? "" : text); // a copy first: `text` may point into this string
    return *this;
}

MString& MString::operator=(double value) {
    text_ = number_text(value);
    return *this;
}

MString& MString::operator+=(const MString& other) {
    text_ += other.text_;
    return *this;
}

MString& MString::operator+=(const char* text) {
    text_ += text == NULL ? "" : text;
    return *this;
}

MString& MString::operator+=(double value) {
    text_ += number_text(value);
    return *this;
}

MString& MString::operator+=(float value) { return *this += static_cast<double>(value); }

MString& MString::operator+=(int value) {
    text_ += std::to_string(value);
    return *this;
}

MString& MString::operator+=(unsigned int value) {
    text_ += std::to_string(value);
    return *this;
}

MString MString::operator+(const MString& other) const { return MString(*this) += other; }
MString MString::operator+(const char* text) const { return MString(*this) += text; }
MString MString::operator+(double value) const { return MString(*this) += value; }
MString MString::operator+(float value) const { return MString(*this) += value; }
MString MString::operator+(int value) const { return MString(*this) += value; }
MString MString::operator+(unsigned int value) const { return MString(*this) += value; }

bool MString::operator==(const MString& other) const { return text_ == other.text_; }
bool MString::operator==(const char* text) const { return text_ == (text == NULL ? "" : text); }
bool MString::operator!=(const MString& other) const { return !(*this == other); }
bool MString::operator!=(const char* text) const { return !(*this == text); }

const char* MString::asChar() const { return text_.c_str(); }
unsigned int MString::length() const { return static_cast<unsigned int>(text_.size()); }

int MString::numChars() const {
    return static_cast<int>(std::count_if(text_.begin(), text_.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0u) !=
               0x80u; // count all bytes but UTF-8 continuation bytes
    }));
}

MStatus MString::set(const char* text) {
    if (text == NULL)
        return MS::kInvalidParameter;
    *this = text;
    return MS::kSuccess;
}

MStatus MString::set(double value) {
    *this = value;
    return MS::kSuccess;
}

MStatus MString::set(int value) {
    text_ = std::to_string(value);
    return MS::kSuccess;
}

void MString::clear() { text_.clear(); }

MString MString::substring(int start, int end) const {
    const int first = std::max(start, 0);
    const int last = std::min(end, static_cast<int>(text_.size()) - 1);
    return first > last ? MString() : MString(text_.data() + first, last - first + 1);
}

int MString::index(char c) const {
    const std::size_t found = text_.find(c);
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

int MString::rindex(char c) const {
    const std::size_t found = text_.rfind(c);
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

MStatus MString::split(char separator, MStringArray& pieces) const {
    pieces.clear();
    std::size_t begin = 0;
    while (begin < text_.size()) {
        const std::size_t end = std::min(text_.find(separator, begin), text_.size());
        if (end > begin) {
            const MStatus status =
                pieces.append(MString(text_.data() + begin, static_cast<int>(end - begin)));
            if (status.error())
                return status;
        }
        begin = end + 1;
    }
    return pieces.length() == 0 ? MS::kFailure : MS::kSuccess;
}

bool MString::isInt() const {
    int value = 0;
    return parse_int(text_, value);
}

bool MString::isDouble() const {
    double value = 0.0;
    return parse_double(text_, value);
}

int MString::asInt() const {
    int value = 0;
    return parse_int(text_, value) ? value : 0;
}

double MString::asDouble() const {
    double value = 0.0;
    return parse_double(text_, value) ? value : 0.0;
}

MString operator+(const char* text, const MString& string) { return MString(text) + string; }
bool operator==(const char* text, const MString& string) { return string == text; }
bool operator!=(const char* text, const MString& string) { return string != text; }

std::ostream& operator<<(std::ostream& stream, const MString& string) {
    return stream.write(string.asChar(), static_cast<std::streamsize>(string.length()));
}
