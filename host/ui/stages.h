/// Stages of a long computation, finer than the progress window: a library that computes reports
/// them, a listener shows them and may cancel.
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

} // namespace host

/// Reports a stage. Exported under this name for libraries that do not link to the host and look it
/// up at run time. Returns non-zero if the computation should stop.
extern "C" MHOST_EXPORT int host_report_stage(const char* stage, float fraction);
