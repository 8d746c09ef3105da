/// The main window's menus as a model: it exists without a window too, so that plug-ins can add
/// their items and a program can list and run them.
#pragma once

#include <maya/MTypes.h>

#include <string>
#include <vector>

namespace host {

struct MenuItem {
    std::string name;           ///< unique
    std::string label;          ///< what the user reads
    std::string parent;         ///< name of the menu
    std::string command;        ///< script statements that run when it is picked
    bool is_option_box = false; ///< the box to the right of the item before it
};

class MHOST_EXPORT MenuTree {
public:
    static MenuTree& current();

    /// "mainFileMenu", "mainEditMenu", "mainModifyMenu", ... as the application starts.
    const std::vector<std::string>& menus() const { return menus_; }
    bool has_menu(const std::string& name) const;
    bool add_menu(const std::string& name);
    bool remove_menu(const std::string& name);

    /// Adds an item at the end of a menu and gives its name; empty when there is no such menu.
    std::string add(const std::string& menu, const std::string& label, const std::string& command,
                    bool is_option_box = false);
    /// False for a name that is not there.
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
