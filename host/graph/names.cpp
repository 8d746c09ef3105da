// Node names: finding free ones, looking up nodes by name and path.
#include "host/graph/scene.h"

#include <algorithm>
#include <cctype>

namespace host::graph {

namespace {

/// A name split into its text and its trailing digits.
struct Stem {
    std::string text;
    std::string digits;
};

Stem split(const std::string& name) {
    size_t end = name.size();
    // At most nine digits count as a number, so that it fits an int.
    while (end > 0 && name.size() - end < 9 &&
           std::isdigit(static_cast<unsigned char>(name[end - 1])))
        --end;
    return {name.substr(0, end), name.substr(end)};
}

bool is_name_char(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == ':';
}

} // namespace

std::string Scene::legal_name(const std::string& wanted) {
    size_t first = 0;
    while (first < wanted.size() && (wanted[first] == ':' || wanted[first] == '|'))
        ++first;
    std::string name = wanted.substr(first);
    for (char& c : name)
        if (!is_name_char(c))
            c = '_';
    if (name.empty())
        return "node";
    if (std::isdigit(static_cast<unsigned char>(name.front())))
        name.insert(name.begin(), '_');
    return name;
}

bool Scene::name_is_free(const std::string& name, const Node* of, const DagNode* parent) const {
    const std::vector<Node*>& holders = named(name);
    if (holders.empty() || (holders.size() == 1 && holders.front() == of))
        return true;
    const bool is_dag = of != nullptr && const_cast<Node*>(of)->as_dag_node() != nullptr;
    // Dependency nodes never share a name, so the only holder is one that may not share.
    if (!is_dag || holders.front()->as_dag_node() == nullptr)
        return false;
    // DAG nodes below different parents may share a name. Searches the shorter list.
    const std::vector<DagNode*>& siblings = parent == nullptr ? top_level_ : parent->children_;
    if (siblings.size() < holders.size())
        return std::none_of(siblings.begin(), siblings.end(), [&](const DagNode* sibling) {
            return sibling != of && sibling->name_ == name;
        });
    return std::none_of(holders.begin(), holders.end(), [&](Node* holder) {
        const auto& parents = holder->as_dag_node()->parents_;
        return holder != of && (parent == nullptr ? parents.empty()
                                                  : std::find(parents.begin(), parents.end(),
                                                              parent) != parents.end());
    });
}

std::string Scene::free_name(const std::string& wanted, const Node* of,
                             const DagNode* parent) const {
    if (name_is_free(wanted, of, parent))
        return wanted;
    const Stem stem = split(wanted);
    const bool leads_with_zero = stem.digits.size() > 1 && stem.digits.front() == '0';
    const unsigned int start =
        stem.digits.empty() ? 1u : static_cast<unsigned int>(std::stoul(stem.digits)) + 1;
    unsigned int& number = next_number_.try_emplace(wanted, start).first->second;
    for (;; ++number) {
        std::string digits = std::to_string(number);
        if (leads_with_zero && digits.size() < stem.digits.size())
            digits.insert(0, stem.digits.size() - digits.size(), '0');
        const std::string name = stem.text + digits;
        if (named(name).empty())
            return name;
    }
}

void Scene::unindex(Node& node) {
    const auto found = by_name_.find(node.name_);
    if (found == by_name_.end())
        return;
    std::vector<Node*>& list = found->second;
    const auto at = std::find(list.begin(), list.end(), &node);
    if (at != list.end())
        list.erase(at);
    if (!list.empty())
        return;
    by_name_.erase(found);
    // Freeing this name may have freed a number below the next one to try.
    if (!split(node.name_).digits.empty())
        next_number_.clear();
}

std::string Scene::rename(Node& node, const std::string& wanted) {
    DagNode* dag = node.as_dag_node();
    const DagNode* parent =
        dag == nullptr || dag->parents_.empty() ? nullptr : dag->parents_.front();
    const std::string name = free_name(legal_name(wanted), &node, parent);
    if (name == node.name_)
        return name;
    if (node.in_scene_)
        unindex(node);
    node.name_ = name;
    if (node.in_scene_)
        by_name_[name].push_back(&node);
    is_modified = true;
    return name;
}

const std::vector<Node*>& Scene::named(const std::string& name) const {
    static const std::vector<Node*> none;
    const auto found = by_name_.find(name);
    return found == by_name_.end() ? none : found->second;
}

namespace {

/// Splits "a|b" into names without root namespace; empty if one of the names is empty.
std::vector<std::string> split_path(std::string_view text) {
    std::vector<std::string> words;
    size_t start = 0;
    while (start <= text.size()) {
        const size_t bar = std::min(text.find('|', start), text.size());
        std::string word(text.substr(start, bar - start));
        if (!word.empty() && word.front() == ':')
            word.erase(0, 1);
        if (word.empty())
            return {};
        words.push_back(std::move(word));
        start = bar + 1;
    }
    return words;
}

/// Extends `path` downwards along children named by `words` from position `next` on; appends
/// complete matches.
void descend(const DagPath& path, const std::vector<std::string>& words, size_t next,
             std::vector<SelectionItem>& found) {
    if (next == words.size()) {
        found.emplace_back(path);
        return;
    }
    for (DagNode* child : path.back()->children()) {
        if (child->name_text() != words[next])
            continue;
        DagPath longer = path;
        longer.push_back(child);
        descend(longer, words, next + 1, found);
    }
}

/// How many names two paths have in common, counted from their ends.
size_t common_names(const DagPath& a, const DagPath& b) {
    size_t count = 0;
    while (count < a.size() && count < b.size() &&
           a[a.size() - 1 - count]->name_text() == b[b.size() - 1 - count]->name_text())
        ++count;
    return count;
}

const DagNode* only_parent(const DagNode& node) {
    return node.parents().empty() ? nullptr : node.parents().front();
}

/// How many names the path up from `node`, which has no instances, has in common with `above`.
size_t common_names(const std::vector<const DagNode*>& above, const DagNode* node) {
    size_t count = 0;
    for (; count < above.size() && node != nullptr; ++count, node = only_parent(*node))
        if (above[count]->name_text() != node->name_text())
            break;
    return count;
}

/// The end of a path that is longer than the `shared` names which another path ends with as well;
/// the whole path if that does not tell the two apart, or if `is_removed` from the scene.
std::string name_from(const std::vector<const DagNode*>& path, size_t shared, bool is_removed) {
    const size_t taken = std::min(std::max<size_t>(shared + 1, 2), path.size());
    const bool is_whole = is_removed || shared + 1 > path.size() || path.size() == 1;
    std::string text = is_whole ? "|" : "";
    for (size_t i = path.size() - (is_whole ? path.size() : taken); i < path.size(); ++i)
        text += path[i]->name_text() + (i + 1 < path.size() ? "|" : "");
    return text;
}

} // namespace

std::vector<SelectionItem> Scene::find_all(std::string_view text) const {
    const bool absolute = !text.empty() && text.front() == '|';
    const std::vector<std::string> words = split_path(absolute ? text.substr(1) : text);
    std::vector<SelectionItem> found;
    if (words.empty())
        return found;
    // Starts from the name with the fewest nodes.
    size_t rarest = words.size() - 1;
    for (size_t i = words.size() - 1; i-- > 0;)
        if (named(words[i]).size() < named(words[rarest]).size())
            rarest = i;
    for (Node* node : named(words[rarest])) {
        DagNode* dag = node->as_dag_node();
        if (dag == nullptr || (words.size() == 1 && !absolute && has_one_path(*dag))) {
            if (words.size() == 1 && !absolute)
                found.emplace_back(*node);
            continue;
        }
        for (const DagPath& path : dag->all_paths()) {
            const size_t above = rarest + 1;
            if (path.size() < above || (absolute && path.size() != above))
                continue;
            const bool fits =
                std::equal(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(above),
                           path.end() - static_cast<std::ptrdiff_t>(above),
                           [](const std::string& word, const Ref<DagNode>& one) {
                               return word == one->name_text();
                           });
            if (fits)
                descend(path, words, above, found);
        }
    }
    return found;
}

Node* Scene::find(std::string_view name_or_path) const {
    // A plain name that one node has needs no paths.
    if (name_or_path.find_first_of("|:") == std::string_view::npos) {
        const std::vector<Node*>& holders = named(std::string(name_or_path));
        if (holders.size() == 1)
            return holders.front();
    }
    const std::vector<SelectionItem> found = find_all(name_or_path);
    if (found.empty())
        return nullptr;
    for (const SelectionItem& item : found)
        if (item.node.get() != found.front().node.get())
            return nullptr;
    return found.front().node.get();
}

bool Scene::has_one_path(const DagNode& node) const {
    return extra_parents_ == 0 || node.path_count() == 1;
}

std::string Scene::partial_name(const DagNode& node) const {
    const std::vector<Node*>& holders = named(node.name_text());
    if (holders.size() == 1 && has_one_path(node))
        return node.name_text();
    if (extra_parents_ > 0)
        return partial_name(node.path());
    // Without instances there is one path up from every node, which need not be copied.
    std::vector<const DagNode*> above;
    for (const DagNode* at = &node; at != nullptr; at = only_parent(*at))
        above.push_back(at);
    size_t shared = 0;
    for (Node* holder : holders)
        if (const DagNode* dag = holder->as_dag_node(); dag != nullptr && dag != &node)
            shared = std::max(shared, common_names(above, dag));
    return name_from({above.rbegin(), above.rend()}, shared, holders.empty());
}

std::string Scene::partial_name(const SelectionItem& item) const {
    DagNode* const dag = item.node->as_dag_node();
    return has_one_path(*dag) ? partial_name(*dag) : partial_name(item.path());
}

std::string Scene::partial_name(const DagPath& path) const {
    if (path.empty())
        return "";
    const std::vector<Node*>& holders = named(path.back()->name_text());
    if (holders.size() == 1 && has_one_path(*path.back()))
        return path.back()->name_text();
    // The name must reach above all names that another path ends with as well.
    size_t shared = 0;
    for (Node* holder : holders)
        if (const DagNode* dag = holder->as_dag_node())
            for (const DagPath& other : dag->all_paths())
                if (other != path)
                    shared = std::max(shared, common_names(path, other));
    std::vector<const DagNode*> nodes;
    for (const Ref<DagNode>& node : path)
        nodes.push_back(node.get());
    return name_from(nodes, shared, holders.empty());
}

} // namespace host::graph
