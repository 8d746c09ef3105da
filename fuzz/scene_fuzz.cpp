/// Fuzz target: opening and saving scenes. The input is a scene file; an accepted scene must
/// be writable, and the written scene must be readable.
#include "fuzz/finding.h"
#include "host/commands/session.h"
#include "host/graph/scene.h"
#include "host/io/scene_file.h"

#include <cstdint>

namespace {

class Silent : public host::script::Output {
public:
    void print(const std::string&) override {}
    void warning(const std::string&) override {}
    void error(const std::string&) override {}
};

host::script::Session& session() {
    static Silent output;
    static bool prepared = false;
    host::script::Session& session = host::script::Session::current();
    if (!prepared) {
        session.set_output(&output);
        session.interpreter().script_path().clear();
        session.interpreter().remove_command("loadPlugin"); // inputs must not load libraries
        prepared = true;
    }
    return session;
}

void clear() {
    host::graph::Scene::current().clear();
    host::SceneNotes::current().clear();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    host::script::Interpreter& interpreter = session().interpreter();
    std::string text = "//Maya ASCII 2011 scene\n";
    text.append(reinterpret_cast<const char*>(data), size);
    clear();
    try {
        host::read_scene(text, "input.ma", interpreter);
    } catch (const host::script::ScriptError&) {
        clear();
        return 0;
    }
    const std::string written = host::write_scene("input");
    clear();
    try {
        host::read_scene(written, "written.ma", interpreter);
    } catch (const host::script::ScriptError& error) {
        report_finding(std::string("a written scene is refused: ") + error.what() + "\n" + written);
    }
    clear();
    return 0;
}
