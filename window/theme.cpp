#include "window/theme.h"

#include <filesystem>
#include <string>

namespace window {
namespace {

/// Loads the first of `files` that exists, else ImGui's default font.
ImFont* load_font(std::initializer_list<const char*> files, float pixels) {
    // Latin letters, dashes, the ellipsis, arrows and the multiplication sign.
    static const ImWchar k_ranges[] = {0x20,   0xFF,   0x2010, 0x2027, 0x2190,
                                       0x2193, 0x00D7, 0x00D7, 0};
    ImGuiIO& io = ImGui::GetIO();
    for (const char* file : files) {
        std::error_code failure;
        if (std::filesystem::exists(file, failure))
            if (ImFont* font = io.Fonts->AddFontFromFileTTF(file, pixels, nullptr, k_ranges))
                return font;
    }
    ImFontConfig config;
    config.SizePixels = pixels;
    return io.Fonts->AddFontDefault(&config);
}

/// Table: ImGui's colours.
void set_colours(ImVec4* colours) {
    const ImVec4 hover{0.290f, 0.298f, 0.314f, 1.0f};
    const ImVec4 button{0.262f, 0.268f, 0.282f, 1.0f};
    const ImVec4 clear{0.0f, 0.0f, 0.0f, 0.0f};
    const ImVec4 accent_faint{colour::accent.x, colour::accent.y, colour::accent.z, 0.45f};
    const std::pair<int, ImVec4> list[] = {
        {ImGuiCol_Text, colour::text},
        {ImGuiCol_TextDisabled, colour::faint},
        {ImGuiCol_WindowBg, colour::panel},
        {ImGuiCol_ChildBg, clear},
        {ImGuiCol_PopupBg, colour::window},
        {ImGuiCol_Border, colour::line},
        {ImGuiCol_BorderShadow, clear},
        {ImGuiCol_FrameBg, colour::field},
        {ImGuiCol_FrameBgHovered, {0.15f, 0.155f, 0.166f, 1.0f}},
        {ImGuiCol_FrameBgActive, {0.17f, 0.176f, 0.188f, 1.0f}},
        {ImGuiCol_TitleBg, colour::line},
        {ImGuiCol_TitleBgActive, {0.145f, 0.160f, 0.180f, 1.0f}},
        {ImGuiCol_TitleBgCollapsed, colour::line},
        {ImGuiCol_MenuBarBg, colour::window},
        {ImGuiCol_ScrollbarBg, colour::field},
        {ImGuiCol_ScrollbarGrab, button},
        {ImGuiCol_ScrollbarGrabHovered, hover},
        {ImGuiCol_ScrollbarGrabActive, hover},
        {ImGuiCol_CheckMark, colour::accent},
        {ImGuiCol_SliderGrab, {0.45f, 0.47f, 0.50f, 1.0f}},
        {ImGuiCol_SliderGrabActive, colour::accent},
        {ImGuiCol_Button, button},
        {ImGuiCol_ButtonHovered, {0.325f, 0.334f, 0.352f, 1.0f}},
        {ImGuiCol_ButtonActive, accent_faint},
        {ImGuiCol_Header, {0.255f, 0.300f, 0.345f, 1.0f}},
        {ImGuiCol_HeaderHovered, {0.285f, 0.345f, 0.405f, 1.0f}},
        {ImGuiCol_HeaderActive, accent_faint},
        {ImGuiCol_Separator, colour::line},
        {ImGuiCol_Tab, colour::window},
        {ImGuiCol_TabHovered, hover},
        {ImGuiCol_TabActive, colour::panel},
        {ImGuiCol_TabUnfocused, colour::window},
        {ImGuiCol_TabUnfocusedActive, colour::panel},
        {ImGuiCol_PlotHistogram, colour::accent},
        {ImGuiCol_TextSelectedBg, accent_faint},
        {ImGuiCol_NavHighlight, colour::accent},
        {ImGuiCol_TableHeaderBg, colour::window},
        {ImGuiCol_TableBorderStrong, colour::line},
        {ImGuiCol_TableBorderLight, colour::line},
        {ImGuiCol_ModalWindowDimBg, {0.05f, 0.05f, 0.06f, 0.45f}},
    };
    for (const auto& [index, value] : list)
        colours[index] = value;
}

} // namespace

Fonts set_theme(float scale) {
    Fonts fonts;
    const auto text_font = {"/usr/share/fonts/opentype/inter/Inter-Regular.otf",
                            "/usr/share/fonts/truetype/inter/Inter-Regular.ttf",
                            "/usr/share/fonts/truetype/noto/NotoSans-Regular.ttf",
                            "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"};
    fonts.text = load_font(text_font, 15.0f * scale);
    fonts.small = load_font(text_font, 13.0f * scale);
    fonts.mono = load_font({"/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf",
                            "/usr/share/fonts/truetype/liberation/LiberationMono-Regular.ttf"},
                           13.0f * scale);
    ImGuiStyle& style = ImGui::GetStyle();
    style = ImGuiStyle();
    style.WindowPadding = {10.0f, 8.0f};
    style.FramePadding = {8.0f, 4.0f};
    style.ItemSpacing = {8.0f, 6.0f};
    style.ItemInnerSpacing = {6.0f, 4.0f};
    style.WindowRounding = 4.0f;
    style.FrameRounding = 3.0f;
    style.PopupRounding = 3.0f;
    style.GrabRounding = 2.0f;
    style.TabRounding = 3.0f;
    style.ScrollbarSize = 12.0f;
    style.ScrollbarRounding = 6.0f;
    style.WindowTitleAlign = {0.0f, 0.5f};
    style.WindowMenuButtonPosition = ImGuiDir_None;
    set_colours(style.Colors);
    style.ScaleAllSizes(scale);
    return fonts;
}

} // namespace window
