/// Loading and unloading of plug-ins: shared libraries that register commands and node types
/// through two entry points.
///
/// A plug-in's name is its file name without directory and extension. Its library must export both
/// entry points with C++ linkage, and the string MApiVersion. If initialization fails, the items it
/// registered before the failure stay registered and the library therefore stays loaded.
#pragma once

#include "host/graph/script_host.h"

#include <maya/MObject.h>

#include <memory>
#include <string>
#include <vector>

namespace host::graph {

class Plugin;

/// Whether the application has a user interface. Selects the script procedures that a plug-in's
/// loading and unloading run.
enum class AppMode { interactive, batch };

struct PluginInfo {
    std::string name;
    std::string path; ///< of the library file
    std::string vendor;
    std::string version;
    std::string api_version; ///< interface version that the plug-in was built with
    bool loaded = false;     ///< false if initialization failed but items are registered
    std::vector<std::string> commands;
    std::vector<std::string> node_types;
};

class MHOST_EXPORT Plugins {
public:
    static Plugins& current();

    /// Loads a plug-in by file, or by a name that is searched in the search path (never in
    /// the current directory) with and without
    /// the system's extension. A plug-in that is already loaded is initialized again, which
    /// normally fails at its first registration; `is_loaded` tells beforehand. On failure `error`
    /// holds the reason.
    MStatus load(const std::string& file_or_name, std::string& error);
    /// Loads a plug-in that a scene file requires, unless it is loaded. Opening a file must not run
    /// code that the file chooses, so only a plain name is accepted, without directory or
    /// extension, and only own_path() is searched.
    MStatus load_required(const std::string& name, std::string& error);
    /// Calls the plug-in's uninitializePlugin, removes everything it left registered and closes the
    /// library. Clears the undo queue. Fails while the scene has nodes of the plug-in's types,
    /// unless `force` is true; such nodes then become unknown nodes. If uninitializePlugin fails
    /// its status is returned and the plug-in stays loaded, or is removed all the same if `force`
    /// is true.
    MStatus unload(const std::string& name, bool force, std::string& error);

    bool is_loaded(const std::string& name) const;
    /// Looks up a plug-in by name, file path or file name. Returns false if it is not known.
    bool info(const std::string& name, PluginInfo& info) const;
    /// In order of loading.
    std::vector<std::string> names() const;
    /// Names of the scene's nodes whose type belongs to the plug-in.
    std::vector<std::string> nodes_in_use(const std::string& name) const;

    /// Directories searched for a plug-in given by name. Initialized from MAYA_PLUG_IN_PATH.
    std::vector<std::string>& search_path() { return search_path_; }
    /// The program's own directories for plug-ins; empty until the program sets it.
    std::vector<std::string>& own_path() { return own_path_; }
    AppMode mode = AppMode::batch;

    static std::string name_of(const std::string& file);

private:
    Plugins();
    std::string find_file(const std::string& file_or_name) const;
    Plugin* find(const std::string& name) const;
    Plugin* open_library(const std::string& path, std::string& error);
    MStatus load_file(const std::string& path, std::string& error);
    MStatus initialize(Plugin& plugin, std::string& error);
    void drop(Plugin& plugin);
    std::vector<std::shared_ptr<Plugin>> plugins_;
    std::vector<std::string> search_path_;
    std::vector<std::string> own_path_;
};

} // namespace host::graph
