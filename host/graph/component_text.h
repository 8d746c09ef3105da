/// Components of a mesh as text, as component lists hold them: "e[3] e[5:8]", "f[*]".
#pragma once

#include <maya/MTypes.h>

#include <cstdint>
#include <string>
#include <vector>

namespace host::graph {

/// "e[3] e[5:8]" for the ids of components of one kind: "vtx", "e", "f" or "map". `ids`: ascending.
MHOST_EXPORT std::string component_text(const std::string& kind,
                                        const std::vector<std::uint32_t>& ids);

/// The ids of one kind that a text names, ascending, without those from `count` on.
std::vector<std::uint32_t> ids_in_text(const std::string& text, const std::string& kind,
                                       std::uint32_t count);

/// Whether a word names components: "e[3]", "vtx[0:7]", "map[2:*]" or "f[*]".
bool is_component_word(const std::string& word);

/// The words of a text.
std::vector<std::string> component_words(const std::string& text);

} // namespace host::graph
