#include "host/commands/commands_ui.h"

#include <algorithm>

namespace host::script {

namespace {

/// A type of control and the flags of the command that creates it.
struct ControlType {
    const char* name;
    bool is_layout;
    FlagTable flags;
};

using Rows = std::initializer_list<Flag>;

/// The flags that every control has and its `own`. All but -exists can be created, edited and
/// queried.
FlagTable rows(Rows own) {
    FlagTable table = {{"ex", "exists"},          {"p", "parent", "s"},  {"w", "width", "i"},
                       {"h", "height", "i"},      {"en", "enable", "b"}, {"vis", "visible", "b"},
                       {"ann", "annotation", "s"}};
    table.insert(table.end(), own.begin(), own.end());
    for (Flag& flag : table)
        if (std::string(flag.long_name) != "exists")
            flag.modes = "cqe";
    return table;
}

/// Table: every type of control with its flags.
const std::vector<ControlType>& control_types() {
    static const std::vector<ControlType> types = {
        {"window", true,
         rows({{"t", "title", "s"},
               {"wh", "widthHeight", "ii"},
               {"s", "sizeable", "b"},
               {"in", "iconName", "s"},
               {"tb", "titleBar", "b"},
               {"mnb", "minimizeButton", "b"},
               {"mxb", "maximizeButton", "b"},
               {"rtf", "resizeToFitChildren", "b"}})},
        {"columnLayout", true,
         rows({{"adj", "adjustableColumn", "b"},
               {"rs", "rowSpacing", "i"},
               {"cat", "columnAttach", "si"},
               {"co", "columnOffset", "si"},
               {"cw", "columnWidth", "i"}})},
        {"rowLayout", true,
         rows({{"nc", "numberOfColumns", "i"},
               {"cw", "columnWidth", "ii"},
               {"cw2", "columnWidth2", "ii"},
               {"cw3", "columnWidth3", "iii"},
               {"cat", "columnAttach", "isi"},
               {"adj", "adjustableColumn", "i"}})},
        {"formLayout", true,
         rows({{"af", "attachForm", "ssi"},
               {"ac", "attachControl", "ssis"},
               {"ap", "attachPosition", "ssii"},
               {"an", "attachNone", "ss"},
               {"nd", "numberOfDivisions", "i"}})},
        {"frameLayout", true,
         rows({{"l", "label", "s"},
               {"cll", "collapsable", "b"},
               {"cl", "collapse", "b"},
               {"bs", "borderStyle", "s"},
               {"mh", "marginHeight", "i"},
               {"mw", "marginWidth", "i"}})},
        {"scrollLayout", true, rows({{"cr", "childResizable", "b"}})},
        {"separator", false, rows({{"st", "style", "s"}, {"hr", "horizontal", "b"}})},
        {"text", false, rows({{"l", "label", "s"}, {"al", "align", "s"}})},
        {"button", false, rows({{"l", "label", "s"}, {"c", "command", "s"}, {"al", "align", "s"}})},
        {"checkBoxGrp", false,
         rows({{"l", "label", "s"},
               {"ncb", "numberOfCheckBoxes", "i"},
               {"l1", "label1", "s"},
               {"v1", "value1", "b"},
               {"on1", "onCommand1", "s"},
               {"of1", "offCommand1", "s"},
               {"cc", "changeCommand", "s"},
               {"cc1", "changeCommand1", "s"},
               {"cw", "columnWidth", "ii"}})},
        {"textFieldGrp", false,
         rows({{"l", "label", "s"},
               {"tx", "text", "s"},
               {"cw", "columnWidth", "ii"},
               {"cc", "changeCommand", "s"},
               {"ed", "editable", "b"}})},
        {"optionMenuGrp", false,
         rows({{"l", "label", "s"},
               {"sl", "select", "i"},
               {"v", "value", "s"},
               {"cw", "columnWidth", "ii"},
               {"cc", "changeCommand", "s"}})},
        {"intSliderGrp", false,
         rows({{"l", "label", "s"},
               {"f", "field", "b"},
               {"min", "minValue", "i"},
               {"max", "maxValue", "i"},
               {"fmn", "fieldMinValue", "i"},
               {"fmx", "fieldMaxValue", "i"},
               {"v", "value", "i"},
               {"ss", "sliderStep", "i"},
               {"s", "step", "i"},
               {"cw", "columnWidth", "ii"},
               {"cw3", "columnWidth3", "iii"},
               {"cc", "changeCommand", "s"}})},
        {"floatSliderGrp", false,
         rows({{"l", "label", "s"},
               {"f", "field", "b"},
               {"min", "minValue", "f"},
               {"max", "maxValue", "f"},
               {"fmn", "fieldMinValue", "f"},
               {"fmx", "fieldMaxValue", "f"},
               {"v", "value", "f"},
               {"pre", "precision", "i"},
               {"ss", "sliderStep", "f"},
               {"s", "step", "f"},
               {"cw", "columnWidth", "ii"},
               {"cw3", "columnWidth3", "iii"},
               {"cc", "changeCommand", "s"}})},
    };
    return types;
}

Value packed(const std::vector<Value>& values) {
    if (values.size() == 1)
        return values[0];
    StringArray texts;
    for (const Value& value : values)
        texts.push_back(value.to_string());
    return texts;
}

/// Default of a property that was never set.
Value unset(const Flag& flag) {
    const std::string kinds = flag.values;
    if (kinds.size() != 1)
        return StringArray();
    const std::string name = flag.long_name;
    if (kinds == "b")
        return name == "enable" || name == "visible";
    if (kinds == "i")
        return int32_t(0);
    return kinds == "f" ? Value(0.0) : Value(std::string());
}

UiControl& existing(const UiModel& model, const std::string& name) {
    UiControl* control = model.find(name);
    if (!control)
        throw ScriptFault("There is no control named \"" + name + "\".");
    return *control;
}

// --- values that a user changes -----------------------------------------------------------------

const char* value_property(const UiControl& control) {
    if (control.type == "checkBoxGrp")
        return "value1";
    if (control.type == "textFieldGrp")
        return "text";
    if (control.type == "optionMenuGrp")
        return "value";
    if (control.type == "intSliderGrp" || control.type == "floatSliderGrp")
        return "value";
    return nullptr;
}

/// Clamps a slider's value to the range of its field, or of the slider if the field has none.
double in_range(const UiControl& control, double value) {
    for (const char* name : {"fieldMinValue", "minValue"}) {
        const auto low = control.properties.find(name);
        if (low == control.properties.end())
            continue;
        value = std::max(value, low->second.to_real());
        break;
    }
    for (const char* name : {"fieldMaxValue", "maxValue"}) {
        const auto high = control.properties.find(name);
        if (high == control.properties.end())
            continue;
        value = std::min(value, high->second.to_real());
        break;
    }
    return value;
}

/// Selects an option menu's entry by number or label; sets both `select` and `value`.
void choose_entry(UiControl& control, const Value& by, bool by_number) {
    for (size_t i = 0; i < control.children.size(); ++i) {
        const std::string label = control.children[i]->text("label");
        if (by_number ? by.to_int() != int32_t(i + 1) : label != by.to_string())
            continue;
        control.properties["value"] = Value(label);
        control.properties["select"] = Value(int32_t(i + 1));
        return;
    }
    throw ScriptFault("The menu \"" + control.name + "\" has no entry " + by.to_string() + ".");
}

void set_property(UiControl& control, const std::string& name, const Value& value) {
    if (control.type == "optionMenuGrp" && (name == "select" || name == "value"))
        choose_entry(control, value, name == "select");
    else if (name == "value" && control.type == "intSliderGrp")
        control.properties[name] = Value(int32_t(in_range(control, value.to_real())));
    else if (name == "value" && control.type == "floatSliderGrp")
        control.properties[name] = Value(in_range(control, value.to_real()));
    else
        control.properties[name] = value;
}

void run_script_of(Interpreter& interpreter, const UiControl& control, const char* property) {
    const std::string script = control.text(property);
    if (!script.empty())
        interpreter.run(script, control.name);
}

void changed(Interpreter& interpreter, UiModel& model, const std::string& name) {
    // Each script may delete the control.
    const auto run = [&](const char* property) {
        if (UiControl* control = model.find(name))
            run_script_of(interpreter, *control, property);
    };
    if (existing(model, name).type == "checkBoxGrp") {
        const bool on = existing(model, name).properties["value1"].truth();
        run(on ? "onCommand1" : "offCommand1");
        run("changeCommand1");
    }
    run("changeCommand");
}

// --- commands -----------------------------------------------------------------------------------

void apply_flags(UiControl& control, const Flags& flags, const FlagTable& table) {
    for (const Flag& flag : table) {
        const std::string name = flag.long_name;
        if (name == "exists" || name == "parent" || !flags.has(flag.long_name))
            continue;
        const auto uses = flags.uses(flag.long_name);
        // A repeated flag (attachments in a formLayout) collects the values of all its uses.
        if (uses.size() > 1) {
            StringArray all;
            for (const auto& use : uses)
                for (const Value& value : use)
                    all.push_back(value.to_string());
            control.properties[name] = Value(all);
        } else {
            set_property(control, name, packed(uses.back()));
        }
    }
    // The value may have been set before its bounds: clamp it again.
    const auto value = control.properties.find("value");
    if (value != control.properties.end() && control.type != "optionMenuGrp")
        set_property(control, "value", value->second);
}

Value query_control(const UiControl& control, const Flags& flags, const FlagTable& table) {
    if (flags.count() != 1)
        throw ScriptFault("A query asks for one flag.");
    const std::string name = flags.given()[0];
    if (name == "parent")
        return control.parent ? control.parent->path() : std::string();
    const auto found = control.properties.find(name);
    if (found != control.properties.end())
        return found->second;
    for (const Flag& flag : table)
        if (name == flag.long_name)
            return unset(flag);
    return Value();
}

Value control_command(Invocation& call, const ControlType& type, UiState& state) {
    const Flags flags(call, type.flags);
    flags.require_operands(0, 1);
    const std::string name = flags.operands().empty() ? std::string() : flags.names()[0];
    UiModel& model = state.model;
    if (flags.has("exists") && !flags.query()) {
        const UiControl* found = model.find(name);
        return found != nullptr && found->type == type.name;
    }
    if (flags.mode() != Mode::create) {
        UiControl& control = existing(model, name);
        if (control.type != type.name)
            throw ScriptFault("\"" + name + "\" is a " + control.type + ", not a " + type.name +
                              ".");
        if (flags.query())
            return query_control(control, flags, type.flags);
        apply_flags(control, flags, type.flags);
        return control.path();
    }
    const bool is_window = type.name == std::string("window");
    UiControl* parent = is_window             ? nullptr
                        : flags.has("parent") ? &existing(model, flags.text("parent", ""))
                                              : model.current_parent();
    UiControl& control = model.create(type.name, name, parent, type.is_layout);
    apply_flags(control, flags, type.flags);
    if (type.is_layout)
        model.set_current_parent(&control);
    model.set_current_menu(type.name == std::string("optionMenuGrp") ? &control : nullptr);
    return control.path();
}

/// Adds an entry to the option menu created last or the menu named by -parent.
Value menu_item(Invocation& call, UiState& state) {
    static const FlagTable table = rows({{"l", "label", "s"},
                                         {"c", "command", "s"},
                                         {"d", "divider", "b"},
                                         {"ob", "optionBox", "b"},
                                         {"cb", "checkBox", "b"},
                                         {"sm", "subMenu", "b"}});
    const Flags flags(call, table);
    flags.require_operands(0, 1);
    const std::string name = flags.operands().empty() ? std::string() : flags.names()[0];
    UiModel& model = state.model;
    if (flags.has("exists") && !flags.query()) {
        const UiControl* found = model.find(name);
        return found != nullptr && found->type == "menuItem";
    }
    if (flags.query())
        return query_control(existing(model, name), flags, table);
    if (flags.edit()) {
        apply_flags(existing(model, name), flags, table);
        return existing(model, name).path();
    }
    UiControl* parent =
        flags.has("parent") ? &existing(model, flags.text("parent", "")) : model.current_menu();
    if (!parent)
        throw ScriptFault("There is no menu for the menuItem to stand in.");
    parent->is_layout = true;
    UiControl& item = model.create("menuItem", name, parent, false);
    parent->is_layout = parent->type == "menu";
    apply_flags(item, flags, table);
    if (parent->type == "optionMenuGrp" && parent->children.size() == 1)
        choose_entry(*parent, Value(int32_t(1)), true);
    return item.path();
}

Value delete_ui(Invocation& call, UiState& state) {
    static const FlagTable table = {{"wnd", "window"},
                                    {"mi", "menuItem"},
                                    {"ctl", "control"},
                                    {"lay", "layout"},
                                    {"m", "menu"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1000);
    for (const std::string& name : flags.names())
        state.model.remove(existing(state.model, name));
    return Value();
}

Value show_window(Invocation& call, UiState& state) {
    require_arguments(call, 0, 1);
    UiModel& model = state.model;
    if (call.arguments.empty() && model.windows().empty())
        throw ScriptFault("There is no window to show.");
    UiControl& window = call.arguments.empty() ? *model.windows().back()
                                               : existing(model, call.arguments[0].to_string());
    if (window.type != "window")
        throw ScriptFault("\"" + window.name + "\" is no window.");
    window.is_shown = true;
    return Value();
}

Value set_parent(Invocation& call, UiState& state) {
    static const FlagTable table = {{"m", "menu"}, {"top", "topLevel"}, {"u", "upLevel"}};
    const Flags flags(call, table);
    flags.require_operands(0, 1);
    UiModel& model = state.model;
    UiControl* parent = model.current_parent();
    if (flags.has("topLevel")) {
        while (parent && parent->parent)
            parent = parent->parent;
    } else if (flags.has("upLevel") || (flags.operands().size() == 1 && flags.names()[0] == "..")) {
        parent = parent ? parent->parent : nullptr;
    } else if (flags.operands().size() == 1) {
        parent = &existing(model, flags.names()[0]);
        if (!parent->is_layout)
            throw ScriptFault("\"" + parent->name + "\" holds no controls.");
    }
    model.set_current_parent(parent);
    model.set_current_menu(nullptr);
    return parent ? parent->path() : std::string();
}

Value window_pref(Invocation& call) {
    static const FlagTable table = {{"ex", "exists"}, {"r", "remove"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1);
    // Window positions are not saved, so there are none to find or remove.
    if (flags.has("remove"))
        throw ScriptFault("Nothing is remembered of the window \"" + flags.names()[0] + "\".");
    return false;
}

Value confirm_dialog(Invocation& call, UiState& state) {
    static const FlagTable table = {{"t", "title", "s"},         {"m", "message", "s"},
                                    {"b", "button", "s"},        {"db", "defaultButton", "s"},
                                    {"cb", "cancelButton", "s"}, {"ds", "dismissString", "s"}};
    const Flags flags(call, table);
    flags.require_operands(0, 0);
    StringArray buttons;
    for (const auto& use : flags.uses("button"))
        buttons.push_back(use[0].to_string());
    if (buttons.empty())
        buttons.push_back("Confirm");
    const std::string preferred = flags.text("defaultButton", buttons[0].c_str());
    if (!state.answers.empty()) {
        const std::string answer = state.answers.front();
        state.answers.erase(state.answers.begin());
        const bool known = std::find(buttons.begin(), buttons.end(), answer) != buttons.end();
        return known ? answer : flags.text("dismissString", "dismiss");
    }
    const std::string message = flags.text("message", "");
    if (state.ask)
        return state.ask(flags.text("title", "Confirm"), message, buttons, preferred);
    call.interpreter.output().print(message + " [" + preferred + "]\n");
    return preferred;
}

// --- driving dialogs ----------------------------------------------------------------------------

Value ui_controls(Invocation& call, UiState& state) {
    require_arguments(call, 0, 1);
    StringArray lines;
    const auto list = [&](UiControl& window) {
        for (UiControl* control : UiModel::all(window)) {
            const char* property = value_property(*control);
            std::string line = control->path() + " " + control->type;
            for (const char* label : {"label", "label1"})
                if (!control->text(label).empty())
                    line += " \"" + control->text(label) + "\"";
            if (property)
                line += " = " + control->text(property);
            lines.push_back(line);
        }
    };
    if (!call.arguments.empty()) {
        list(existing(state.model, call.arguments[0].to_string()));
    } else {
        for (const auto& window : state.model.windows())
            list(*window);
    }
    return lines;
}

Value ui_set(Invocation& call, UiState& state) {
    require_arguments(call, 2, 2);
    UiControl& control = existing(state.model, call.arguments[0].to_string());
    const char* property = value_property(control);
    if (!property)
        throw ScriptFault("A " + control.type + " has no value to set.");
    if (control.properties.count("enable") != 0 && !control.properties["enable"].truth())
        throw ScriptFault("\"" + control.name + "\" is disabled.");
    const Value& value = call.arguments[1];
    set_property(control, property,
                 control.type == "checkBoxGrp" ? Value(boolean_from(value)) : value);
    changed(call.interpreter, state.model, control.name);
    return Value();
}

Value ui_press(Invocation& call, UiState& state) {
    require_arguments(call, 1, 1);
    UiControl& control = existing(state.model, call.arguments[0].to_string());
    if (control.type != "button" && control.type != "menuItem")
        throw ScriptFault("A " + control.type + " cannot be pressed.");
    if (control.properties.count("enable") != 0 && !control.properties["enable"].truth())
        throw ScriptFault("\"" + control.name + "\" is disabled.");
    const std::string script = control.text("command");
    return script.empty() ? Value() : call.interpreter.run(script, control.name);
}

Value ui_answer(Invocation& call, UiState& state) {
    require_arguments(call, 1, 1);
    state.answers.push_back(call.arguments[0].to_string());
    return Value();
}

} // namespace

void add_ui_commands(Interpreter& interpreter, const std::shared_ptr<UiState>& state) {
    for (const ControlType& type : control_types())
        interpreter.add_command(type.name, [&type, state](Invocation& call) {
            return control_command(call, type, *state);
        });
    using Function = Value (*)(Invocation&, UiState&);
    static const std::pair<const char*, Function> commands[] = {
        {"menuItem", menu_item},           {"deleteUI", delete_ui}, {"showWindow", show_window},
        {"setParent", set_parent},         {"uiSet", ui_set},       {"uiControls", ui_controls},
        {"confirmDialog", confirm_dialog}, {"uiPress", ui_press},   {"uiAnswer", ui_answer}};
    for (const auto& command : commands) {
        const Function run = command.second;
        interpreter.add_command(command.first,
                                [run, state](Invocation& call) { return run(call, *state); });
    }
    interpreter.add_command("windowPref", window_pref);
}

} // namespace host::script
