/// The panels beside the pictures: what came of the unwrap, the node's attributes, the console.
#pragma once

#include "window/state.h"

#include <map>
#include <string>

namespace window {

/// Charts, stretch, coverage and the rest as a table of names and values.
void draw_results(State& state);

/// Attributes of the node in the mesh's history; a change is a setAttr.
class AttributePanel {
public:
    void draw(State& state);
    /// Tab and the arrows go through the attributes from the next frame on.
    void focus() { wants_focus_ = true; }

private:
    bool wants_focus_ = false;
    void draw_head(State& state) const;
    void draw_row(State& state, const AttributeRow& row);
    void draw_value(State& state, const AttributeRow& row);
    std::string draw_field(const AttributeRow& row);
    std::map<std::string, float> reals_; ///< being edited, by plug
    std::map<std::string, int> integers_;
    std::map<std::string, std::string> texts_;
};

/// What was said, and a field for statements: Enter runs, Tab completes, up and down recall.
class ConsolePanel {
public:
    void draw(State& state);
    /// The field gets the keyboard at the next frame.
    void focus() { wants_focus_ = true; }

private:
    void draw_lines(const Console& console);
    void draw_field(State& state);
    friend struct FieldCallback;

    std::string text_;
    size_t revision_ = 0;
    bool wants_focus_ = false;
    std::string hint_; ///< completions of the last Tab
};

} // namespace window
