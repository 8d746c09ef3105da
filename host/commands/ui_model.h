/// Model of the windows, layouts and controls that scripts build. A program can list and operate
/// them without a screen; the desktop window shows them.
///
/// A control is identified by its short name, unique in the model, or its full path
/// "window|layout|control". Deleting a control deletes its children.
#pragma once

#include "host/script/value.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace host {

struct MHOST_EXPORT UiControl {
    std::string name;
    std::string type; ///< the command that created it: "window", "button", "intSliderGrp"
    UiControl* parent = nullptr;
    std::vector<std::unique_ptr<UiControl>> children; ///< in order of creation
    /// Values by long flag name: "label", "value", "changeCommand". Flags with several arguments
    /// are string arrays.
    std::map<std::string, script::Value> properties;
    bool is_layout = false; ///< can have children
    bool is_shown = false;  ///< windows only

    std::string path() const;
    /// A property as text; empty if never set.
    std::string text(const char* property) const;
};

class MHOST_EXPORT UiModel {
public:
    /// Creates a control, with an unused name if `name` is empty. Throws ScriptFault if the name is
    /// taken, or the parent is missing or not a layout.
    UiControl& create(const std::string& type, const std::string& name, UiControl* parent,
                      bool is_layout);
    /// Finds a control by short name or path; null if none.
    UiControl* find(const std::string& name) const;
    void remove(UiControl& control);
    const std::vector<std::unique_ptr<UiControl>>& windows() const { return windows_; }

    /// Parent of the next control: the last layout created, or the argument of setParent.
    UiControl* current_parent() const { return parent_; }
    void set_current_parent(UiControl* parent) { parent_ = parent; }
    /// The option menu that receives menu items; null unless the last control created was one.
    UiControl* current_menu() const { return menu_; }
    void set_current_menu(UiControl* menu) { menu_ = menu; }
    /// The control and all its descendants, in preorder.
    static std::vector<UiControl*> all(UiControl& control);

private:
    std::string free_name(const std::string& type);
    std::vector<std::unique_ptr<UiControl>> windows_;
    std::map<std::string, UiControl*> by_name_;
    std::map<std::string, unsigned int> counters_;
    UiControl* parent_ = nullptr;
    UiControl* menu_ = nullptr;
};

} // namespace host
