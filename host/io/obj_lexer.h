/// Splits OBJ text into statements and words. Shared by the reader and the writer, so that both see
/// the same text.
///
/// A statement is a line, or several that a backslash at the line's end joins. Blanks are space,
/// tab, vertical tab and form feed, and a carriage return where lines end with a line feed. NUL
/// bytes between statements count as blanks (padding after a crash); inside one they do not, so
/// that 16-bit text is never read as separate digits. A `#` starts a comment anywhere.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace host {

class ObjLexer {
public:
    explicit ObjLexer(std::string_view text);

    /// Moves to the next statement that is neither empty nor a comment, past whatever is left of
    /// the present one; false at the end of the text.
    bool next_statement();
    /// Starts at the statement whose keyword stands at `offset`.
    void seek(uint64_t offset) { at_ = text_.data() + offset; }

    /// The next word of the statement; false at its end. Words hold no blanks and no comment.
    bool next_word(std::string_view& word);

    /// Offset of the next character to be read.
    uint64_t offset() const { return static_cast<uint64_t>(at_ - text_.data()); }
    uint64_t offset_of(std::string_view word) const {
        return static_cast<uint64_t>(word.data() - text_.data());
    }
    /// Offset just past the line end of the present statement.
    uint64_t skip_statement();
    /// Start of the line that holds `offset`: after the previous line end or the byte-order mark.
    uint64_t line_start(uint64_t offset) const;
    /// 1-based, as an editor counts.
    uint64_t line_number(uint64_t offset) const;
    /// The line end that the text uses.
    std::string_view line_end() const;

private:
    bool blank(char c) const {
        return c == ' ' || c == '\t' || c == '\v' || c == '\f' || (c == '\r' && newline_ == '\n');
    }
    const char* end() const { return text_.data() + text_.size(); }
    const char* find_newline(const char* from) const;
    /// Length of the joined line end at `p` (backslash included), or 0.
    size_t continuation(const char* p) const;

    std::string_view text_;
    const char* at_;
    uint64_t start_ = 0;  // past the byte-order mark
    char newline_ = '\n'; // '\r' in a text that has no line feed
};

} // namespace host
