// Opening, importing, saving and exporting from the window, and files dropped on it.
#include "host/script/value.h"
#include "window/application.h"

#include <filesystem>

namespace window {
namespace {

namespace fs = std::filesystem;
using host::script::quoted;

std::string extension_of(const std::string& path) { return fs::path(path).extension().string(); }

} // namespace

void Application::open_file(bool import) {
    const std::string folder = state_.scene_name.empty() ? options_.file : state_.scene_name;
    const fs::path begin = fs::path(folder).parent_path() / "";
    chooser_.ask(import ? "Import" : "Open", import ? "Import" : "Open", begin.string(),
                 {".obj", ".ma", ".mel"}, [this, import](const std::string& path) {
                     const std::string statement = statement_for_file(path, import);
                     if (statement.empty())
                         state_.console.error(path + ": not an .obj, .ma or .mel file.");
                     else
                         later_.push_back([this, import, statement] {
                             if (import || may_discard())
                                 state_.run(statement);
                         });
                 });
}

void Application::save(bool as_new) {
    if (!as_new && !state_.scene_name.empty())
        return state_.run("file -save;");
    fs::path suggested = state_.scene_name;
    if (suggested.empty())
        suggested = fs::path(options_.file).replace_extension(".ma");
    if (suggested.empty())
        suggested = "untitled.ma";
    chooser_.ask("Save the scene", "Save", suggested.string(), {".ma"},
                 [this](const std::string& path) {
                     const std::string whole = extension_of(path).empty() ? path + ".ma" : path;
                     if (extension_of(whole) == ".ma")
                         write(whole, "file -rename " + quoted(whole) + "; file -save;");
                     else
                         state_.console.error(whole + ": scenes are saved as .ma; "
                                                      "File > Export mesh writes .obj.");
                 });
}

void Application::export_mesh() {
    fs::path suggested = options_.file.empty() ? fs::path("mesh.obj") : fs::path(options_.file);
    suggested.replace_filename(suggested.stem().string() + "_uv.obj");
    chooser_.ask("Export the mesh", "Export", suggested.string(), {".obj"},
                 [this](const std::string& path) {
                     const std::string whole = extension_of(path).empty() ? path + ".obj" : path;
                     write(whole, "file -force -exportAll " + quoted(whole) + ";");
                 });
}

void Application::write(const std::string& path, const std::string& statement) {
    later_.push_back([this, path, statement] {
        std::error_code ignored;
        if (path == state_.scene_name || !fs::exists(path, ignored) ||
            ask("Replace the file", path + " exists already.", {"Replace it", "Cancel"},
                "Cancel") == "Replace it")
            state_.run(statement);
    });
}

bool Application::may_discard() {
    if (!state_.is_modified)
        return true;
    const std::string answer = ask("Unsaved changes", "The scene has changes that were not saved.",
                                   {"Discard them", "Keep working"}, "Keep working");
    return answer == "Discard them";
}

void Application::dropped(const std::vector<std::string>& files) {
    // A drop asks no question, so it must never discard unsaved changes.
    const bool replaces = !state_.subject.shape && !state_.is_modified;
    std::vector<std::string> refused;
    for (const std::string& statement : statements_for_drop(files, replaces, refused))
        state_.run(statement);
    for (const std::string& file : refused)
        state_.console.error(file + ": not an .obj, .ma or .mel file.");
}

} // namespace window
