#include "app/session_setup.h"

#include "app/layout_command.h"
#include "app/system.h"
#include "host/commands/session.h"
#include "host/graph/plugins.h"

#include <cstdlib>

namespace app {

void set_up_session() {
    static bool done = false;
    if (done)
        return;
    done = true;
    add_layout_command();
    const std::string home = program_directory();
    std::vector<std::string>& scripts =
        host::script::Session::current().interpreter().script_path();
    const char* given = std::getenv("MAYA_SCRIPT_PATH");
    const std::string list = given ? given : "";
    for (size_t start = 0; start < list.size();) {
        const size_t end = std::min(list.find(k_path_separator, start), list.size());
        if (end > start)
            scripts.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    scripts.push_back(home + "/scripts");
    scripts.push_back(home + "/../share/tessora/scripts");
    host::graph::Plugins& plugins = host::graph::Plugins::current();
    for (const std::string& directory : {home, home + "/../lib/tessora"}) {
        plugins.search_path().push_back(directory);
        plugins.own_path().push_back(directory);
    }
}

bool load_plugin(std::string& error) {
    set_up_session();
    host::graph::Plugins& plugins = host::graph::Plugins::current();
    std::string reason;
    if (plugins.is_loaded("tessora") || plugins.load("tessora", reason))
        return true;
    error = "the plug-in cannot be loaded: " + reason;
    return false;
}

} // namespace app
