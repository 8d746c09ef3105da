#include "window/file_chooser.h"

#include <algorithm>
#include <filesystem>
#include <imgui.h>
#include <imgui_stdlib.h>

namespace window {
namespace {

namespace fs = std::filesystem;

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = char(c + 32);
    return text;
}

} // namespace

void FileChooser::ask(const std::string& title, const std::string& button, const std::string& path,
                      std::vector<std::string> extensions,
                      std::function<void(const std::string&)> done) {
    title_ = title;
    button_ = button;
    extensions_ = std::move(extensions);
    done_ = std::move(done);
    std::error_code failure;
    const fs::path given = fs::absolute(path.empty() ? fs::path("./") : fs::path(path), failure);
    path_ = given.lexically_normal().string();
    folder_ = given.lexically_normal().parent_path().string();
    list();
    wants_open_ = true;
}

void FileChooser::list() {
    entries_.clear();
    std::error_code failure;
    for (fs::directory_iterator at(folder_, failure), end; !failure && at != end;
         at.increment(failure)) {
        const std::string name = at->path().filename().string();
        std::error_code ignored;
        const bool is_folder = at->is_directory(ignored);
        const std::string extension = lower(at->path().extension().string());
        const bool fits =
            std::find(extensions_.begin(), extensions_.end(), extension) != extensions_.end();
        if (name[0] != '.' && (is_folder || fits))
            entries_.push_back({name, is_folder});
    }
    std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
        return a.is_folder != b.is_folder ? a.is_folder : a.name < b.name;
    });
}

void FileChooser::choose() {
    std::error_code ignored;
    if (fs::is_directory(path_, ignored)) {
        folder_ = fs::path(path_).lexically_normal().string();
        list();
        return;
    }
    if (path_.empty())
        return;
    is_open_ = false;
    ImGui::CloseCurrentPopup();
    done_(path_);
}

void FileChooser::draw_entries(State& state) {
    ImGui::BeginChild("entries", {520.0f * state.scale, 260.0f * state.scale}, true);
    if (ImGui::Selectable("..")) {
        folder_ = fs::path(folder_).parent_path().string();
        path_ = (fs::path(folder_) / "").string();
        list();
    }
    for (size_t i = 0; i < entries_.size(); ++i) {
        state.glyphs.note(entries_[i].name);
        const Entry entry = entries_[i];
        const std::string full = (fs::path(folder_) / entry.name).string();
        const std::string words = entry.name + (entry.is_folder ? "/" : "");
        if (ImGui::Selectable(words.c_str(), full == path_, ImGuiSelectableFlags_DontClosePopups)) {
            path_ = full;
            if (entry.is_folder) {
                path_ += "/";
                folder_ = full;
                list();
                break;
            }
        }
        state.places.add_item("file/" + entry.name);
        if (!entry.is_folder && ImGui::IsItemHovered() && ImGui::IsMouseDoubleClicked(0))
            choose();
    }
    ImGui::EndChild();
}

void FileChooser::draw(State& state) {
    const std::string id = title_ + "###file";
    if (wants_open_) {
        ImGui::OpenPopup("###file");
        wants_open_ = false;
        is_open_ = true;
    }
    if (!is_open_)
        return;
    ImGui::SetNextWindowPos(ImGui::GetMainViewport()->GetCenter(), ImGuiCond_Appearing,
                            {0.5f, 0.5f});
    if (!ImGui::BeginPopupModal(id.c_str(), &is_open_,
                                ImGuiWindowFlags_AlwaysAutoResize |
                                    ImGuiWindowFlags_NoSavedSettings)) {
        is_open_ = false;
        return;
    }
    ImGui::TextDisabled("%s", folder_.c_str());
    draw_entries(state);
    if (ImGui::IsWindowAppearing())
        ImGui::SetKeyboardFocusHere();
    ImGui::SetNextItemWidth(520.0f * state.scale);
    const bool is_entered = ImGui::InputText(
        "##path", &path_, ImGuiInputTextFlags_EnterReturnsTrue | ImGuiInputTextFlags_AutoSelectAll);
    state.places.add_item("file/path");
    if (ImGui::Button(button_.c_str(), {110.0f * state.scale, 0.0f}) || is_entered)
        choose();
    state.places.add_item("file/choose");
    ImGui::SameLine();
    if (ImGui::Button("Cancel", {110.0f * state.scale, 0.0f}) ||
        ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape))) {
        is_open_ = false;
        ImGui::CloseCurrentPopup();
    }
    ImGui::EndPopup();
}

} // namespace window
