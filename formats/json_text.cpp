#include "formats/json_text.h"

namespace formats {
namespace {

/// Depth is checked before parsing: a parsed value is destroyed by recursion.
bool is_too_deep(std::string_view text) {
    int depth = 0;
    bool in_string = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (in_string) {
            i += c == '\\';
            in_string = c != '"';
        } else if (c == '"') {
            in_string = true;
        } else if (c == '[' || c == '{') {
            if (++depth > k_max_json_depth)
                return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

} // namespace

bool parse_json(std::string_view text, Json& json, std::string& error) {
    if (is_too_deep(text)) {
        error = "JSON: more than " + std::to_string(k_max_json_depth) +
                " arrays and objects inside each other";
        return false;
    }
    try {
        json = Json::parse(text);
        return true;
    } catch (const Json::parse_error& failure) {
        error = "JSON: not valid at byte " + std::to_string(failure.byte);
    } catch (const Json::exception&) { // a number beyond the range of a double
        error = "JSON: a number is out of range";
    }
    return false;
}

} // namespace formats
