#include "host/commands/commands.h"
#include "host/graph/command_registry.h"
#include "host/graph/plugins.h"
#include "host/script/functions.h"

namespace host::script {

namespace {

using graph::CommandResult;
using graph::PluginInfo;
using graph::Plugins;

Value load(Invocation& call) {
    static const FlagTable table = {{"qt", "quiet"}, {"a", "allPlugins"}, {"n", "name", "s"}};
    const Flags flags(call, table);
    if (flags.has("allPlugins") || flags.has("name"))
        throw ScriptFault("loadPlugin: Plug-ins are loaded one by one, under the names of their "
                          "files.");
    flags.require_operands(1, 1000);
    StringArray names;
    for (const std::string& file : flags.names()) {
        Plugins& plugins = Plugins::current();
        const std::string name = Plugins::name_of(file);
        if (plugins.is_loaded(name) && flags.has("quiet"))
            continue;
        std::string error;
        if (!plugins.load(file, error))
            throw ScriptFault("loadPlugin: " + error);
        names.push_back(name);
    }
    return names;
}

Value unload(Invocation& call) {
    static const FlagTable table = {{"f", "force"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1000);
    StringArray names;
    for (const std::string& name : flags.names()) {
        std::string error;
        if (!Plugins::current().unload(name, flags.has("force"), error))
            throw ScriptFault("unloadPlugin: " + error);
        names.push_back(name);
    }
    return names;
}

Value info(Invocation& call) {
    static const FlagTable table = {{"l", "loaded", "", "q"},       {"r", "registered", "", "q"},
                                    {"v", "version", "", "q"},      {"vd", "vendor", "", "q"},
                                    {"p", "path", "", "q"},         {"c", "command", "", "q"},
                                    {"dn", "dependNode", "", "q"},  {"uo", "unloadOk", "", "q"},
                                    {"ls", "listPlugins", "", "q"}, {"av", "apiVersion", "", "q"}};
    const Flags flags(call, table);
    const Plugins& plugins = Plugins::current();
    if (!flags.query() || flags.count() != 1)
        throw ScriptFault("pluginInfo answers one flag at a time, with -query.");
    if (flags.has("listPlugins")) {
        StringArray names;
        for (const std::string& name : plugins.names())
            if (plugins.is_loaded(name))
                names.push_back(name);
        return names;
    }
    flags.require_operands(1, 1);
    const std::string name = flags.names()[0];
    PluginInfo info;
    const bool known = plugins.info(name, info);
    if (flags.has("loaded"))
        return plugins.is_loaded(name);
    if (flags.has("registered"))
        return known;
    if (!known)
        throw ScriptFault("pluginInfo: There is no plug-in \"" + name + "\".");
    if (flags.has("version"))
        return info.version;
    if (flags.has("vendor"))
        return info.vendor;
    if (flags.has("path"))
        return info.path;
    if (flags.has("apiVersion"))
        return info.api_version;
    if (flags.has("unloadOk"))
        return plugins.nodes_in_use(name).empty();
    return flags.has("command") ? info.commands : info.node_types;
}

} // namespace

void add_plugin_commands(Interpreter& interpreter) {
    interpreter.add_command("loadPlugin", load);
    interpreter.add_command("unloadPlugin", unload);
    interpreter.add_command("pluginInfo", info);
}

} // namespace host::script
