#include "host/commands/ui_model.h"

#include <algorithm>

namespace host {

std::string UiControl::path() const { return parent ? parent->path() + "|" + name : name; }

std::string UiControl::text(const char* property) const {
    const auto found = properties.find(property);
    return found == properties.end() ? std::string() : found->second.to_string();
}

std::string UiModel::free_name(const std::string& type) {
    std::string name;
    do {
        name = type + std::to_string(++counters_[type]);
    } while (by_name_.count(name) != 0);
    return name;
}

UiControl& UiModel::create(const std::string& type, const std::string& name, UiControl* parent,
                           bool is_layout) {
    if (!name.empty() && by_name_.count(name) != 0)
        throw script::ScriptFault("The name \"" + name + "\" is in use.");
    if (type != "window" && !parent)
        throw script::ScriptFault("There is no layout for the " + type + " to stand in.");
    if (parent && !parent->is_layout)
        throw script::ScriptFault("\"" + parent->name + "\" cannot hold a " + type + ".");
    auto control = std::make_unique<UiControl>();
    control->name = name.empty() ? free_name(type) : name;
    control->type = type;
    control->parent = parent;
    control->is_layout = is_layout;
    UiControl& made = *control;
    by_name_[made.name] = &made;
    (parent ? parent->children : windows_).push_back(std::move(control));
    return made;
}

UiControl* UiModel::find(const std::string& name) const {
    const size_t bar = name.rfind('|');
    const auto found = by_name_.find(bar == std::string::npos ? name : name.substr(bar + 1));
    if (found == by_name_.end())
        return nullptr;
    if (bar != std::string::npos && found->second->path() != name)
        return nullptr;
    return found->second;
}

std::vector<UiControl*> UiModel::all(UiControl& control) {
    std::vector<UiControl*> found = {&control};
    for (size_t i = 0; i < found.size(); ++i) {
        size_t at = i + 1;
        for (const auto& child : found[i]->children)
            found.insert(found.begin() + long(at++), child.get());
    }
    return found;
}

void UiModel::remove(UiControl& control) {
    for (UiControl* gone : all(control)) {
        by_name_.erase(gone->name);
        if (parent_ == gone)
            parent_ = nullptr;
        if (menu_ == gone)
            menu_ = nullptr;
    }
    auto& siblings = control.parent ? control.parent->children : windows_;
    siblings.erase(std::find_if(siblings.begin(), siblings.end(),
                                [&](const auto& child) { return child.get() == &control; }));
}

} // namespace host
