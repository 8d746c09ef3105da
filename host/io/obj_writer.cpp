#include "host/io/obj_writer.h"

#include "host/io/obj_lexer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace host {
namespace {

/// Per UV index the number of its new `vt` line, from 1; 0 if unused.
using Numbering = std::vector<uint32_t>;

bool same_bits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

/// Validates the UV set and numbers its used coordinates from 1.
bool number_used(const ObjDocument& document, const ObjUvs& uvs, Numbering& number,
                 std::vector<uint32_t>& used, std::string& error) {
    const size_t count = uvs.u.size();
    if (uvs.v.size() != count || uvs.corner_uv.size() != document.corner_vertex.size()) {
        error = "the UV set does not fit the mesh";
        return false;
    }
    number.assign(count, 0);
    for (const int32_t id : uvs.corner_uv) {
        if (id < -1 || (id >= 0 && static_cast<size_t>(id) >= count)) {
            error = "a face corner has UV " + std::to_string(id) + " of " + std::to_string(count);
            return false;
        }
        if (id >= 0)
            number[static_cast<size_t>(id)] = 1;
    }
    for (size_t i = 0; i < count; ++i) {
        if (number[i] == 0)
            continue;
        if (!std::isfinite(uvs.u[i]) || !std::isfinite(uvs.v[i])) {
            error = "UV " + std::to_string(i) + " is not finite";
            return false;
        }
        used.push_back(static_cast<uint32_t>(i));
        number[i] = static_cast<uint32_t>(used.size());
    }
    return true;
}

bool unchanged(const ObjDocument& document, const ObjUvs& uvs, const Numbering& number,
               const std::vector<uint32_t>& used) {
    if (used.size() != document.texture_count())
        return false;
    for (size_t i = 0; i < used.size(); ++i)
        if (!same_bits(uvs.u[used[i]], document.texture_coords[2 * i]) ||
            !same_bits(uvs.v[used[i]], document.texture_coords[2 * i + 1]))
            return false;
    for (size_t c = 0; c < uvs.corner_uv.size(); ++c) {
        const int32_t id = uvs.corner_uv[c];
        const uint32_t now = id < 0 ? k_obj_none : number[static_cast<size_t>(id)] - 1;
        if (now != document.corner_texture[c])
            return false;
    }
    return true;
}

/// Bytes of a `vt` line and of a texture index at most, numbers of any value included.
constexpr size_t k_max_line = 40;
constexpr size_t k_max_index = 12;

/// Writes a changed copy of the document's text. Writes through a pointer into a string that is
/// long enough from the start: appending piece by piece took most of the time.
class Patcher {
public:
    /// `lines`: how many `vt` lines are added at most; `words`: how many words are changed.
    Patcher(const ObjDocument& document, size_t lines, size_t words, std::string& out)
        : text_(document.text), lexer_(document.text), out_(out) {
        out_.resize(text_.size() + k_max_line * lines + k_max_index * words);
        at_ = out_.data();
    }
    /// Copies the rest of the text.
    void finish() {
        copy_to(text_.size());
        out_.resize(static_cast<size_t>(at_ - out_.data()));
    }

    void copy_to(uint64_t offset) {
        if (offset <= done_)
            return;
        at_ = std::copy(text_.data() + done_, text_.data() + offset, at_);
        done_ = offset;
    }
    /// Drops all lines of the statement at `offset`.
    void drop_lines(uint64_t offset) {
        copy_to(lexer_.line_start(offset));
        lexer_.seek(offset);
        done_ = lexer_.skip_statement();
    }
    void add_lines(const ObjUvs& uvs, const std::vector<uint32_t>& used);
    /// Replaces the texture index in each word of the statement after the first `skip` words by
    /// `next()`, 0 for none.
    template <class Next>
    void patch_words(uint64_t offset, int skip, Next next);
    uint64_t line_start(uint64_t offset) const { return lexer_.line_start(offset); }

private:
    void patch(std::string_view word, uint32_t number);
    template <class Number>
    void append(Number number) {
        at_ = std::to_chars(at_, at_ + 16, number).ptr;
    }
    void append_text(std::string_view text) { at_ = std::copy(text.begin(), text.end(), at_); }

    const std::string& text_;
    ObjLexer lexer_;
    std::string& out_;
    char* at_;
    uint64_t done_ = 0; // offset up to which the text has been copied or left out
};

void Patcher::add_lines(const ObjUvs& uvs, const std::vector<uint32_t>& used) {
    const std::string_view line_end = lexer_.line_end();
    for (const uint32_t id : used) {
        append_text("vt ");
        append(uvs.u[id]);
        *at_++ = ' ';
        append(uvs.v[id]);
        append_text(line_end);
    }
}

template <class Next>
void Patcher::patch_words(uint64_t offset, int skip, Next next) {
    lexer_.seek(offset);
    std::string_view word;
    for (int i = 0; i < skip; ++i)
        lexer_.next_word(word);
    while (lexer_.next_word(word))
        patch(word, next());
}

/// Writes a corner with texture index `number`: v and v/t become v/NUMBER, v/t/n becomes
/// v/NUMBER/n. Without one (0), v/t becomes v and v/t/n becomes v//n. A word that is not made of
/// numbers stays as it is: the words of a line element are never parsed, and "\\/" without its
/// slash would join the next line to it.
void Patcher::patch(std::string_view word, uint32_t number) {
    if (word.find_first_not_of("+-0123456789/") != word.npos)
        return;
    const size_t slash = word.find('/');
    if (slash == word.npos) {
        copy_to(lexer_.offset_of(word) + word.size());
        if (number) {
            *at_++ = '/';
            append(number);
        }
        return;
    }
    size_t texture_end = word.find('/', slash + 1);
    texture_end = texture_end == word.npos ? word.size() : texture_end;
    const bool has_normal = texture_end + 1 < word.size();
    copy_to(lexer_.offset_of(word) + slash + (number || has_normal ? 1 : 0));
    if (number)
        append(number);
    // A corner must not end in a slash: for readers "v/" is a syntax error.
    done_ = lexer_.offset_of(word) + (number || has_normal ? texture_end : word.size());
}

/// Offset of the first old `vt` line, unless a face comes before it: some readers resolve indices
/// while they read, so coordinates must come before the faces.
uint64_t insertion_point(const ObjDocument& document, const Patcher& patcher) {
    for (const ObjStatement& statement : document.statements) {
        if (statement.kind == ObjStatement::texture)
            return patcher.line_start(statement.offset);
        if (statement.kind == ObjStatement::polygon)
            break;
    }
    return document.insert_at;
}

} // namespace

bool format_obj(const ObjDocument& document, const ObjUvs& uvs, std::string& text,
                std::string& error) {
    Numbering number;
    std::vector<uint32_t> used;
    if (!number_used(document, uvs, number, used, error))
        return false;
    if (unchanged(document, uvs, number, used)) {
        text = document.text;
        return true;
    }
    Patcher patcher(document, used.size(), uvs.corner_uv.size(), text);
    const uint64_t block_at = insertion_point(document, patcher);
    bool added = false;
    size_t corner = 0;
    for (const ObjStatement& statement : document.statements) {
        if (!added && statement.offset >= block_at) {
            patcher.copy_to(block_at);
            patcher.add_lines(uvs, used);
            added = true;
        }
        if (statement.kind == ObjStatement::texture) {
            patcher.drop_lines(statement.offset);
        } else if (statement.kind == ObjStatement::polygon) {
            patcher.patch_words(statement.offset, 1, [&] {
                const int32_t id = uvs.corner_uv[corner++];
                return id < 0 ? 0u : number[static_cast<size_t>(id)];
            });
        } else {
            const bool surface = document.text[statement.offset] == 's';
            patcher.patch_words(statement.offset, surface ? 5 : 1, [] { return 0u; });
        }
    }
    patcher.finish();
    return true;
}

} // namespace host
