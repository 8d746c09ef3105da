// Runs script files in the embedded host, with the shipped scripts and the built plug-in on its
// paths.

#include "host/commands/session.h"
#include "host/graph/plugins.h"

#include <iostream>

namespace {

/// Prints output, warnings and errors to one stream, so that tests see them in order.
class Console : public host::script::Output {
public:
    void print(const std::string& text) override { std::cout << text << std::flush; }
    void warning(const std::string& text) override { print("// Warning: " + text + "\n"); }
    void error(const std::string& text) override { print("// Error: " + text + "\n"); }
};

} // namespace

int main(int argc, char** argv) {
    static Console console;
    host::script::Session& session = host::script::Session::current();
    session.set_output(&console);
    session.interpreter().script_path() = {"scripts", TESSORA_SCRIPTS};
    host::graph::Plugins::current().search_path().push_back(TESSORA_PLUGINS);
    host::graph::Plugins::current().own_path().push_back(TESSORA_PLUGINS);
    for (int i = 1; i < argc; ++i)
        if (!session.run(host::script::read_script(argv[i]), argv[i]).ok)
            return 1;
    return 0;
}
