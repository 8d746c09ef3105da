#include "host/io/obj_lexer.h"

#include <algorithm>

namespace host {

ObjLexer::ObjLexer(std::string_view text) : text_(text), at_(text.data()) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF")
        start_ = 3;
    at_ += start_;
    const bool has_line_feed = !text.empty() && std::memchr(text.data(), '\n', text.size());
    newline_ = has_line_feed ? '\n' : '\r';
    for (const char c : {' ', '\t', '\v', '\f', '\r'})
        kinds_[static_cast<unsigned char>(c)] = is_blank;
    for (const char c : {newline_, '#', '\\'})
        kinds_[static_cast<unsigned char>(c)] = is_special;
}

const char* ObjLexer::find_newline(const char* from) const {
    if (from == end())
        return from;
    const void* found = std::memchr(from, newline_, static_cast<size_t>(end() - from));
    return found ? static_cast<const char*>(found) : end();
}

size_t ObjLexer::continuation(const char* p) const {
    if (*p != '\\')
        return 0;
    const size_t left = static_cast<size_t>(end() - p);
    if (left >= 2 && p[1] == newline_)
        return 2;
    if (left >= 3 && newline_ == '\n' && p[1] == '\r' && p[2] == '\n')
        return 3;
    return 0;
}

uint64_t ObjLexer::skip_statement() {
    const char* p = at_;
    while (p < end() && *p != newline_ && *p != '#') {
        // A '#' can also be part of a name, but is read as a comment, which a backslash does not
        // continue: ignoring the next line could lose data, while reading the rest of a name as a
        // statement of its own does no harm.
        const size_t joined = continuation(p);
        p += joined ? joined : 1;
    }
    p = find_newline(p);
    at_ = p < end() ? p + 1 : p;
    return offset();
}

bool ObjLexer::next_statement() {
    while (at_ < end()) {
        if (blank(*at_) || *at_ == '\0' || *at_ == newline_)
            ++at_;
        else if (*at_ == '#')
            at_ = find_newline(at_);
        else if (const size_t joined = continuation(at_))
            at_ += joined;
        else
            return true;
    }
    return false;
}

bool ObjLexer::next_word(std::string_view& word) {
    while (at_ < end()) {
        if (blank(*at_))
            ++at_;
        else if (const size_t joined = continuation(at_))
            at_ += joined;
        else
            break;
    }
    const char* begin = at_;
    const char* const stop = end();
    const char* p = begin;
    for (; p < stop; ++p) {
        const uint8_t kind = kinds_[static_cast<unsigned char>(*p)];
        if (kind != in_word && (kind == is_blank || *p != '\\' || continuation(p)))
            break;
    }
    at_ = p;
    word = std::string_view(begin, static_cast<size_t>(at_ - begin));
    return !word.empty();
}

uint64_t ObjLexer::line_start(uint64_t offset) const {
    while (offset > start_ && text_[offset - 1] != newline_)
        --offset;
    return offset;
}

uint64_t ObjLexer::line_number(uint64_t offset) const {
    const char* stop = text_.data() + std::min<uint64_t>(offset, text_.size());
    return 1 + static_cast<uint64_t>(std::count(text_.data(), stop, newline_));
}

std::string_view ObjLexer::line_end() const {
    if (newline_ == '\r')
        return text_.find('\r') == std::string_view::npos ? "\n" : "\r";
    const size_t at = text_.find('\n');
    return at > 0 && text_[at - 1] == '\r' ? "\r\n" : "\n";
}

} // namespace host
