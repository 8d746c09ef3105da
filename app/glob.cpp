#include "app/glob.h"

#include <algorithm>
#include <filesystem>

namespace app {
namespace {

namespace fs = std::filesystem;

/// Matches one character against the set that starts at pattern[at] == '['; moves `at` behind the
/// set. Returns false in `is_set` if there is no closing bracket.
bool matches_set(const std::string& pattern, size_t& at, char c, bool& is_set) {
    const size_t first = at + 1 + (at + 1 < pattern.size() && pattern[at + 1] == '!');
    const size_t end = pattern.find(']', first + 1);
    is_set = end != pattern.npos;
    if (!is_set)
        return false;
    const auto byte = [](char value) { return static_cast<unsigned char>(value); };
    bool found = false;
    for (size_t i = first; i < end; ++i) {
        const bool is_range = i + 2 < end && pattern[i + 1] == '-';
        const char last = is_range ? pattern[i + 2] : pattern[i];
        found |= byte(pattern[i]) <= byte(c) && byte(c) <= byte(last);
        i += is_range ? 2 : 0;
    }
    const bool negated = first == at + 2;
    at = end + 1;
    return found != negated;
}

/// Whether the pattern's item at `p`, which is not `*`, matches `c`; moves `p` behind the item.
bool matches_one(const std::string& pattern, size_t& p, char c) {
    if (pattern[p] == '[') {
        bool is_set = false;
        const bool found = matches_set(pattern, p, c, is_set);
        if (is_set)
            return found;
    }
    const char item = pattern[p++];
    return item == '?' || item == c;
}

bool is_hidden(const std::string& name) { return !name.empty() && name[0] == '.'; }

/// Names in a folder, in byte order; none if it cannot be read.
std::vector<std::string> names_in(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code failure;
    fs::directory_iterator entry(folder.empty() ? fs::path(".") : folder, failure);
    for (; !failure && entry != fs::directory_iterator(); entry.increment(failure))
        names.push_back(entry->path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

void expand(const fs::path& folder, std::vector<std::string>::const_iterator component,
            std::vector<std::string>::const_iterator end, std::vector<std::string>& found) {
    std::error_code failure;
    const bool is_last = component + 1 == end;
    if (*component == "**" && !is_last)
        expand(folder, component + 1, end, found);
    for (const std::string& name : names_in(folder)) {
        const fs::path path = folder / name;
        if (is_hidden(name) && !is_hidden(*component))
            continue;
        if (*component == "**" && fs::is_directory(fs::symlink_status(path, failure)))
            expand(path, component, end, found);
        if (!glob_matches(*component, name) || (*component == "**" && !is_last))
            continue;
        if (!is_last && fs::is_directory(path, failure))
            expand(path, component + 1, end, found);
        if (is_last && fs::exists(path, failure) && !fs::is_directory(path, failure))
            found.push_back(path.generic_string());
    }
}

} // namespace

bool is_glob(const std::string& text) { return text.find_first_of("*?[") != text.npos; }

bool glob_matches(const std::string& pattern, const std::string& name) {
    size_t p = 0, n = 0;
    size_t star = pattern.npos, star_name = 0; // where to go on if the rest does not match
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            star_name = n;
            continue;
        }
        if (p < pattern.size() && matches_one(pattern, p, name[n])) {
            ++n;
            continue;
        }
        if (star == pattern.npos)
            return false;
        p = star + 1;
        n = ++star_name;
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

std::string glob_base(const std::string& pattern) {
    fs::path base;
    for (const fs::path& component : fs::path(pattern)) {
        if (is_glob(component.string()))
            break;
        base /= component;
    }
    return base.generic_string();
}

std::vector<std::string> expand_glob(const std::string& pattern) {
    const fs::path base = glob_base(pattern);
    std::vector<std::string> components, found;
    for (const fs::path& component : fs::path(pattern))
        components.push_back(component.string());
    const auto skipped = std::distance(base.begin(), base.end());
    expand(base, components.begin() + skipped, components.end(), found);
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

} // namespace app
