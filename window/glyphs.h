/// The characters that the fonts must hold: a base set, and those of texts that were shown.
///
/// A font with all Chinese characters would be slow to load and large; names in files use few of
/// them.
#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace window {

class Glyphs {
public:
    /// Notes the characters of a text in UTF-8. Invalid bytes are skipped, and so are characters
    /// above U+FFFF, which the user interface cannot show.
    void note(const std::string& text);
    void note(uint32_t character);
    /// Whether a character was noted that `characters` did not contain at the last call.
    bool take_news();
    /// Noted characters outside of the base set.
    const std::set<uint16_t>& characters() const { return characters_; }

    /// Whether every font holds the character anyway: Latin letters and some signs.
    static bool is_base(uint32_t character);

private:
    std::set<uint16_t> characters_;
    bool has_news_ = false;
};

} // namespace window
