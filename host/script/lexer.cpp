#include "host/script/lexer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace host::script {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_hex(char c) { return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}
bool is_name(char c) { return is_letter(c) || is_digit(c); }
bool is_space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

/// Characters of an unquoted argument: node and plug names, paths, patterns.
bool is_word(char c) { return is_name(c) || (c != '\0' && std::strchr(".:|*?[],~@#", c)); }
bool starts_word(char c) { return is_letter(c) || (c != '\0' && std::strchr(".:|*?", c)); }

/// Longest first, so that "<=" is not read as "<".
constexpr const char* k_operators[] = {"...", "++", "--", "+=", "-=", "*=", "/=", "%=", "^=", "==",
                                       "!=",  "<=", ">=", "&&", "||", "<<", ">>", "+",  "-",  "*",
                                       "/",   "%",  "^",  "=",  "<",  ">",  "!",  "?",  ":",  ";",
                                       ",",   ".",  "(",  ")",  "{",  "}",  "[",  "]",  "`"};

} // namespace

ScriptError::ScriptError(const std::string& file, Position at, const std::string& text)
    : std::runtime_error(file + ":" + std::to_string(at.line) + ":" + std::to_string(at.column) +
                         ": " + text),
      text_(text) {}

Lexer::Lexer(std::string_view text, std::string file) : text_(text), file_(std::move(file)) {
    line_starts_.push_back(0);
    for (size_t i = 0; i < text_.size(); ++i)
        if (text_[i] == '\n')
            line_starts_.push_back(i + 1);
}

Position Lexer::position_of(size_t offset) const {
    const auto after = std::upper_bound(line_starts_.begin(), line_starts_.end(), offset);
    const size_t line = size_t(after - line_starts_.begin());
    return {uint32_t(line), uint32_t(offset - line_starts_[line - 1] + 1)};
}

void Lexer::fail(size_t offset, const std::string& text) const {
    throw ScriptError(file_, position_of(offset), text);
}

const Token& Lexer::peek(Reading reading) {
    if (!has_cached_ || cached_reading_ != reading) {
        next_ = taken_;
        cached_ = read(reading, next_);
        cached_reading_ = reading;
        has_cached_ = true;
    }
    return cached_;
}

Token Lexer::take(Reading reading) {
    peek(reading);
    taken_ = next_;
    has_cached_ = false;
    return std::move(cached_);
}

void Lexer::rewind(size_t mark) {
    taken_ = mark;
    has_cached_ = false;
}

size_t Lexer::skip_space(size_t cursor) const {
    for (;;) {
        if (is_space(at(cursor))) {
            ++cursor;
        } else if (at(cursor) == '/' && at(cursor + 1) == '/') {
            cursor = std::min(text_.find('\n', cursor), text_.size());
        } else if (at(cursor) == '/' && at(cursor + 1) == '*') {
            const size_t close = text_.find("*/", cursor + 2);
            if (close == std::string_view::npos)
                fail(cursor, "Comment is not closed.");
            cursor = close + 2;
        } else {
            return cursor;
        }
    }
}

Token Lexer::read(Reading reading, size_t& cursor) const {
    const size_t before = cursor;
    cursor = skip_space(cursor);
    const size_t start = cursor;
    Token token;
    if (cursor >= text_.size()) {
        token.kind = TokenKind::end;
    } else if (at(cursor) == '"') {
        token = read_string(cursor);
    } else if (at(cursor) == '$') {
        if (!is_letter(at(cursor + 1)))
            fail(start, "A variable needs a name after \"$\".");
        size_t end = cursor + 1;
        while (is_name(at(end)))
            ++end;
        token.kind = TokenKind::variable;
        token.text = text_.substr(cursor + 1, end - cursor - 1);
        cursor = end;
    } else {
        token = reading == Reading::argument ? read_argument(cursor) : read_expression(cursor);
    }
    token.at = position_of(start);
    token.spaced = start != before;
    return token;
}

Token Lexer::read_string(size_t& cursor) const {
    Token token;
    token.kind = TokenKind::string;
    const size_t start = cursor++;
    for (;; ++cursor) {
        const char c = at(cursor);
        if (cursor >= text_.size() || c == '\n')
            fail(start, "String is not closed.");
        if (c == '"')
            break;
        if (c != '\\') {
            token.text += c;
            continue;
        }
        const char escaped = at(++cursor);
        if (cursor >= text_.size() || escaped == '\n')
            fail(start, "String is not closed.");
        switch (escaped) {
        case 'n':
            token.text += '\n';
            break;
        case 't':
            token.text += '\t';
            break;
        case 'r':
            token.text += '\r';
            break;
        default:
            token.text += escaped;
            break;
        }
    }
    ++cursor;
    return token;
}

Token Lexer::read_number(size_t& cursor) const {
    Token token;
    const size_t start = cursor;
    if (at(cursor) == '-' || at(cursor) == '+')
        ++cursor;
    if (at(cursor) == '0' && (at(cursor + 1) == 'x' || at(cursor + 1) == 'X') &&
        is_hex(at(cursor + 2))) {
        cursor += 2;
        while (is_hex(at(cursor)))
            ++cursor;
        token.kind = TokenKind::integer;
    } else {
        token.kind = TokenKind::integer;
        while (is_digit(at(cursor)))
            ++cursor;
        if (at(cursor) == '.') {
            token.kind = TokenKind::real;
            ++cursor;
            while (is_digit(at(cursor)))
                ++cursor;
        }
        const size_t sign = cursor + 1 + (at(cursor + 1) == '-' || at(cursor + 1) == '+' ? 1 : 0);
        if ((at(cursor) == 'e' || at(cursor) == 'E') && is_digit(at(sign))) {
            token.kind = TokenKind::real;
            cursor = sign;
            while (is_digit(at(cursor)))
                ++cursor;
        }
    }
    token.text = text_.substr(start, cursor - start);
    token.number = token.kind == TokenKind::real ? Value(std::strtod(token.text.c_str(), nullptr))
                                                 : integer_value(token.text, start);
    return token;
}

Value Lexer::integer_value(const std::string& digits, size_t start) const {
    const bool hex = digits.find_first_of("xX") != std::string::npos;
    const long long whole = std::strtoll(digits.c_str(), nullptr, hex ? 16 : 10);
    if (whole > (hex ? 0xFFFFFFFFll : 2147483647ll) || whole < -2147483648ll)
        fail(start, "The number " + digits + " does not fit an int.");
    return int32_t(uint32_t(whole));
}

Token Lexer::read_argument(size_t& cursor) const {
    const size_t start = cursor;
    const char c = at(cursor);
    const char after = at(cursor + 1);
    const bool signed_number =
        c == '-' && (is_digit(after) || (after == '.' && is_digit(at(cursor + 2))));
    if (is_digit(c) || signed_number || (c == '.' && is_digit(after))) {
        Token number = read_number(cursor);
        if (!is_word(at(cursor)) || signed_number)
            return number;
        cursor = start; // a word such as "2d.x"
    }
    Token token;
    if (c == '-' && is_letter(after)) {
        ++cursor;
        while (is_name(at(cursor)))
            ++cursor;
        token.kind = TokenKind::flag;
        token.text = text_.substr(start + 1, cursor - start - 1);
        return token;
    }
    if (starts_word(c) || is_digit(c)) {
        while (is_word(at(cursor)))
            ++cursor;
        token.kind = TokenKind::word;
        token.text = text_.substr(start, cursor - start);
        return token;
    }
    return read_expression(cursor);
}

Token Lexer::read_expression(size_t& cursor) const {
    Token token;
    const size_t start = cursor;
    if (is_digit(at(cursor)) || (at(cursor) == '.' && is_digit(at(cursor + 1))))
        return read_number(cursor);
    if (is_letter(at(cursor))) {
        // A colon directly before a letter separates a namespace, as in "a:b", but not in "a ? b :
        // c"; after "default" it ends a case label.
        while (is_name(at(cursor)) || (at(cursor) == ':' && is_letter(at(cursor + 1)) &&
                                       text_.compare(start, cursor - start, "default") != 0))
            ++cursor;
        token.kind = TokenKind::name;
        token.text = text_.substr(start, cursor - start);
        return token;
    }
    for (const char* op : k_operators) {
        const size_t length = std::strlen(op);
        if (text_.compare(cursor, length, op) == 0) {
            token.kind = TokenKind::punctuation;
            token.text = op;
            cursor += length;
            return token;
        }
    }
    fail(start, std::string("Unexpected character \"") + at(start) + "\".");
}

} // namespace host::script
