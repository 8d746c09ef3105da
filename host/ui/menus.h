/// Model of the main window's menus. It exists without a window, so that plug-ins can add items and
/// a program can list and run them.
#pragma once

#include <maya/MTypes.h>

#include <string>
#include <vector>

namespace host {

struct MenuItem {
    std::string name;           ///< unique
    std::string label;          ///< displayed text
    std::string parent;         ///< name of the menu
    std::string command;        ///< script statements run when the item is picked
    bool is_option_box = false; ///< the option box beside the preceding item
};

class MHOST_EXPORT MenuTree {
public:
    static MenuTree& current();

    /// Menu names; initially "mainFileMenu", "mainEditMenu", "mainModifyMenu", ...
    const std::vector<std::string>& menus() const { return menus_; }
    bool has_menu(const std::string& name) const;
    /// Whether `open` creates the menu's built-in items. Only a strict host has such a menu.
    bool is_filled_on_opening(const std::string& menu) const;
    /// To be called before a menu is shown. Creates the built-in items if the menu is empty: an
    /// item that a plug-in added before keeps them away.
    void open(const std::string& menu);

    /// Appends an item to a menu and returns its name; empty if there is no such menu.
    std::string add(const std::string& menu, const std::string& label, const std::string& command,
                    bool is_option_box = false);
    /// Removes an item by name. Returns false if there is none.
    bool remove(const std::string& item);
    const MenuItem* find(const std::string& item) const;
    /// Items of a menu, in order.
    std::vector<MenuItem> items(const std::string& menu) const;

private:
    MenuTree();
    std::vector<std::string> menus_;
    std::vector<MenuItem> items_;
    unsigned int made_ = 0;
};

} // namespace host
