/// The window's colours, fonts and spacing.
#pragma once

#include <cstdint>
#include <imgui.h>
#include <set>

namespace window {

namespace colour {
inline const ImVec4 window{0.165f, 0.169f, 0.178f, 1.0f};
inline const ImVec4 panel{0.198f, 0.203f, 0.214f, 1.0f};
inline const ImVec4 field{0.122f, 0.126f, 0.135f, 1.0f};
inline const ImVec4 line{0.098f, 0.102f, 0.110f, 1.0f};
inline const ImVec4 text{0.835f, 0.843f, 0.855f, 1.0f};
inline const ImVec4 faint{0.560f, 0.572f, 0.592f, 1.0f};
inline const ImVec4 accent{0.310f, 0.560f, 0.780f, 1.0f};
inline const ImVec4 warm{0.945f, 0.680f, 0.260f, 1.0f};
inline const ImVec4 error{0.930f, 0.420f, 0.380f, 1.0f};
inline const ImVec4 warning{0.905f, 0.745f, 0.370f, 1.0f};
inline const ImVec4 good{0.560f, 0.780f, 0.520f, 1.0f};
} // namespace colour

struct Fonts {
    ImFont* text = nullptr;
    ImFont* small = nullptr;
    ImFont* mono = nullptr;
};

/// Loads fonts (the system's, else ImGui's own) and sets style and colours. `scale`: the screen's
/// content scale, 1 for 96 dpi. `characters`: what the fonts must hold besides Latin letters; those
/// that no installed font has are shown as "?".
Fonts set_theme(float scale, const std::set<uint16_t>& characters);

} // namespace window
