#include "window/node_settings.h"

#include "host/script/value.h"

#include <cstdio>
#include <type_traits>

namespace window {
namespace {

using app::UnwrapSettingsRequest;
using host::graph::Node;
using host::graph::Slot;

/// Calls visit(attribute, member) for every setting of the node.
template <class Visit>
void visit_settings(Visit visit) {
    visit("Charts", &UnwrapSettingsRequest::charts);
    visit("Stretch", &UnwrapSettingsRequest::stretch);
    visit("Padding", &UnwrapSettingsRequest::padding);
    visit("Texture_Width", &UnwrapSettingsRequest::width);
    visit("Texture_Height", &UnwrapSettingsRequest::height);
    visit("High_Quality", &UnwrapSettingsRequest::high_quality);
    visit("Keep_Borders", &UnwrapSettingsRequest::keep_seams);
    visit("Cut_Grooves", &UnwrapSettingsRequest::use_grooves);
    visit("Groove_Angle", &UnwrapSettingsRequest::groove_angle);
    visit("Cut_Ridges", &UnwrapSettingsRequest::use_ridges);
    visit("Ridge_Angle", &UnwrapSettingsRequest::ridge_angle);
    visit("Adjacency_Method", &UnwrapSettingsRequest::adjacency_method);
    visit("Epsilon", &UnwrapSettingsRequest::epsilon);
}

double number(Node& node, const char* attribute) {
    const Slot* slot = node.slot(attribute);
    return slot ? slot->value.number() : 0.0;
}

/// As a file of settings has it: attributes may be rounded to single precision.
std::string shown(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", value);
    return text;
}

} // namespace

UnwrapSettingsRequest settings_of(Node& node) {
    UnwrapSettingsRequest settings;
    visit_settings([&](const char* attribute, auto member) {
        using Value = std::decay_t<decltype(settings.*member)>;
        const double value = number(node, attribute);
        if constexpr (std::is_same_v<Value, bool>)
            settings.*member = value != 0.0;
        else
            settings.*member = static_cast<Value>(value);
    });
    return settings;
}

std::string statement_changing(const std::string& node, const UnwrapSettingsRequest& now,
                               const UnwrapSettingsRequest& wanted) {
    std::string changes;
    visit_settings([&](const char* attribute, auto member) {
        const std::string value = shown(static_cast<double>(wanted.*member));
        if (value != shown(static_cast<double>(now.*member)))
            changes +=
                "setAttr " + host::script::quoted(node + "." + attribute) + " " + value + "; ";
    });
    return changes.empty() ? changes : "{ " + changes + "}";
}

} // namespace window
