// Names: which are free, who has which, what a path means.
#include "host/graph/scene.h"

#include <algorithm>
#include <cctype>

namespace host::graph {

namespace {

/// A name without the number at its end, and that number as text.
struct Stem {
    std::string text;
    std::string digits;
};

Stem split(const std::string& name) {
    size_t end = name.size();
    // More digits than an int holds are part of the name.
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
    const bool is_dag = of != nullptr && const_cast<Node*>(of)->as_dag_node() != nullptr;
    for (Node* other : named(name)) {
        if (other == of)
            continue;
        const DagNode* dag = other->as_dag_node();
        if (!is_dag || dag == nullptr)
            return false;
        // Below different parents two DAG nodes may share a name.
        const auto& parents = dag->parents_;
        if (parent == nullptr ? parents.empty()
                              : std::find(parents.begin(), parents.end(), parent) != parents.end())
            return false;
    }
    return true;
}

std::string Scene::free_name(const std::string& wanted, const Node* of,
                             const DagNode* parent) const {
    if (name_is_free(wanted, of, parent))
        return wanted;
    const Stem stem = split(wanted);
    const unsigned int start =
        stem.digits.empty() ? 1u : static_cast<unsigned int>(std::stoul(stem.digits)) + 1;
    unsigned int& hint = next_number_.try_emplace(stem.text, 1u).first->second;
    const bool leads_with_zero = stem.digits.size() > 1 && stem.digits.front() == '0';
    unsigned int number = leads_with_zero ? start : std::max(start, hint);
    for (;; ++number) {
        std::string digits = std::to_string(number);
        if (leads_with_zero && digits.size() < stem.digits.size())
            digits.insert(0, stem.digits.size() - digits.size(), '0');
        const std::string name = stem.text + digits;
        if (named(name).empty()) {
            if (!leads_with_zero && start <= hint)
                hint = number;
            return name;
        }
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
    const Stem stem = split(node.name_);
    const auto hint = next_number_.find(stem.text);
    if (hint != next_number_.end() && !stem.digits.empty())
        hint->second = std::min(hint->second, static_cast<unsigned int>(std::stoul(stem.digits)));
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

std::vector<SelectionItem> Scene::find_all(std::string_view text) const {
    const bool absolute = !text.empty() && text.front() == '|';
    std::vector<std::string> words;
    size_t start = absolute ? 1 : 0;
    while (start <= text.size()) {
        const size_t bar = std::min(text.find('|', start), text.size());
        std::string word(text.substr(start, bar - start));
        if (!word.empty() && word.front() == ':')
            word.erase(0, 1); // the root namespace
        if (word.empty())
            return {};
        words.push_back(std::move(word));
        start = bar + 1;
    }
    std::vector<SelectionItem> found;
    if (words.empty())
        return found;
    for (Node* node : named(words.back())) {
        DagNode* dag = node->as_dag_node();
        if (dag == nullptr) {
            if (words.size() == 1 && !absolute)
                found.push_back({node, {}, nullptr, {}});
            continue;
        }
        for (DagPath& path : dag->all_paths()) {
            if (path.size() < words.size() || (absolute && path.size() != words.size()))
                continue;
            const bool fits = std::equal(words.rbegin(), words.rend(), path.rbegin(),
                                         [](const std::string& word, const Ref<DagNode>& one) {
                                             return word == one->name_text();
                                         });
            if (fits)
                found.push_back({node, std::move(path), nullptr, {}});
        }
    }
    return found;
}

Node* Scene::find(std::string_view name_or_path) const {
    const std::vector<SelectionItem> found = find_all(name_or_path);
    if (found.empty())
        return nullptr;
    for (const SelectionItem& item : found)
        if (item.node.get() != found.front().node.get())
            return nullptr;
    return found.front().node.get();
}

std::string Scene::partial_name(const DagPath& path) const {
    if (path.empty())
        return "";
    std::string text;
    for (size_t taken = 1; taken <= path.size(); ++taken) {
        const std::string& word = path[path.size() - taken]->name_text();
        text = taken == 1 ? word : word + "|" + text;
        if (find_all(text).size() == 1)
            return text;
    }
    return "|" + text;
}

} // namespace host::graph
