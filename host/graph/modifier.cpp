#include "host/graph/modifier.h"

namespace host::graph {

MStatus Modifier::redo() {
    for (; done_ < edits_.size(); ++done_) {
        const MStatus status = edits_[done_]->redo();
        if (!status)
            return status;
    }
    return MS::kSuccess;
}

MStatus Modifier::undo() {
    MStatus status;
    for (; done_ > 0; --done_) {
        const MStatus one = edits_[done_ - 1]->undo();
        status = status ? one : status;
    }
    return status;
}

} // namespace host::graph
