#include "window/places.h"

#include "host/io/write_file.h"

#include <cstdio>
#include <imgui.h>

namespace window {

void Places::add(const std::string& name, float left, float top, float width, float height) {
    if (file_.empty())
        return;
    char numbers[96];
    std::snprintf(numbers, sizeof numbers, "\t%.0f\t%.0f\t%.0f\t%.0f\n", double(left), double(top),
                  double(width), double(height));
    now_ += name + numbers;
}

void Places::add_item(const std::string& name) {
    const ImVec2 low = ImGui::GetItemRectMin(), high = ImGui::GetItemRectMax();
    add(name, low.x, low.y, high.x - low.x, high.y - low.y);
    if (ImGui::IsItemActive())
        add(name + "/active", low.x, low.y, high.x - low.x, high.y - low.y);
    if (ImGui::IsItemFocused())
        add(name + "/focused", low.x, low.y, high.x - low.x, high.y - low.y);
}

void Places::end_frame() {
    if (now_ != written_)
        write();
}

void Places::mark_settled() {
    add("settled", 0.0f, 0.0f, 0.0f, 0.0f);
    if (now_ != written_)
        write();
}

void Places::write() {
    if (file_.empty())
        return;
    written_ = now_;
    std::string ignored;
    host::write_file(file_, now_, host::Durability::process, ignored);
}

} // namespace window
