/// Numbers and names in the text files that the program writes anew.
#pragma once

#include <charconv>
#include <string>

namespace formats {

/// Appends a blank and the shortest text that reads back as the same value.
template <class Number>
void append_number(Number value, std::string& text, char before = ' ') {
    char digits[40];
    text += before;
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// A name without line ends and other control characters, which no text format quotes, and without
/// a backslash at its end, which would join the next line to an OBJ file's.
inline std::string one_line(std::string name) {
    for (char& c : name)
        if (static_cast<unsigned char>(c) < 32)
            c = '_';
    if (!name.empty() && name.back() == '\\')
        name.back() = '_';
    return name;
}

} // namespace formats
