/// Implementation of MDGModifier and MDagModifier: the recorded edits and how many of them are
/// done.
#pragma once

#include "host/graph/edits.h"

namespace host::graph {

class Modifier {
public:
    void record(EditPtr edit) { edits_.push_back(std::move(edit)); }
    /// Applies the edits that are not done yet. Stops at the first failure; the next call retries
    /// that edit.
    MStatus redo();
    /// Reverts all done edits, in reverse order. A strict host fails if `redo` was not called
    /// before.
    MStatus undo();

private:
    std::vector<EditPtr> edits_;
    size_t done_ = 0;
    bool was_done_ = false; ///< `redo` was called since the last `undo`
};

} // namespace host::graph
