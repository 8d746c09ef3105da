#include "host/graph/modifier.h"

#include "host/base/strictness.h"

namespace host::graph {

MStatus Modifier::redo() {
    was_done_ = true;
    for (; done_ < edits_.size(); ++done_) {
        const MStatus status = edits_[done_]->redo();
        if (!status)
            return status;
    }
    return MS::kSuccess;
}

MStatus Modifier::undo() {
    if (is_strict() && !was_done_)
        return MS::kFailure;
    was_done_ = false;
    MStatus status;
    for (; done_ > 0; --done_) {
        const MStatus one = edits_[done_ - 1]->undo();
        status = status ? one : status;
    }
    return status;
}

} // namespace host::graph
