/// Splits OBJ text into statements and words. Used by reader and writer, so that both split it
/// alike.
///
/// A statement is a line, or several joined by a backslash at the end of the line. Blanks are
/// space, tab, vertical tab, form feed, and carriage return if lines end with a line feed. NUL
/// bytes between statements are blanks (padding after a crash); inside a statement they are not, so
/// that UTF-16 text is not read as single digits. A `#` starts a comment anywhere.
#pragma once

#include <maya/MTypes.h>

#include <cstdint>
#include <cstring>
#include <string_view>

namespace host {

class MHOST_EXPORT ObjLexer {
public:
    explicit ObjLexer(std::string_view text);

    /// Moves past the rest of the current statement to the next one that is neither empty nor a
    /// comment. False at the end of the text.
    bool next_statement();
    /// Moves to the statement whose keyword is at `offset`.
    void seek(uint64_t offset) { at_ = text_.data() + offset; }

    /// Reads the next word of the statement, without blanks and comments. False at its end.
    bool next_word(std::string_view& word);

    /// Offset of the next unread character.
    uint64_t offset() const { return static_cast<uint64_t>(at_ - text_.data()); }
    uint64_t offset_of(std::string_view word) const {
        return static_cast<uint64_t>(word.data() - text_.data());
    }
    /// Moves past the line end of the current statement and returns that offset.
    uint64_t skip_statement();
    /// Start of the line that contains `offset`: after the previous line end or byte-order mark.
    uint64_t line_start(uint64_t offset) const;
    /// Counts from 1.
    uint64_t line_number(uint64_t offset) const;
    /// The line end used in the text: "\n", "\r\n" or "\r".
    std::string_view line_end() const;

private:
    enum Kind : uint8_t { in_word, is_blank, is_special };
    bool blank(char c) const { return kinds_[static_cast<unsigned char>(c)] == is_blank; }
    const char* end() const { return text_.data() + text_.size(); }
    const char* find_newline(const char* from) const;
    /// Length of the joined line end at `p` (backslash included), or 0.
    size_t continuation(const char* p) const;

    std::string_view text_;
    const char* at_;
    uint64_t start_ = 0;      // offset after the byte-order mark
    char newline_ = '\n';     // '\r' if the text contains no line feed
    uint8_t kinds_[256] = {}; // of every character; special: line end, comment, backslash
};

} // namespace host
