#include "window/legend.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <imgui.h>

namespace window {
namespace {

/// Draws pieces from right to left.
class Line {
public:
    Line(const State& state, float right, float middle)
        : font_(state.fonts.small), scale_(state.scale), end_(right), middle_(middle) {}

    void words(const char* text) {
        const ImVec2 size = font_->CalcTextSizeA(font_->FontSize, FLT_MAX, 0.0f, text);
        end_ -= size.x;
        const ImVec2 at(std::floor(end_), std::floor(middle_ - 0.5f * size.y));
        // A dark outline keeps the words readable on the mesh.
        list_->AddRectFilled({at.x - 3.0f, at.y - 1.0f},
                             {at.x + size.x + 3.0f, at.y + size.y + 1.0f},
                             ImGui::GetColorU32({0.165f, 0.169f, 0.178f, 0.75f}), 3.0f);
        list_->AddText(font_, font_->FontSize, at, ImGui::GetColorU32(colour::text), text);
        end_ -= 8.0f * scale_;
    }
    /// The colours of the scale from 1/2 to 2, logarithmic.
    void scale(float width) {
        for (int i = 0; i < static_cast<int>(width); ++i) {
            const float ratio = std::pow(2.0f, 2.0f * static_cast<float>(i) / width - 1.0f);
            const float x = end_ - width + static_cast<float>(i);
            list_->AddRectFilled({x, middle_ - 4.0f * scale_}, {x + 1.0f, middle_ + 4.0f * scale_},
                                 stretch_colour(ratio));
        }
        end_ -= width + 8.0f * scale_;
    }
    void dash(ImU32 tone, float width) {
        list_->AddLine({end_ - width, middle_}, {end_, middle_}, tone, 3.0f * scale_);
        end_ -= width + 8.0f * scale_;
    }

private:
    ImDrawList* list_ = ImGui::GetWindowDrawList();
    ImFont* font_;
    float scale_, end_, middle_;
};

} // namespace

void draw_legend(const State& state, float right, float middle, float width, bool has_seams) {
    if (state.map.charts().empty())
        return;
    Line line(state, right - 8.0f * state.scale, middle);
    const float bar = std::min(140.0f * state.scale, 0.3f * width);
    const auto number = [](double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%.3g", value);
        return std::string(text);
    };
    if (state.display == Display::stretch) {
        line.words("2");
        line.scale(bar);
        line.words("½");
        line.words("stretch");
    } else if (state.display == Display::density) {
        line.words((number(2.0 * state.map.density()) + " texels per unit").c_str());
        line.scale(bar);
        line.words(number(0.5 * state.map.density()).c_str());
    } else if (has_seams && (state.shows_overlay() || state.draws_seams())) {
        const float dash = 18.0f * state.scale;
        const bool has_overlay = state.subject.node && state.is_overlay_on;
        if (has_overlay) {
            line.words("new seam");
            line.dash(IM_COL32(0, 0, 255, 255), dash);
        }
        line.words(has_overlay ? "kept seam" : "seam");
        line.dash(IM_COL32(0, 255, 0, 255), dash);
    }
}

} // namespace window
