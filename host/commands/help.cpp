#include "host/commands/help.h"

#include "host/script/functions.h"

#include <algorithm>

namespace host::script {

namespace {

struct Summary {
    const char* theme; ///< null: the theme of the row before
    const char* name;
    const char* text;
};

/// Table: the built-in commands by theme. Functions of the language are not among them.
constexpr Summary k_summaries[] = {
    {"files", "file", "opens, imports, saves and exports meshes and scenes"},
    {"plug-ins", "loadPlugin", "loads a plug-in by name or path"},
    {nullptr, "unloadPlugin", "unloads a plug-in; -force also if it is in use"},
    {nullptr, "pluginInfo", "tells what a plug-in is and what it registered"},
    {"nodes", "createNode", "creates a node of a type"},
    {nullptr, "delete", "deletes nodes, or with -ch their construction history"},
    {nullptr, "rename", "renames a node"},
    {nullptr, "duplicate", "copies objects"},
    {nullptr, "parent", "moves objects below another one"},
    {"lists", "select", "selects objects and components"},
    {nullptr, "ls", "lists nodes, or the selection with -sl"},
    {nullptr, "objExists", "whether something has this name"},
    {nullptr, "nodeType", "the type of a node"},
    {nullptr, "objectType", "the type of a node, or whether it is of a type"},
    {nullptr, "listConnections", "the nodes or plugs connected to a node"},
    {nullptr, "listHistory", "the nodes that a mesh is computed from"},
    {nullptr, "listRelatives", "parents, children and shapes"},
    {nullptr, "listAttr", "the attributes of a node"},
    {"attributes", "getAttr", "the value of an attribute"},
    {nullptr, "setAttr", "sets, locks or unlocks an attribute"},
    {nullptr, "addAttr", "adds an attribute to a node"},
    {nullptr, "deleteAttr", "deletes an added attribute"},
    {nullptr, "connectAttr", "connects two attributes"},
    {nullptr, "disconnectAttr", "breaks a connection"},
    {"meshes", "polyCube", "creates a cube"},
    {nullptr, "polyPlane", "creates a plane"},
    {nullptr, "polySphere", "creates a sphere"},
    {nullptr, "polyCylinder", "creates a cylinder"},
    {nullptr, "polyTorus", "creates a torus"},
    {nullptr, "polyEvaluate", "counts vertices, edges, faces, triangles, UVs and UV shells"},
    {nullptr, "polyUVSet", "creates, copies, deletes, renames and chooses UV sets"},
    {nullptr, "polyMapCut", "cuts the UVs along edges"},
    {nullptr, "polyMapSew", "sews the UVs along edges"},
    {nullptr, "polyMapSewMove", "moves the smaller UV shell to the other one and sews both"},
    {nullptr, "polyEditUV", "moves, turns and scales UVs; asks for their places"},
    {nullptr, "polyNormalizeUV", "scales UVs to fill the unit square"},
    {nullptr, "polyLayoutUV", "packs UV charts into the texture, around those that stay"},
    {nullptr, "polyListComponentConversion", "the components that others touch"},
    {nullptr, "polySelect", "selects edge loops and shortest paths of edges"},
    {"transforms", "move", "moves objects, or vertices by tweaks"},
    {nullptr, "rotate", "rotates objects"},
    {nullptr, "scale", "scales objects"},
    {"history", "undo", "takes the last statement back"},
    {nullptr, "redo", "repeats what was taken back"},
    {nullptr, "undoInfo", "asks and sets how undo works"},
    {nullptr, "constructionHistory", "whether commands record history"},
    {nullptr, "dgeval", "evaluates plugs or nodes now"},
    {nullptr, "dgdirty", "marks plugs as changed"},
    {"settings", "optionVar", "variables kept between sessions"},
    {"menus", "menu", "asks about a menu of the main window"},
    {nullptr, "uiOpenMenu", "fills a menu as opening it does"},
    {"dialogs", "window", "creates a window"},
    {nullptr, "columnLayout", "arranges controls in a column"},
    {nullptr, "rowLayout", "arranges controls in a row"},
    {nullptr, "formLayout", "arranges controls by attachments"},
    {nullptr, "frameLayout", "puts a frame around controls"},
    {nullptr, "scrollLayout", "makes controls scroll"},
    {nullptr, "separator", "a line between controls"},
    {nullptr, "text", "a line of text"},
    {nullptr, "button", "a button that runs a script"},
    {nullptr, "checkBoxGrp", "a check box with a label"},
    {nullptr, "textFieldGrp", "a text field with a label"},
    {nullptr, "optionMenuGrp", "a menu of choices with a label"},
    {nullptr, "intSliderGrp", "a whole number with a slider"},
    {nullptr, "floatSliderGrp", "a number with a slider"},
    {nullptr, "menuItem", "an entry of a menu"},
    {nullptr, "showWindow", "shows a window"},
    {nullptr, "deleteUI", "deletes windows and controls"},
    {nullptr, "setParent", "the layout that receives the next controls"},
    {nullptr, "windowPref", "asks about remembered windows"},
    {nullptr, "confirmDialog", "asks a question"},
    {nullptr, "uiControls", "lists controls with their values"},
    {nullptr, "uiSet", "changes a control's value as a user does"},
    {nullptr, "uiPress", "presses a button as a user does"},
    {nullptr, "uiAnswer", "the answer to the next question"},
    {"panels", "viewFit", "frames objects in a panel"},
    {nullptr, "modelEditor", "how a panel displays meshes"},
    {nullptr, "getPanel", "the names of panels"},
    {nullptr, "refresh", "redraws the panels"},
    {nullptr, "panelPicture", "draws the panels into a PNG file"},
    {"session", "help", "this list, or what a command takes"},
    {nullptr, "about", "versions"},
    {nullptr, "quit", "ends the program"},
};

std::string flag_line(const DescribedFlag& flag) {
    std::string line = "  -" + flag.short_name;
    if (flag.long_name != flag.short_name)
        line += ", -" + flag.long_name;
    line += flag.values.empty() ? "" : " " + flag.values;
    std::string modes;
    for (const auto& [letter, word] : {std::pair('q', "query"), std::pair('e', "edit")})
        if (flag.modes.find(letter) != std::string::npos)
            modes += (modes.empty() ? "" : ", ") + std::string(word);
    if (flag.modes.find('c') == std::string::npos)
        modes = "only " + modes;
    if (!modes.empty()) {
        line.resize(std::max<size_t>(line.size() + 1, 40), ' ');
        line += modes;
    }
    return line + "\n";
}

/// Names of commands that begin like `name` or contain it.
std::string similar(const Interpreter& interpreter, const std::string& name) {
    std::string names;
    for (const std::string& known : interpreter.command_names())
        if (known.find(name) != std::string::npos || known.compare(0, 4, name.substr(0, 4)) == 0)
            names += (names.empty() ? " Similar: " : ", ") + known;
    return names.empty() ? names : names + ".";
}

bool is_builtin_command(const std::string& name) { return !summary_of(name).empty(); }

Value help(Invocation& call) {
    require_arguments(call, 0, 1);
    const std::string text = call.arguments.empty()
                                 ? help_overview(call.interpreter)
                                 : help_on(call.interpreter, call.arguments[0].to_string());
    call.interpreter.output().print(text);
    return Value();
}

} // namespace

std::string summary_of(const std::string& name) {
    for (const Summary& row : k_summaries)
        if (name == row.name)
            return row.text;
    return std::string();
}

std::string help_overview(const Interpreter& interpreter) {
    const std::vector<std::string> known = interpreter.command_names();
    std::string text, line;
    const auto put = [&](const std::string& word) {
        if (line.size() + 1 + word.size() > 96) {
            text += line + "\n";
            line = std::string(14, ' ');
        }
        line += " " + word;
    };
    const auto begin = [&](std::string theme) {
        text += line.empty() ? "" : line + "\n";
        theme.resize(14, ' ');
        line = theme;
    };
    for (const Summary& row : k_summaries) {
        if (row.theme)
            begin(row.theme);
        if (std::binary_search(known.begin(), known.end(), row.name))
            put(row.name);
    }
    begin("plug-ins' own");
    for (const std::string& name : known)
        if (interpreter.is_from_plugin(name))
            put(name);
    begin("functions");
    for (const std::string& name : known)
        if (!is_builtin_command(name) && !interpreter.is_from_plugin(name))
            put(name);
    return text + line + "\nhelp COMMAND tells what a command takes.\n";
}

std::string help_on(Interpreter& interpreter, const std::string& name) {
    const auto known = interpreter.command_names();
    if (!std::binary_search(known.begin(), known.end(), name))
        throw ScriptFault("There is no command \"" + name + "\"." + similar(interpreter, name));
    const CommandSyntax syntax = interpreter.describe(name);
    const std::string summary = summary_of(name);
    std::string text = name + (summary.empty() ? "" : ": " + summary) + "\n";
    if (!syntax.arguments.empty())
        text += "  arguments: " + syntax.arguments + "\n";
    bool has_query = false, has_edit = false;
    for (const DescribedFlag& flag : syntax.flags) {
        text += flag_line(flag);
        has_query = has_query || flag.modes.find('q') != std::string::npos;
        has_edit = has_edit || flag.modes.find('e') != std::string::npos;
    }
    if (has_query)
        text += "  -q, -query with a flag asks for its value";
    if (has_edit)
        text += std::string(has_query ? "; " : "  ") + "-e, -edit changes something that exists";
    return text + (has_query || has_edit ? "\n" : "");
}

void add_help_command(Interpreter& interpreter) { interpreter.add_command("help", help); }

} // namespace host::script
