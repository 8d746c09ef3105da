#include "host/graph/component_text.h"

#include <algorithm>
#include <optional>
#include <sstream>

namespace host::graph {
namespace {

constexpr std::uint64_t k_end = ~std::uint64_t(0);

struct Range {
    std::uint64_t first = 0, last = 0; ///< last: k_end up to the last component
};

/// Reads digits, or an asterisk as k_end. Ids that fit 32 bits have at most ten digits.
std::optional<std::uint64_t> number_in(const std::string& text) {
    if (text == "*")
        return k_end;
    const bool is_number = !text.empty() && text.size() <= 10 &&
                           text.find_first_not_of("0123456789") == std::string::npos;
    return is_number ? std::optional<std::uint64_t>(std::stoull(text)) : std::nullopt;
}

/// The range of a word such as "e[5:8]"; none if it is not a word of this form.
std::optional<Range> range_of(const std::string& word, std::string& kind) {
    const size_t open = word.find('[');
    if (open == std::string::npos || word.back() != ']')
        return std::nullopt;
    kind = word.substr(0, open);
    const std::string inner = word.substr(open + 1, word.size() - open - 2);
    const size_t colon = inner.find(':');
    const auto first = number_in(inner.substr(0, colon));
    const auto last = colon == std::string::npos ? first : number_in(inner.substr(colon + 1));
    if (!first || !last || (*first == k_end && colon != std::string::npos))
        return std::nullopt;
    return Range{*first == k_end ? 0 : *first, *last};
}

} // namespace

std::string component_text(const std::string& kind, const std::vector<std::uint32_t>& ids) {
    std::string text;
    for (size_t i = 0; i < ids.size();) {
        size_t end = i + 1;
        while (end < ids.size() && ids[end] == ids[end - 1] + 1)
            ++end;
        text += (text.empty() ? "" : " ") + kind + "[" + std::to_string(ids[i]) +
                (end - i > 1 ? ":" + std::to_string(ids[end - 1]) : "") + "]";
        i = end;
    }
    return text;
}

std::vector<std::uint32_t> ids_in_text(const std::string& text, const std::string& kind,
                                       std::uint32_t count) {
    std::vector<Range> ranges;
    for (const std::string& word : component_words(text)) {
        std::string of;
        const std::optional<Range> range = range_of(word, of);
        if (range && of == kind)
            ranges.push_back(*range);
    }
    std::sort(ranges.begin(), ranges.end(),
              [](const Range& a, const Range& b) { return a.first < b.first; });
    std::vector<std::uint32_t> ids;
    std::uint64_t next = 0;
    for (const Range& range : ranges)
        for (next = std::max(next, range.first); next <= range.last && next < count; ++next)
            ids.push_back(static_cast<std::uint32_t>(next));
    return ids;
}

bool is_component_word(const std::string& word) {
    std::string kind;
    return range_of(word, kind) && (kind == "vtx" || kind == "e" || kind == "f" || kind == "map");
}

std::vector<std::string> component_words(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

} // namespace host::graph
