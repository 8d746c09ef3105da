#include "host/ui/menus.h"

#include "host/base/strictness.h"

#include <algorithm>

namespace host {

MenuTree& MenuTree::current() {
    static MenuTree tree;
    return tree;
}

MenuTree::MenuTree()
    : menus_{"mainFileMenu",    "mainEditMenu",   "mainModifyMenu", "mainCreateMenu",
             "mainDisplayMenu", "mainWindowMenu", "mainMeshMenu",   "mainHelpMenu"} {}

bool MenuTree::has_menu(const std::string& name) const {
    return std::find(menus_.begin(), menus_.end(), name) != menus_.end();
}

bool MenuTree::is_filled_on_opening(const std::string& menu) const {
    return is_strict() && menu == "mainModifyMenu";
}

void MenuTree::open(const std::string& menu) {
    if (!is_filled_on_opening(menu) || !items(menu).empty())
        return;
    add(menu, "Reset Transformations", "move 0 0 0; rotate 0 0 0; scale 1 1 1;");
}

std::string MenuTree::add(const std::string& menu, const std::string& label,
                          const std::string& command, bool is_option_box) {
    if (!has_menu(menu))
        return "";
    made_ += 1;
    items_.push_back({"menuItem" + std::to_string(made_), label, menu, command, is_option_box});
    return items_.back().name;
}

bool MenuTree::remove(const std::string& item) {
    const auto at = std::find_if(items_.begin(), items_.end(),
                                 [&](const MenuItem& held) { return held.name == item; });
    if (at == items_.end())
        return false;
    items_.erase(at);
    return true;
}

const MenuItem* MenuTree::find(const std::string& item) const {
    for (const MenuItem& held : items_)
        if (held.name == item)
            return &held;
    return nullptr;
}

std::vector<MenuItem> MenuTree::items(const std::string& menu) const {
    std::vector<MenuItem> found;
    for (const MenuItem& item : items_)
        if (item.parent == menu)
            found.push_back(item);
    return found;
}

} // namespace host
