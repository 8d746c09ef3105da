/// The text panels: unwrap results, attributes of the unwrap node, script console.
#pragma once

#include "window/state.h"

#include <map>
#include <string>

namespace window {

/// Draws the table of results: charts, coverage, stretch.
void draw_results(State& state);

/// Attributes of the unwrap node as editable fields; each edit runs a setAttr.
class AttributePanel {
public:
    void draw(State& state);
    /// Moves the keyboard focus to the attributes in the next frame.
    void focus() { wants_focus_ = true; }

private:
    bool wants_focus_ = false;
    void draw_head(State& state) const;
    void draw_row(State& state, const ShownAttribute& row);
    void draw_value(State& state, const ShownAttribute& row);
    std::string draw_field(const ShownAttribute& row);
    std::map<std::string, float> reals_; ///< values being edited, by plug name
    std::map<std::string, int> integers_;
    std::map<std::string, std::string> texts_;
};

/// The console's log and its input field: Enter runs, Tab completes, up and down recall.
class ConsolePanel {
public:
    void draw(State& state);
    /// Moves the keyboard focus to the input field in the next frame.
    void focus() { wants_focus_ = true; }

private:
    void draw_lines(const Console& console);
    void draw_field(State& state);
    friend struct FieldCallback;

    std::string text_;
    size_t revision_ = 0;
    bool wants_focus_ = false;
    std::string hint_; ///< candidates listed after the last Tab
};

} // namespace window
