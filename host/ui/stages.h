/// Stages of a long computation, finer than the progress window: a library that computes reports
/// them, a listener shows them and may cancel. And how much time it may take.
#pragma once

#include <maya/MTypes.h>

namespace host {

/// Hears of stages. Called on the thread that computes, often: implementations return quickly.
class StageListener {
public:
    /// `stage` is a name for display; `fraction` of it, 0..1, is done. Returns false to cancel.
    virtual bool reached(const char* stage, float fraction) = 0;

protected:
    ~StageListener() = default;
};

/// Sets the listener; NULL for none. Not owned.
MHOST_EXPORT void set_stage_listener(StageListener* listener);

/// Sets the effort of layouts to come, 0 to 10; 4 is usual.
MHOST_EXPORT void set_layout_effort(int effort);

} // namespace host

/// Reports a stage. Exported under this name for libraries that do not link to the host and look it
/// up at run time. Returns non-zero if the computation should stop.
extern "C" MHOST_EXPORT int host_report_stage(const char* stage, float fraction);

/// The effort set last. Exported like host_report_stage.
extern "C" MHOST_EXPORT int host_layout_effort();
