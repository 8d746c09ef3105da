#include "host/graph/plugins.h"

#include "host/base/fault.h"
#include "host/graph/callbacks.h"
#include "host/graph/command_registry.h"
#include "host/graph/library.h"
#include "host/graph/plugin_object.h"
#include "host/graph/scene.h"
#include "host/graph/undo.h"
#include "host/ui/menus.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>

namespace host::graph {

namespace {

namespace files = std::filesystem;

constexpr const char* k_version = "MApiVersion";

using EntryPoint = MStatus (*)(MObject);

EntryPoint entry_point(void* library, const char* name) {
    return reinterpret_cast<EntryPoint>(library::find(library, name));
}

void run_procedure(const std::string& name) {
    if (name.empty() || script_host() == nullptr)
        return;
    CommandResult ignored;
    script_host()->execute(name, false, false,
                           ignored); // an unknown procedure was reported to the user
}

} // namespace

PluginObject::PluginObject(Plugin& owner) : Object(MFn::kPlugin), plugin(&owner) {}
PluginObject::~PluginObject() = default;

Plugin::Plugin() : object(new PluginObject(*this)) {}
Plugin::~Plugin() { object->plugin = nullptr; }

bool Plugin::contains(const void* address) const { return library::contains(library, address); }

Plugins& Plugins::current() {
    static Plugins* const plugins = new Plugins;
    return *plugins;
}

Plugins::Plugins() {
    const char* const list = std::getenv("MAYA_PLUG_IN_PATH");
    std::string rest = list == nullptr ? "" : list;
    while (!rest.empty()) {
        const size_t colon = rest.find(library::k_path_separator);
        if (colon != 0)
            search_path_.push_back(rest.substr(0, colon));
        rest = colon == std::string::npos ? "" : rest.substr(colon + 1);
    }
}

std::string Plugins::name_of(const std::string& file) { return files::path(file).stem().string(); }

std::string Plugins::find_file(const std::string& file_or_name) const {
    // A bare name is never looked up in the current directory: a file beside the user's mesh is not
    // a plug-in that the user chose.
    const bool is_path = files::path(file_or_name).has_parent_path();
    const std::vector<std::string> directories =
        is_path ? std::vector<std::string>{""} : search_path_;
    // The extension comes first in all directories: an executable may have the same name without
    // it.
    for (const char* extension : {library::k_extension, ""}) {
        for (const std::string& directory : directories) {
            files::path path = files::path(directory) / (file_or_name + extension);
            std::error_code error;
            if (files::is_regular_file(path, error))
                return files::absolute(path, error).lexically_normal().string();
        }
    }
    return "";
}

Plugin* Plugins::find(const std::string& name) const {
    for (const auto& plugin : plugins_)
        if (plugin->info.name == name || plugin->info.path == name ||
            plugin->info.name == name_of(name))
            return plugin.get();
    return nullptr;
}

MStatus Plugins::load(const std::string& file_or_name, std::string& error) {
    const MStatus fault = pass_fault("loadPlugin");
    if (!fault) {
        error = "Plug-in \"" + file_or_name + "\" could not be loaded.";
        return fault;
    }
    const std::string path = find_file(file_or_name);
    if (path.empty()) {
        error = "Plug-in \"" + file_or_name + "\" was not found on MAYA_PLUG_IN_PATH.";
        return MS::kNotFound;
    }
    return load_file(path, error);
}

MStatus Plugins::load_required(const std::string& name, std::string& error) {
    if (is_loaded(name))
        return MS::kSuccess;
    const bool is_name = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-';
    });
    for (const std::string& directory : own_path_) {
        const files::path path = files::path(directory) / (name + library::k_extension);
        std::error_code failure;
        if (is_name && files::is_regular_file(path, failure))
            return load_file(files::absolute(path, failure).lexically_normal().string(), error);
    }
    error = is_name ? "It is not in the program's own folder for plug-ins."
                    : "Scenes name plug-ins without directory and extension.";
    return MS::kNotFound;
}

MStatus Plugins::load_file(const std::string& path, std::string& error) {
    const std::string name = name_of(path);
    Plugin* plugin = find(name);
    if (plugin != nullptr && plugin->info.path != path) {
        error = "A plug-in \"" + name + "\" is loaded already, from " + plugin->info.path + ".";
        return MS::kFailure;
    }
    if (plugin == nullptr)
        plugin = open_library(path, error);
    return plugin == nullptr ? MS::kFailure : initialize(*plugin, error);
}

Plugin* Plugins::open_library(const std::string& path, std::string& error) {
    auto plugin = std::make_shared<Plugin>();
    std::string reason;
    plugin->library = library::open(path, reason);
    if (plugin->library == nullptr) {
        error = "Plug-in \"" + path + "\" could not be loaded: " + reason;
        return nullptr;
    }
    const char* const version = static_cast<const char*>(library::find(plugin->library, k_version));
    if (version == nullptr || entry_point(plugin->library, library::k_initialize) == nullptr ||
        entry_point(plugin->library, library::k_uninitialize) == nullptr) {
        error = "\"" + path + "\" is no plug-in: it lacks an entry point or MApiVersion.";
        library::close(plugin->library);
        return nullptr;
    }
    plugin->info.name = name_of(path);
    plugin->info.path = path;
    plugin->info.api_version = version;
    plugins_.push_back(std::move(plugin));
    return plugins_.back().get();
}

MStatus Plugins::initialize(Plugin& plugin, std::string& error) {
    const MStatus status =
        entry_point(plugin.library, library::k_initialize)(MObject(plugin.object.get()));
    if (!status) {
        error = "Initialization of plug-in \"" + plugin.info.name +
                "\" failed: " + status.errorString().asChar();
        const bool is_empty = !plugin.info.loaded && plugin.info.commands.empty() &&
                              plugin.info.node_types.empty() && plugin.menu_items.empty();
        if (is_empty)
            drop(plugin);
        return status;
    }
    plugin.info.loaded = true;
    run_procedure(mode == AppMode::interactive ? plugin.create_ui : plugin.create_batch);
    return status;
}

MStatus Plugins::unload(const std::string& name, bool force, std::string& error) {
    Plugin* const plugin = find(name);
    if (plugin == nullptr) {
        error = "Plug-in \"" + name + "\" is not loaded.";
        return MS::kNotFound;
    }
    const std::vector<std::string> used = nodes_in_use(plugin->info.name);
    if (!used.empty() && !force) {
        error = "Plug-in \"" + plugin->info.name + "\" is in use by node \"" + used.front() +
                "\"; it can be unloaded with -force.";
        return MS::kFailure;
    }
    const MStatus fault = pass_fault("unloadPlugin");
    if (!fault) {
        error = "Plug-in \"" + plugin->info.name + "\" could not be unloaded.";
        return fault;
    }
    // The undo queue may hold commands and nodes that are implemented in the plug-in.
    UndoQueue::current().clear();
    run_procedure(mode == AppMode::interactive ? plugin->delete_ui : plugin->delete_batch);
    const MStatus status =
        entry_point(plugin->library, library::k_uninitialize)(MObject(plugin->object.get()));
    if (!status) {
        error = "Clean-up of plug-in \"" + plugin->info.name +
                "\" failed: " + status.errorString().asChar();
        if (force)
            drop(*plugin);
        return status;
    }
    drop(*plugin);
    return status;
}

/// Removes everything the plug-in still has registered, then closes its library.
void Plugins::drop(Plugin& plugin) {
    for (const std::string& command : std::vector<std::string>(plugin.info.commands))
        Commands::current().remove(command);
    for (const std::string& type : std::vector<std::string>(plugin.info.node_types))
        Scene::current().remove_type(type);
    for (const std::string& item : plugin.menu_items)
        MenuTree::current().remove(item);
    Callbacks::current().unload_code(
        [&](const void* function) { return plugin.contains(function); }, plugin.info.name);
    void* const code = plugin.library;
    plugins_.erase(std::find_if(plugins_.begin(), plugins_.end(),
                                [&](const auto& held) { return held.get() == &plugin; }));
    library::close(code);
}

bool Plugins::is_loaded(const std::string& name) const {
    const Plugin* const plugin = find(name);
    return plugin != nullptr && plugin->info.loaded;
}

bool Plugins::info(const std::string& name, PluginInfo& info) const {
    const Plugin* const plugin = find(name);
    if (plugin != nullptr)
        info = plugin->info;
    return plugin != nullptr;
}

std::vector<std::string> Plugins::names() const {
    std::vector<std::string> names;
    for (const auto& plugin : plugins_)
        names.push_back(plugin->info.name);
    return names;
}

std::vector<std::string> Plugins::nodes_in_use(const std::string& name) const {
    std::vector<std::string> names;
    const Plugin* const plugin = find(name);
    if (plugin == nullptr)
        return names;
    for (const std::string& type : plugin->info.node_types)
        if (const NodeTypeRef found = Scene::current().find_type(type))
            for (const Node* node : found->instances)
                if (node->is_valid())
                    names.push_back(node->name_text());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace host::graph
