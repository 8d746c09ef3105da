/// What the sweep does to the plug-in: preparation, the act during which a call fails, and the
/// state of the scene that is compared afterwards.
#pragma once

#include "host/commands/session.h"
#include "host/ui/panels.h"

#include <string>
#include <vector>

namespace faults {

/// The host with the plug-in, driven by script statements. Output of scripts goes to `text`.
class World : private host::script::Output, private host::PanelRenderer {
public:
    World();
    bool run(const std::string& statements);
    /// Hash of the displayed mesh of a shape; 0 if it does not exist or cannot be evaluated.
    uint64_t mesh(const char* shape);
    size_t node_count() const;
    /// Number of entries that undo can take back.
    size_t undo_count() const;
    /// Makes the node "tessora_node1" unwrap at the next evaluation. Not undoable.
    void unwrap_again();
    /// Draws the overlays of all panels.
    void redraw();
    /// Evaluates the node's shape like a viewport. False if its compute fails.
    bool evaluate(const char* shape);

    MStatus evaluation; ///< of the last `evaluate`
    std::string text;   ///< everything printed by scripts, the plug-in's messages included

private:
    void print(const std::string& line) override { text += line; }
    void warning(const std::string& line) override { text += "warning: " + line + "\n"; }
    void error(const std::string& line) override { text += "error: " + line + "\n"; }
    MStatus camera(int panel, MDagPath& path) override;
    MStatus size(int panel, int& width, int& height) override;
    MStatus refresh(int, bool) override { return MS::kSuccess; }
    MStatus begin_gl(int) override { return MS::kSuccess; }
    MStatus end_gl(int) override { return MS::kSuccess; }
};

struct Scenario {
    const char* name;
    void (*prepare)(World& world);
    bool (*act)(World& world); ///< false: it failed
    /// Whether a failed act leaves the mesh unchanged. Otherwise it may be in another state, which
    /// a message announces: an evaluation that stopped, a redo that was done in part.
    bool is_all_or_nothing;
};

const std::vector<Scenario>& scenarios();

/// Makes a new scene, loads the plug-in again if needed and unwraps a mesh; returns the mesh, 0 on
/// failure.
uint64_t next_unwrap(World& world);

} // namespace faults
