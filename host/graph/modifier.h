/// What a graph modifier of the interface holds: recorded edits and how far they were carried out.
#pragma once

#include "host/graph/edits.h"

namespace host::graph {

class Modifier {
public:
    void record(EditPtr edit) { edits_.push_back(std::move(edit)); }
    /// From the mark to the end; stops at the first edit that fails, which is tried again next
    /// time.
    MStatus redo();
    /// Everything that was done, in reverse order.
    MStatus undo();

private:
    std::vector<EditPtr> edits_;
    size_t done_ = 0;
};

} // namespace host::graph
