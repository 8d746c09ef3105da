/// The undo queue.
///
/// A frame collects the edits of one statement. Frames nest: an inner frame passes its edits to the
/// outer one, and the outermost becomes one entry of the queue. Edits made while no frame is open
/// are not recorded.
#pragma once

#include "host/graph/edits.h"

#include <optional>
#include <string>
#include <vector>

namespace host::graph {

class MHOST_EXPORT UndoQueue {
public:
    static UndoQueue& current();

    /// Opens a frame. If `recording` is false, edits are discarded until it is closed.
    void open(const std::string& name, bool recording = true);
    /// Closes the innermost frame. A frame without edits leaves no entry.
    void close();
    /// Closes the innermost frame and returns its edits instead of keeping them.
    std::vector<EditPtr> take();
    /// Keeps an edit that has been applied. It is discarded if no frame is open or the frame does
    /// not record.
    void record(EditPtr edit);
    bool is_recording() const;
    bool has_frames() const { return !frames_.empty(); }

    /// Errors: kFailure if there is nothing to undo; otherwise the status of the first edit that
    ///         failed. The entry moves to the redo list in either case.
    MStatus undo();
    MStatus redo();
    bool is_undoing() const { return undoing_; }
    bool is_redoing() const { return redoing_; }

    /// Name of the entry that undo or redo would act on; empty if there is none.
    std::string undo_name() const;
    std::string redo_name() const;
    /// The present state of the scene is the saved one: undo and redo that lead back to it make the
    /// scene unmodified, all others modified.
    void mark_saved();
    size_t undo_count() const { return done_.size(); }
    size_t redo_count() const { return undone_.size(); }
    std::vector<std::string> names() const;
    /// Makes the newest entries, all but the oldest `count`, one step, named after all of them.
    void join_after(size_t count);

    /// Disabling also clears the queue.
    void set_enabled(bool enabled);
    bool enabled() const { return enabled_; }
    /// Maximum number of entries, the oldest are dropped; 0: unlimited.
    void set_limit(size_t limit);
    size_t limit() const { return limit_; }
    void clear();

private:
    struct Entry {
        std::string name;
        std::vector<EditPtr> edits;
        bool recording = true;
        size_t number = 0; ///< from 1, never repeated
        bool changes_scene() const;
    };
    void note_step(const Entry& entry) const;
    /// Of the newest entry that changes the scene; 0 if none.
    size_t last_number() const;
    void keep(Entry entry);
    void drop_oldest();
    std::vector<Entry> frames_;
    std::vector<Entry> done_;
    std::vector<Entry> undone_;
    bool enabled_ = true;
    bool undoing_ = false;
    bool redoing_ = false;
    size_t limit_ = 0;
    size_t next_number_ = 1;
    std::optional<size_t> saved_ = 0; ///< last_number() at mark_saved; none if out of reach
};

/// Opens a frame for the duration of a scope.
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
