#include "window/glyphs.h"

namespace window {
namespace {

/// Reads the character that begins at `at` and moves `at` behind it; 0 for an invalid byte.
uint32_t next_character(const std::string& text, size_t& at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(at++);
    if (first < 0x80)
        return first;
    const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
    if (more == 0 || at + size_t(more) > text.size())
        return 0;
    uint32_t character = first & (0x3Fu >> more);
    for (int i = 0; i < more; ++i) {
        if ((byte(at + size_t(i)) & 0xC0) != 0x80)
            return 0;
        character = character << 6 | (byte(at + size_t(i)) & 0x3Fu);
    }
    at += size_t(more);
    return character;
}

} // namespace

bool Glyphs::is_base(uint32_t character) {
    return character < 0x100 || (character >= 0x2010 && character <= 0x2027) ||
           (character >= 0x2190 && character <= 0x2193);
}

void Glyphs::note(uint32_t character) {
    if (is_base(character) || character > 0xFFFF)
        return;
    has_news_ = characters_.insert(static_cast<uint16_t>(character)).second || has_news_;
}

void Glyphs::note(const std::string& text) {
    for (size_t at = 0; at < text.size();)
        note(next_character(text, at));
}

bool Glyphs::take_news() {
    const bool had = has_news_;
    has_news_ = false;
    return had;
}

} // namespace window
