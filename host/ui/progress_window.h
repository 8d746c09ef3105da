/// The application's progress window as a model: the interface class MProgressWindow changes it,
/// the program shows it. Without a listener there is nobody to show it, and nobody can reserve it.
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

/// What the program does about the progress window. Called on the main thread, from inside the
/// call that changed something; must not change the window itself.
class ProgressListener {
public:
    virtual void changed(const ProgressState& state) = 0;
    /// Asked while the window is interruptable: whether the person wants to stop.
    virtual bool is_cancelled() = 0;

protected:
    ~ProgressListener() = default;
};

/// Sets who shows the window; NULL for nobody. An open window is closed first. The listener is not
/// owned and must stay until it is replaced.
MHOST_EXPORT void set_progress_listener(ProgressListener* listener);

/// The window as it is now.
MHOST_EXPORT const ProgressState& progress_state();

} // namespace host
