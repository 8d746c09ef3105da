/// Windows, layouts and controls as a model: what scripts build, a program can list and drive
/// without a screen, and a desktop window may show.
///
/// A control is known by its short name, unique in the model, or by its full path
/// "window|layout|control". Deleting a control deletes what is in it.
#pragma once

#include "host/script/export.h"
#include "host/script/value.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace host {

struct TESSORA_SCRIPT_API UiControl {
    std::string name;
    std::string type; ///< as the command that makes it: "window", "button", "intSliderGrp"
    UiControl* parent = nullptr;
    std::vector<std::unique_ptr<UiControl>> children; ///< in order of making
    /// By the flag's long name: "label", "value", "changeCommand". Values of several words are
    /// string arrays.
    std::map<std::string, script::Value> properties;
    bool is_layout = false; ///< can hold controls
    bool is_shown = false;  ///< windows only

    std::string path() const;
    /// A property as text; empty when it was never set.
    std::string text(const char* property) const;
};

class TESSORA_SCRIPT_API UiModel {
public:
    /// Makes a control and gives it a free name when `name` is empty. Throws ScriptFault when the
    /// name is taken, or the parent is missing or cannot hold it.
    UiControl& create(const std::string& type, const std::string& name, UiControl* parent,
                      bool is_layout);
    /// By short name or path; null when there is none.
    UiControl* find(const std::string& name) const;
    void remove(UiControl& control);
    const std::vector<std::unique_ptr<UiControl>>& windows() const { return windows_; }

    /// Where the next control goes: the layout made last, or what setParent chose.
    UiControl* current_parent() const { return parent_; }
    void set_current_parent(UiControl* parent) { parent_ = parent; }
    /// The option menu that takes the next menu items; null when the last control made was none.
    UiControl* current_menu() const { return menu_; }
    void set_current_menu(UiControl* menu) { menu_ = menu; }
    /// Everything below a control, depth first, itself first.
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
