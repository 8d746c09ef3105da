/// Plug-ins: libraries that are loaded at run time and tell the host about themselves through two
/// entry points. The host links none of them.
///
/// A plug-in is named after its file, without directory and extension. It must export the entry
/// points with C++ linkage and the text MApiVersion. Code of a plug-in stays mapped as long as
/// anything refers to it: when initialization fails, what was registered before stays registered,
/// and so the library stays loaded.
#pragma once

#include "host/graph/script_host.h"

#include <maya/MObject.h>

#include <memory>
#include <string>
#include <vector>

namespace host::graph {

class Plugin;

/// Whether there is a user interface: decides which procedures of a plug-in run.
enum class AppMode { interactive, batch };

struct PluginInfo {
    std::string name;
    std::string path; ///< of the file
    std::string vendor;
    std::string version;
    std::string api_version; ///< what it was built with
    bool loaded = false;     ///< false: initialization failed, but parts are registered
    std::vector<std::string> commands;
    std::vector<std::string> node_types;
};

class MHOST_EXPORT Plugins {
public:
    static Plugins& current();

    /// Loads a file, or a name that is looked for in the search path with and without the system's
    /// extension. A plug-in that is loaded already is initialized once more, and it is up to its
    /// registrations to fail; `is_loaded` tells beforehand. On failure `error` says why.
    MStatus load(const std::string& file_or_name, std::string& error);
    /// Runs the plug-in's own clean-up, then removes what it left registered and the library. Undo
    /// is forgotten. Refused while nodes of its types are in the scene, unless forced: those become
    /// unknown nodes. A failing clean-up leaves the plug-in loaded, unless forced: its status is
    /// returned, but the plug-in is gone.
    MStatus unload(const std::string& name, bool force, std::string& error);

    bool is_loaded(const std::string& name) const;
    /// False when the name is not known; the file's path or name will do as well.
    bool info(const std::string& name, PluginInfo& info) const;
    /// In the order of loading.
    std::vector<std::string> names() const;
    /// Nodes of a plug-in's types that are in the scene.
    std::vector<std::string> nodes_in_use(const std::string& name) const;

    /// Directories for names without one. Starts as MAYA_PLUG_IN_PATH has it.
    std::vector<std::string>& search_path() { return search_path_; }
    AppMode mode = AppMode::batch;

    static std::string name_of(const std::string& file);

private:
    Plugins();
    std::string find_file(const std::string& file_or_name) const;
    Plugin* find(const std::string& name) const;
    MStatus initialize(Plugin& plugin, std::string& error);
    void drop(Plugin& plugin);
    std::vector<std::shared_ptr<Plugin>> plugins_;
    std::vector<std::string> search_path_;
};

} // namespace host::graph
