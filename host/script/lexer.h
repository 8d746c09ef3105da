/// Splits script text into tokens. The language reads the same characters in two ways: in an
/// expression `a-b` is a subtraction, as an argument of a command `pCube1.vtx[0:3]` is one word and
/// `-n` a flag. The parser chooses the way for each token.
#pragma once

#include "host/script/value.h"

#include <memory>
#include <string>
#include <string_view>

namespace host::script {

/// Where a token starts. Lines and columns count from 1, columns in bytes.
struct Position {
    uint32_t line = 1;
    uint32_t column = 1;
};

/// An error with its position: what() is "FILE:LINE:COLUMN: TEXT".
class MHOST_EXPORT ScriptError : public std::runtime_error {
public:
    ScriptError(const std::string& file, Position at, const std::string& text);
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

enum class TokenKind {
    end,
    punctuation, ///< text: the operator
    name,        ///< identifier, namespaces included
    variable,    ///< text without the dollar sign
    integer,
    real,
    string, ///< text with escapes resolved
    word,   ///< bare argument: "pCube1.vtx[0:3]"
    flag    ///< "-name", text without the dash
};

struct Token {
    TokenKind kind = TokenKind::end;
    std::string text;
    Value number; ///< value of an integer or real token
    Position at;
    bool spaced = false; ///< preceded by white space or a comment
    bool is(const char* punctuation) const {
        return kind == TokenKind::punctuation && text == punctuation;
    }
};

enum class Reading { expression, argument };

class MHOST_EXPORT Lexer {
public:
    /// `text` must outlive the lexer. `file` is the file name in errors.
    Lexer(std::string_view text, std::string file);

    /// Returns the next token without consuming it. Throws ScriptError if the text is not a valid
    /// token.
    const Token& peek(Reading reading);
    Token take(Reading reading);

    /// The current offset, for `rewind` in constructs that need lookahead.
    size_t mark() const { return taken_; }
    void rewind(size_t mark);
    /// Offset of the next token, past white space and comments.
    size_t offset_of_next() const { return skip_space(taken_); }
    Position position_of(size_t offset) const;
    const std::string& file() const { return file_; }

private:
    Token read(Reading reading, size_t& cursor) const;
    size_t skip_space(size_t cursor) const;
    Token read_string(size_t& cursor) const;
    Token read_number(size_t& cursor) const;
    /// Throws ScriptError at `start` if the number does not fit 32 bits.
    Value integer_value(const std::string& digits, size_t start) const;
    Token read_argument(size_t& cursor) const;
    Token read_expression(size_t& cursor) const;
    char at(size_t offset) const { return offset < text_.size() ? text_[offset] : '\0'; }
    [[noreturn]] void fail(size_t offset, const std::string& text) const;

    std::string_view text_;
    std::string file_;
    std::vector<size_t> line_starts_;
    size_t taken_ = 0;
    size_t next_ = 0; ///< end of the cached token
    Token cached_;
    Reading cached_reading_ = Reading::expression;
    bool has_cached_ = false;
};

} // namespace host::script
