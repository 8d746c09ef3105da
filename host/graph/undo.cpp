#include "host/graph/undo.h"

#include <algorithm>

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
    entry.number = next_number_++;
    done_.push_back(std::move(entry));
    drop_oldest();
}

/// Keeps at most limit_ entries. The state before the oldest dropped one is out of reach.
void UndoQueue::drop_oldest() {
    if (limit_ == 0 || done_.size() <= limit_)
        return;
    const auto kept = done_.end() - static_cast<std::ptrdiff_t>(limit_);
    if (saved_ && *saved_ < std::prev(kept)->number)
        saved_.reset();
    done_.erase(done_.begin(), kept);
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
    note_step(entry);
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
    note_step(done_.back());
    return status;
}

bool UndoQueue::Entry::changes_scene() const {
    return std::any_of(edits.begin(), edits.end(),
                       [](const EditPtr& edit) { return edit->changes_scene(); });
}

size_t UndoQueue::last_number() const {
    const auto last = std::find_if(done_.rbegin(), done_.rend(),
                                   [](const Entry& entry) { return entry.changes_scene(); });
    return last == done_.rend() ? 0 : last->number;
}

void UndoQueue::note_step(const Entry& entry) const {
    bool& is_modified = Scene::current().is_modified;
    is_modified = saved_ != last_number() && (is_modified || entry.changes_scene());
}

void UndoQueue::mark_saved() {
    saved_ = last_number();
    for (const Entry& frame : frames_)
        if (!frame.edits.empty())
            saved_.reset(); // the state lies inside of an entry, and undo passes it by
    Scene::current().is_modified = false;
}

void UndoQueue::join_after(size_t count) {
    if (done_.size() < count + 2)
        return;
    const auto first = done_.begin() + static_cast<std::ptrdiff_t>(count);
    for (auto next = first + 1; next != done_.end(); ++next) {
        // The saved state lies inside of the step, and undo passes it by; but not if the rest
        // changed nothing.
        if (saved_ && *saved_ == first->number && first->changes_scene() && next->changes_scene())
            saved_.reset();
        if (next != first + 5)
            first->name += next < first + 5 ? ", " + next->name : "";
        else
            first->name += ", …";
        if (next->changes_scene())
            first->number = next->number;
        std::move(next->edits.begin(), next->edits.end(), std::back_inserter(first->edits));
    }
    done_.erase(first + 1, done_.end());
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
    drop_oldest();
}

void UndoQueue::clear() {
    // Where the queue begins from now on is the saved state only if nothing was changed since.
    saved_.reset();
    if (!Scene::current().is_modified)
        saved_ = 0;
    undone_.clear();
    done_.clear();
}

} // namespace host::graph
