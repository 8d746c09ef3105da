/// Model of the application's progress window: MProgressWindow changes it, a listener shows it.
/// Without a listener MProgressWindow::reserve fails.
#pragma once

#include <maya/MString.h>
#include <maya/MTypes.h>

namespace host {

struct ProgressState {
    MString title;
    MString status;
    int minimum = 0;
    int maximum = 100;
    int value = 0; ///< between minimum and maximum
    bool is_shown = false;
    bool is_interruptable = false;
};

/// Shows the progress window. Called on the main thread, within the call that changed the state;
/// must not change the state itself.
class ProgressListener {
public:
    virtual void changed(const ProgressState& state) = 0;
    /// Whether the user asked to cancel; called only while the window is interruptable.
    virtual bool is_cancelled() = 0;

protected:
    ~ProgressListener() = default;
};

/// Sets the listener; NULL for none. Closes an open window first. The listener is not owned and
/// must outlive its registration.
MHOST_EXPORT void set_progress_listener(ProgressListener* listener);

} // namespace host
