// Opening, importing, saving and exporting from the window, and files dropped on it.
#include "app/atomic_file.h"
#include "app/file_formats.h"
#include "app/mesh_conversion.h"
#include "app/presets.h"
#include "app/unwrap_options.h"
#include "host/base/read_text.h"
#include "host/script/value.h"
#include "window/application.h"
#include "window/node_settings.h"

#include <algorithm>
#include <filesystem>

namespace window {
namespace {

namespace fs = std::filesystem;
using host::script::quoted;

std::string extension_of(const std::string& path) { return fs::path(path).extension().string(); }

} // namespace

void Application::open_file(bool import) {
    const std::string folder = state_.opened_name.empty() ? options_.file : state_.opened_name;
    const fs::path begin = fs::path(folder).parent_path() / "";
    std::vector<std::string> extensions = app::read_extensions();
    extensions.insert(extensions.end(), {".ma", ".mel"});
    chooser_.ask(import ? "Import" : "Open", import ? "Import" : "Open", begin.string(), extensions,
                 [this, import](const std::string& path) { open_path(path, import); });
}

void Application::open_path(const std::string& path, bool import) {
    later_.push_back([this, import, path] {
        const std::string statement = statement_reading(path, import);
        if (import && !statement.empty())
            state_.run(statement);
        else if (!statement.empty())
            unless_unsaved([this, statement] { state_.run(statement); });
    });
}

/// The file itself if the host reads its format; else its mesh, converted to OBJ. Empty if that
/// fails, after a word about it in the console.
std::string Application::readable(const std::string& path) {
    if (!statement_for_file(path, false).empty())
        return path;
    std::string error = app::input_refusal(path);
    if (error.empty() && !app::is_mesh_file(path))
        error = refusal_of(path);
    if (converted_.empty())
        converted_ = make_private_folder();
    const fs::path folder = converted_ / std::to_string(sources_.size());
    std::error_code failure;
    fs::create_directory(folder, failure);
    const std::string mesh = (folder / (fs::path(path).stem().string() + ".obj")).string();
    if (error.empty() && app::convert_mesh(path, mesh, error)) {
        sources_[mesh] = path;
        return mesh;
    }
    state_.console.error(error);
    return std::string();
}

/// The statement that opens or imports a file; empty if it cannot be read.
std::string Application::statement_reading(const std::string& path, bool import) {
    const std::string file = readable(path);
    return file.empty() ? file : statement_for_file(file, import);
}

void Application::run_now(const std::string& statement) {
    state_.run(statement);
    state_.jobs.run_all();
}

void Application::save(bool as_new, std::function<void()> then) {
    if (!as_new && !state_.scene_name.empty()) {
        run_now("file -save;");
        if (then && !has_failed_)
            then();
        return;
    }
    fs::path suggested = state_.scene_name;
    if (suggested.empty())
        suggested = fs::path(state_.opened_name).replace_extension(".ma");
    if (suggested.empty())
        suggested = "untitled.ma";
    chooser_.ask("Save the scene", "Save", suggested.string(), {".ma"},
                 [this, then](const std::string& path) {
                     const std::string whole = extension_of(path).empty() ? path + ".ma" : path;
                     if (extension_of(whole) == ".ma")
                         write(whole, "file -rename " + quoted(whole) + "; file -save;", then);
                     else
                         state_.console.error(whole + ": scenes are saved as .ma; "
                                                      "File > Export mesh writes .obj.");
                 });
}

void Application::export_mesh() {
    fs::path suggested =
        state_.opened_name.empty() ? fs::path("mesh") : fs::path(state_.opened_name);
    suggested.replace_filename(suggested.stem().string() + "_uv.obj");
    chooser_.ask("Export the mesh", "Export", suggested.string(), app::written_extensions(),
                 [this](const std::string& path) {
                     const std::string whole = extension_of(path).empty() ? path + ".obj" : path;
                     const std::string refusal = app::export_refusal(whole);
                     if (!refusal.empty())
                         state_.console.error(refusal);
                     else if (extension_of(whole) == ".obj")
                         write(whole, "file -force -exportAll " + quoted(whole) + ";");
                     else
                         export_converted(whole);
                 });
}

/// Exports what the host writes, OBJ, and converts it.
void Application::export_converted(const std::string& path) {
    const fs::path folder = make_private_folder();
    const fs::path mesh = folder / (fs::path(path).stem().string() + ".obj");
    write(path, "file -force -exportAll " + quoted(mesh.string()) + ";", [this, mesh, path] {
        std::string error;
        if (app::convert_mesh(mesh.string(), path, error))
            state_.say("Exported " + path);
        else
            state_.console.error(error);
    });
    later_.push_back([folder] {
        std::error_code ignored;
        if (!folder.empty())
            fs::remove_all(folder, ignored);
    });
}

/// The picture that is shown as the mesh's texture.
void Application::choose_picture() {
    const std::string folder = state_.opened_name.empty() ? options_.file : state_.opened_name;
    chooser_.ask("Picture as texture", "Show", (fs::path(folder).parent_path() / "").string(),
                 {".png", ".jpg", ".jpeg"}, [this](const std::string& path) {
                     std::string error;
                     if (!read_picture(path, state_.picture, error))
                         return state_.console.error(error);
                     ++state_.picture_revision;
                     ++state_.scene_revision; // so that all views are drawn again
                     state_.display = Display::picture;
                     state_.say("The texture is " + path);
                 });
}

void Application::choose_preset(const std::string& name) {
    if (name != k_preset_from_file)
        return apply_preset(name);
    const std::string folder = state_.opened_name.empty() ? options_.file : state_.opened_name;
    chooser_.ask("Preset or report", "Use", (fs::path(folder).parent_path() / "").string(),
                 {".json"}, [this](const std::string& path) { apply_preset(path); });
}

/// Sets the unwrap node's attributes to the defaults and what the preset changes. Which seams are
/// kept stays, as cuts made by hand would be lost, unless a file says so.
void Application::apply_preset(const std::string& name) {
    if (!state_.subject.node)
        return;
    const app::UnwrapSettingsRequest now = settings_of(*state_.subject.node);
    app::UnwrapSettingsRequest wanted;
    wanted.keep_seams = now.keep_seams;
    std::string error;
    if (name != k_no_preset && !app::apply_preset(name, wanted, error))
        return state_.console.error(error);
    if (const std::string names = app::settings_without_node(wanted); !names.empty())
        state_.console.warning(name + ": the window has no " + names + "; tessora unwrap has");
    const std::string statement = statement_changing(state_.subject.node_name(), now, wanted);
    if (statement.empty())
        return state_.say("The settings are those already");
    state_.run(statement);
}

void Application::write(const std::string& path, const std::string& statement,
                        std::function<void()> then) {
    later_.push_back([this, path, statement, then] {
        std::error_code ignored;
        if (path != state_.scene_name && fs::exists(path, ignored) && !may_replace(path))
            return;
        run_now(statement);
        if (then && !has_failed_)
            then();
    });
}

/// Asks whether a file may be replaced, and keeps its content as a backup, as --in_place does: the
/// first backup holds the original and is never replaced.
bool Application::may_replace(const std::string& path) {
    const std::string backup = app::backup_name(path);
    const bool has_backup = app::has_backup(path);
    const std::string name = fs::path(backup).filename().string();
    const std::string words =
        has_backup ? " exists already. " + name + " is kept; there will be no new backup."
                   : " exists already. It will be kept as " + name + ".";
    if (ask("Replace the file", path + words, {"Replace it", "Cancel"}, "Cancel", "Cancel") !=
        "Replace it")
        return false;
    if (has_backup)
        return true;
    std::string bytes, error;
    host::IoError failure;
    app::AtomicFile file;
    if (!host::read_text(path, bytes, failure))
        error = failure.message;
    else if (file.open(backup, error, app::AtomicFile::keep) && file.write(bytes, error) &&
             file.commit(error))
        return true;
    state_.console.error(error);
    return false;
}

void Application::unless_unsaved(std::function<void()> then) {
    if (!state_.is_modified)
        return then();
    const std::string answer =
        ask("Unsaved changes",
            state_.title.substr(0, state_.title.rfind(" *")) + " has changes that were not saved.",
            {"Save", "Discard them", "Keep working"}, "Save", "Keep working");
    if (answer == "Save")
        save(false, std::move(then));
    else if (answer == "Discard them")
        then();
}

void Application::dropped(const std::vector<std::string>& files) {
    // A drop asks no question, so it must never discard unsaved changes.
    const bool replaces = !state_.subject.shape && !state_.is_modified;
    std::vector<std::string> ours, refused;
    for (const std::string& file : files)
        ours.push_back(readable(file));
    ours.erase(std::remove(ours.begin(), ours.end(), std::string()), ours.end());
    for (const std::string& statement : statements_for_drop(ours, replaces, refused))
        state_.run(statement);
}

} // namespace window
