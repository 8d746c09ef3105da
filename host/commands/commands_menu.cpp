// The main window's menus, for scripts.
#include "host/commands/commands.h"
#include "host/script/functions.h"
#include "host/ui/menus.h"

namespace host::script {

namespace {

/// Queries a main menu. A menu that is filled on first opening names the statement that fills it
/// as its post-menu command; scripts may run that statement themselves.
Value menu(Invocation& call) {
    static const FlagTable table = {{"ex", "exists"},
                                    {"pmc", "postMenuCommand", "", "q"},
                                    {"ia", "itemArray", "", "q"},
                                    {"ni", "numberOfItems", "", "q"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1);
    const std::string name = flags.names()[0];
    const MenuTree& menus = MenuTree::current();
    if (flags.has("exists"))
        return menus.has_menu(name);
    if (!menus.has_menu(name))
        throw ScriptFault("menu: There is no menu \"" + name + "\".");
    if (!flags.query() || flags.count() != 1)
        throw ScriptFault("menu answers -exists, or one flag at a time with -query.");
    if (flags.has("postMenuCommand"))
        return menus.is_filled_on_opening(name) ? "uiOpenMenu \"" + name + "\"" : std::string();
    StringArray names;
    for (const MenuItem& item : menus.items(name))
        names.push_back(item.name);
    if (flags.has("numberOfItems"))
        return static_cast<int32_t>(names.size());
    return names;
}

Value open_menu(Invocation& call) {
    require_arguments(call, 1, 1);
    const std::string name = call.arguments[0].to_string();
    if (!MenuTree::current().has_menu(name))
        throw ScriptFault("uiOpenMenu: There is no menu \"" + name + "\".");
    MenuTree::current().open(name);
    return Value();
}

} // namespace

void add_menu_commands(Interpreter& interpreter) {
    interpreter.add_command("menu", menu);
    interpreter.add_command("uiOpenMenu", open_menu);
}

} // namespace host::script
