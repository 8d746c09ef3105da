#include "window/theme.h"

#include <filesystem>
#include <string>
#include <vector>

namespace window {
namespace {

/// Fonts that are asked for characters that the main font lacks.
constexpr const char* k_other_fonts[] = {
    "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
    "/usr/share/fonts-droid-fallback/truetype/DroidSansFallback.ttf",
    "/usr/share/fonts/truetype/droid/DroidSansFallbackFull.ttf",
    "/usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc",
};

bool exists(const char* file) {
    std::error_code failure;
    return std::filesystem::exists(file, failure);
}

/// Adds characters to the font loaded last. `ranges` must outlive the building of the fonts.
void add_characters(float pixels, const ImWchar* ranges) {
    ImFontConfig config;
    config.MergeMode = true;
    for (const char* file : k_other_fonts)
        if (exists(file))
            ImGui::GetIO().Fonts->AddFontFromFileTTF(file, pixels, &config, ranges);
}

/// Loads the first of `files` that exists, else ImGui's default font. `ranges`: pairs of first and
/// last characters, 0 at the end.
ImFont* load_font(std::initializer_list<const char*> files, float pixels,
                  const std::vector<ImWchar>& ranges, bool has_more) {
    ImGuiIO& io = ImGui::GetIO();
    ImFont* font = nullptr;
    for (const char* file : files)
        if (!font && exists(file))
            font = io.Fonts->AddFontFromFileTTF(file, pixels, nullptr, ranges.data());
    if (!font) {
        ImFontConfig config;
        config.SizePixels = pixels;
        font = io.Fonts->AddFontDefault(&config);
    }
    if (has_more)
        add_characters(pixels, ranges.data());
    return font;
}

/// Latin letters, dashes, the ellipsis, arrows, and the given characters.
const std::vector<ImWchar>& ranges_with(const std::set<uint16_t>& characters) {
    static std::vector<ImWchar> ranges; // ImGui reads it when it builds the fonts
    ranges = {0x20, 0xFF, 0x2010, 0x2027, 0x2190, 0x2193};
    for (const uint16_t character : characters)
        ranges.insert(ranges.end(), {character, character});
    ranges.push_back(0);
    return ranges;
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

Fonts set_theme(float scale, const std::set<uint16_t>& characters) {
    Fonts fonts;
    const std::vector<ImWchar>& ranges = ranges_with(characters);
    const bool has_more = !characters.empty();
    ImGui::GetIO().Fonts->Clear();
    const auto text_font = {"/usr/share/fonts/opentype/inter/Inter-Regular.otf",
                            "/usr/share/fonts/truetype/inter/Inter-Regular.ttf",
                            "/usr/share/fonts/truetype/noto/NotoSans-Regular.ttf",
                            "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"};
    fonts.text = load_font(text_font, 15.0f * scale, ranges, has_more);
    fonts.small = load_font(text_font, 13.0f * scale, ranges, has_more);
    fonts.mono = load_font({"/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf",
                            "/usr/share/fonts/truetype/liberation/LiberationMono-Regular.ttf"},
                           13.0f * scale, ranges, has_more);
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
