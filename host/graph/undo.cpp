#include "host/graph/undo.h"

namespace host::graph {

UndoQueue& UndoQueue::current() {
    static UndoQueue* const queue = new UndoQueue;
    return *queue;
}

void UndoQueue::open(const std::string& name, bool recording) {
    frames_.push_back({name, {}, recording});
}

std::vector<EditPtr> UndoQueue::take() {
    std::vector<EditPtr> edits = std::move(frames_.back().edits);
    frames_.pop_back();
    return edits;
}

void UndoQueue::close() {
    Entry frame = std::move(frames_.back());
    frames_.pop_back();
    if (frame.edits.empty())
        return;
    if (frames_.empty()) {
        keep(std::move(frame));
        return;
    }
    if (!is_recording())
        return;
    for (EditPtr& edit : frame.edits)
        frames_.back().edits.push_back(std::move(edit));
}

bool UndoQueue::is_recording() const {
    if (!enabled_ || frames_.empty() || undoing_ || redoing_)
        return false;
    for (const Entry& frame : frames_)
        if (!frame.recording)
            return false;
    return true;
}

void UndoQueue::record(EditPtr edit) {
    if (is_recording())
        frames_.back().edits.push_back(std::move(edit));
}

void UndoQueue::keep(Entry entry) {
    undone_.clear();
    done_.push_back(std::move(entry));
    if (limit_ > 0 && done_.size() > limit_)
        done_.erase(done_.begin(), done_.end() - static_cast<std::ptrdiff_t>(limit_));
}

MStatus UndoQueue::undo() {
    if (done_.empty() || undoing_ || redoing_)
        return MS::kFailure;
    Entry entry = std::move(done_.back());
    done_.pop_back();
    undoing_ = true;
    MStatus status;
    for (auto edit = entry.edits.rbegin(); edit != entry.edits.rend(); ++edit) {
        const MStatus one = (*edit)->undo();
        if (!one && status)
            status = one;
    }
    undoing_ = false;
    undone_.push_back(std::move(entry));
    return status;
}

MStatus UndoQueue::redo() {
    if (undone_.empty() || undoing_ || redoing_)
        return MS::kFailure;
    Entry entry = std::move(undone_.back());
    undone_.pop_back();
    redoing_ = true;
    MStatus status;
    for (EditPtr& edit : entry.edits) {
        const MStatus one = edit->redo();
        if (!one && status)
            status = one;
    }
    redoing_ = false;
    done_.push_back(std::move(entry));
    return status;
}

std::string UndoQueue::undo_name() const { return done_.empty() ? "" : done_.back().name; }
std::string UndoQueue::redo_name() const { return undone_.empty() ? "" : undone_.back().name; }

std::vector<std::string> UndoQueue::names() const {
    std::vector<std::string> names;
    for (const Entry& entry : done_)
        names.push_back(entry.name);
    return names;
}

void UndoQueue::set_enabled(bool enabled) {
    enabled_ = enabled;
    if (!enabled)
        clear();
}

void UndoQueue::set_limit(size_t limit) {
    limit_ = limit;
    if (limit_ > 0 && done_.size() > limit_)
        done_.erase(done_.begin(), done_.end() - static_cast<std::ptrdiff_t>(limit_));
}

void UndoQueue::clear() {
    undone_.clear();
    done_.clear();
}

} // namespace host::graph
