/// The undo queue: what users take back and do again.
///
/// A frame collects the edits of one statement. Frames nest: an inner one hands its edits to the
/// outer one, and the outermost becomes one entry of the queue. Edits made while no frame is open
/// are not recorded: what a plug-in changes by itself is its own affair.
#pragma once

#include "host/graph/edits.h"

#include <string>
#include <vector>

namespace host::graph {

class MHOST_EXPORT UndoQueue {
public:
    static UndoQueue& current();

    /// Opens a frame. `recording` false: whatever happens until `close` is forgotten.
    void open(const std::string& name, bool recording = true);
    /// Closes the innermost frame; an empty one leaves no trace.
    void close();
    /// Closes the innermost frame and hands its edits out instead of keeping them.
    std::vector<EditPtr> take();
    /// Keeps an edit that was applied. Without an open frame, or when it does not record, the edit
    /// is dropped.
    void record(EditPtr edit);
    bool is_recording() const;
    bool has_frames() const { return !frames_.empty(); }

    /// kFailure when there is nothing to undo or when an edit failed; the entry moves all the same.
    MStatus undo();
    MStatus redo();
    bool is_undoing() const { return undoing_; }
    bool is_redoing() const { return redoing_; }

    /// Empty when there is nothing.
    std::string undo_name() const;
    std::string redo_name() const;
    size_t undo_count() const { return done_.size(); }
    size_t redo_count() const { return undone_.size(); }
    std::vector<std::string> names() const;

    /// Off: nothing is recorded and what was is forgotten.
    void set_enabled(bool enabled);
    bool enabled() const { return enabled_; }
    /// 0: without end. Older entries are dropped.
    void set_limit(size_t limit);
    size_t limit() const { return limit_; }
    void clear();

private:
    struct Entry {
        std::string name;
        std::vector<EditPtr> edits;
        bool recording = true;
    };
    void keep(Entry entry);
    std::vector<Entry> frames_;
    std::vector<Entry> done_;
    std::vector<Entry> undone_;
    bool enabled_ = true;
    bool undoing_ = false;
    bool redoing_ = false;
    size_t limit_ = 0;
};

/// A frame for the length of a scope.
class UndoFrame {
public:
    explicit UndoFrame(const std::string& name, bool recording = true) {
        UndoQueue::current().open(name, recording);
    }
    ~UndoFrame() { UndoQueue::current().close(); }
    UndoFrame(const UndoFrame&) = delete;
    UndoFrame& operator=(const UndoFrame&) = delete;
};

} // namespace host::graph
