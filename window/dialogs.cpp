#include "window/dialogs.h"

#include "host/script/value.h"

#include <GLFW/glfw3.h>
#include <algorithm>
#include <cstdio>
#include <imgui.h>
#include <imgui_stdlib.h>

namespace window {
namespace {

using host::UiControl;

constexpr float k_label_width = 130.0f;
constexpr float k_field_width = 76.0f;

const host::script::Value* property(const UiControl& control, const char* name) {
    const auto found = control.properties.find(name);
    return found == control.properties.end() ? nullptr : &found->second;
}

double number(const UiControl& control, const char* name, double absent) {
    const host::script::Value* value = property(control, name);
    return value ? value->to_real() : absent;
}

bool truth(const UiControl& control, const char* name, bool absent) {
    const host::script::Value* value = property(control, name);
    return value ? value->truth() : absent;
}

/// The button that Enter presses: the first one, in the order in which the script made them.
const UiControl* first_button(const UiControl& parent) {
    for (const auto& child : parent.children) {
        if (child->type == "button" && truth(*child, "enable", true))
            return child.get();
        if (const UiControl* below = first_button(*child))
            return below;
    }
    return nullptr;
}

std::string text_of(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

} // namespace

/// Edit state of one value shown in several ImGui items, such as a field and a slider.
struct Dialogs::Editing {
    bool is_active = false, is_done = false;
    /// Call after drawing each item.
    void note() {
        is_active = is_active || ImGui::IsItemActive();
        is_done = is_done || ImGui::IsItemDeactivatedAfterEdit();
    }
};

void Dialogs::set(const UiControl& control, const std::string& value) {
    state_->run("uiSet " + host::script::quoted(control.name) + " " + value + ";");
}

void Dialogs::label(const UiControl& control) {
    const std::string text = control.text("label");
    ImGui::AlignTextToFramePadding();
    const float room = k_label_width * state_->scale - ImGui::CalcTextSize(text.c_str()).x;
    ImGui::SetCursorPosX(ImGui::GetCursorPosX() + std::max(0.0f, room));
    ImGui::TextUnformatted(text.c_str());
    ImGui::SameLine(0.0f, 10.0f);
}

/// Draws the number as a text field if the control has one, and updates `editing`.
template <class DrawField>
void Dialogs::draw_field(const UiControl& control, Editing& editing, DrawField draw) {
    if (!truth(control, "field", false))
        return;
    ImGui::SetNextItemWidth(k_field_width * state_->scale);
    draw();
    state_->places.add_item("control/" + control.name);
    editing.note();
    ImGui::SameLine(0.0f, 6.0f);
}

void Dialogs::draw_real_slider(const UiControl& control) {
    label(control);
    char format[16];
    std::snprintf(format, sizeof format, "%%.%df",
                  static_cast<int>(number(control, "precision", 3.0)));
    const auto [at, is_new] = reals_.try_emplace(control.name, 0.0f);
    if (is_new)
        at->second = static_cast<float>(number(control, "value", 0.0));
    float& value = at->second;
    Editing editing;
    draw_field(control, editing, [&] { ImGui::InputFloat("##field", &value, 0.0f, 0.0f, format); });
    ImGui::SetNextItemWidth(std::max(60.0f, ImGui::GetContentRegionAvail().x));
    ImGui::SliderFloat("##slider", &value, static_cast<float>(number(control, "minValue", 0.0)),
                       static_cast<float>(number(control, "maxValue", 1.0)), "",
                       ImGuiSliderFlags_AlwaysClamp | ImGuiSliderFlags_NoInput);
    editing.note();
    if (editing.is_done)
        set(control, text_of(static_cast<double>(value)));
    if (editing.is_done || !editing.is_active)
        reals_.erase(control.name);
}

void Dialogs::draw_integer_slider(const UiControl& control) {
    label(control);
    const auto [at, is_new] = integers_.try_emplace(control.name, 0);
    if (is_new)
        at->second = static_cast<int>(number(control, "value", 0.0));
    int& value = at->second;
    Editing editing;
    draw_field(control, editing, [&] { ImGui::InputInt("##field", &value, 0, 0); });
    ImGui::SetNextItemWidth(std::max(60.0f, ImGui::GetContentRegionAvail().x));
    ImGui::SliderInt("##slider", &value, static_cast<int>(number(control, "minValue", 0.0)),
                     static_cast<int>(number(control, "maxValue", 100.0)), "",
                     ImGuiSliderFlags_AlwaysClamp | ImGuiSliderFlags_NoInput);
    editing.note();
    if (editing.is_done)
        set(control, std::to_string(value));
    if (editing.is_done || !editing.is_active)
        integers_.erase(control.name);
}

void Dialogs::draw_text_field(const UiControl& control) {
    label(control);
    auto at = texts_.emplace(control.name, std::string());
    if (at.second)
        at.first->second = control.text("text");
    ImGui::SetNextItemWidth(-1.0f);
    ImGui::InputText("##text", &at.first->second);
    state_->places.add_item("control/" + control.name);
    const bool is_done = ImGui::IsItemDeactivatedAfterEdit();
    if (is_done)
        set(control, host::script::quoted(at.first->second));
    if (is_done || !ImGui::IsItemActive())
        texts_.erase(control.name);
}

void Dialogs::draw_check_box(const UiControl& control) {
    label(control);
    bool is_on = truth(control, "value1", false);
    if (ImGui::Checkbox(control.text("label1").c_str(), &is_on))
        set(control, is_on ? "on" : "off");
    state_->places.add_item("control/" + control.name);
}

void Dialogs::draw_option_menu(const UiControl& control) {
    label(control);
    ImGui::SetNextItemWidth(-1.0f);
    const std::string chosen = control.text("value");
    const bool is_open = ImGui::BeginCombo("##menu", chosen.c_str());
    state_->places.add_item("control/" + control.name);
    if (!is_open)
        return;
    for (const auto& item : control.children) {
        const std::string entry = item->text("label");
        if (ImGui::Selectable(entry.c_str(), entry == chosen))
            set(control, host::script::quoted(entry));
        state_->places.add_item("control/" + control.name + "/" + entry);
        if (entry == chosen)
            ImGui::SetItemDefaultFocus();
    }
    ImGui::EndCombo();
}

void Dialogs::press(const UiControl& button) {
    state_->run_on_shown("uiPress " + host::script::quoted(button.name) + ";");
}

void Dialogs::draw_button(const UiControl& control, float width) {
    const bool is_main = &control == main_button_;
    if (is_main)
        ImGui::PushStyleColor(ImGuiCol_Button, ImGui::GetStyle().Colors[ImGuiCol_Header]);
    if (ImGui::Button(control.text("label").c_str(), {width, 0.0f}))
        press(control);
    if (is_main)
        ImGui::PopStyleColor();
    state_->places.add_item("control/" + control.name);
    is_on_button_ = is_on_button_ || ImGui::IsItemFocused();
}

void Dialogs::draw_row(const UiControl& row) {
    const auto count = static_cast<float>(std::max<size_t>(1, row.children.size()));
    const float gap = ImGui::GetStyle().ItemSpacing.x;
    // Each button gets the width of its label plus an equal share of the remaining space.
    float words = 0.0f;
    for (const auto& child : row.children)
        words += ImGui::CalcTextSize(child->text("label").c_str()).x;
    const float spare =
        std::max(12.0f, (ImGui::GetContentRegionAvail().x - words - (count - 1.0f) * gap) / count);
    bool is_first = true;
    for (const auto& child : row.children) {
        if (!is_first)
            ImGui::SameLine();
        is_first = false;
        ImGui::PushID(child->name.c_str());
        if (child->type == "button")
            draw_button(*child, ImGui::CalcTextSize(child->text("label").c_str()).x + spare);
        else
            draw_control(*child);
        ImGui::PopID();
    }
}

/// Shows a control's annotation while the pointer is on the control or its label.
void Dialogs::draw_annotation(const UiControl& control) {
    const std::string annotation = control.text("annotation");
    if (annotation.empty() || ImGui::IsPopupOpen("", ImGuiPopupFlags_AnyPopup))
        return;
    const ImVec2 low = ImGui::GetItemRectMin(), high = ImGui::GetItemRectMax();
    const float left = ImGui::GetWindowPos().x;
    if (!ImGui::IsWindowHovered(ImGuiHoveredFlags_AllowWhenBlockedByActiveItem) ||
        !ImGui::IsMouseHoveringRect({left, low.y}, high))
        return;
    ImGui::BeginTooltip();
    ImGui::PushTextWrapPos(24.0f * ImGui::GetFontSize());
    ImGui::TextUnformatted(annotation.c_str());
    ImGui::PopTextWrapPos();
    ImGui::EndTooltip();
    state_->places.add("tooltip/" + control.name, low.x, low.y, high.x - low.x, high.y - low.y);
}

void Dialogs::draw_control(const UiControl& control) {
    if (!truth(control, "visible", true))
        return;
    const bool is_enabled = truth(control, "enable", true);
    ImGui::BeginDisabled(!is_enabled);
    if (control.type == "floatSliderGrp")
        draw_real_slider(control);
    else if (control.type == "intSliderGrp")
        draw_integer_slider(control);
    else if (control.type == "textFieldGrp")
        draw_text_field(control);
    else if (control.type == "checkBoxGrp")
        draw_check_box(control);
    else if (control.type == "optionMenuGrp")
        draw_option_menu(control);
    else if (control.type == "button")
        draw_button(control, -1.0f);
    else if (control.type == "text")
        ImGui::TextWrapped("%s", control.text("label").c_str());
    else if (control.type == "separator")
        ImGui::Separator();
    else if (control.type == "rowLayout")
        draw_row(control);
    else if (control.type == "frameLayout") {
        const auto open = truth(control, "collapse", false) ? 0 : ImGuiTreeNodeFlags_DefaultOpen;
        if (!truth(control, "collapsable", false) ||
            ImGui::CollapsingHeader(control.text("label").c_str(), open))
            draw_children(control);
    } else if (control.is_layout)
        draw_children(control);
    ImGui::EndDisabled();
    draw_annotation(control);
}

void Dialogs::draw_children(const UiControl& parent) {
    for (const auto& child : parent.children) {
        ImGui::PushID(child->name.c_str());
        draw_control(*child);
        ImGui::PopID();
    }
}

/// Draws a window's controls and takes Enter for its main button.
void Dialogs::draw_contents(const UiControl& window, bool has_focus) {
    main_button_ = first_button(window);
    is_on_button_ = false;
    const bool was_editing = ImGui::IsAnyItemActive();
    draw_children(window);
    const bool is_entered =
        ImGui::IsKeyPressed(GLFW_KEY_ENTER, false) || ImGui::IsKeyPressed(GLFW_KEY_KP_ENTER, false);
    // In a field Enter ends the editing; on a button shown as focused it presses that one.
    if (has_focus && is_entered && main_button_ && !was_editing &&
        !(is_on_button_ && ImGui::GetIO().NavVisible) &&
        !ImGui::IsPopupOpen("", ImGuiPopupFlags_AnyPopup))
        press(*main_button_);
    main_button_ = nullptr;
}

void Dialogs::draw_window(const UiControl& window) {
    ImVec2 size(420.0f * state_->scale, 0.0f);
    if (const host::script::Value* given = property(window, "widthHeight")) {
        const auto words = given->flattened();
        if (words.size() == 2)
            size.x =
                state_->scale * std::clamp(std::strtof(words[0].c_str(), nullptr), 260.0f, 1200.0f);
    }
    const ImVec2 middle = ImGui::GetMainViewport()->GetCenter();
    ImGui::SetNextWindowPos(middle, ImGuiCond_Appearing, {0.5f, 0.5f});
    ImGui::SetNextWindowSize({size.x, 0.0f}, ImGuiCond_Appearing);
    if (!seen_[window.name])
        ImGui::SetNextWindowFocus();
    bool is_open = true;
    const std::string title = window.text("title") + "###" + window.name;
    if (ImGui::Begin(title.c_str(), &is_open,
                     ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_AlwaysAutoResize |
                         ImGuiWindowFlags_NoSavedSettings)) {
        const float top = ImGui::GetCursorPosY();
        ImGui::Dummy({size.x - 20.0f, 0.0f}); // enforces the width that the script set
        ImGui::SetCursorPosY(top);
        const ImVec2 at = ImGui::GetWindowPos(), now = ImGui::GetWindowSize();
        state_->places.add("dialog/" + window.name, at.x, at.y, now.x, now.y);
        const bool has_focus = ImGui::IsWindowFocused(ImGuiFocusedFlags_RootAndChildWindows);
        draw_contents(window, has_focus);
        if (has_focus && !ImGui::IsAnyItemActive() &&
            ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape), false) &&
            !ImGui::IsPopupOpen("", ImGuiPopupFlags_AnyPopup))
            is_open = false;
    }
    ImGui::End();
    if (!is_open)
        state_->run("deleteUI -window " + host::script::quoted(window.name) + ";");
}

void Dialogs::draw(State& state, const host::UiModel& model, bool takes_input) {
    state_ = &state;
    std::map<std::string, bool> seen;
    ImGui::BeginDisabled(!takes_input);
    for (const auto& window : model.windows()) {
        if (!window->is_shown)
            continue;
        draw_window(*window);
        seen[window->name] = true;
    }
    ImGui::EndDisabled();
    seen_ = std::move(seen);
}

} // namespace window
