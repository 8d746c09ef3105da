#include "plugin/progress.h"

#include <maya/MProgressWindow.h>

#include <new>

bool progress_reserved = false;

namespace {

/// Changes the window if it is held. If memory for a text runs out the change is left out: the
/// window only informs, and the atlas call's callback must not throw.
template <class Change>
void change_window(Change change) {
    if (!progress_reserved)
        return;
    try {
        change();
    } catch (const std::bad_alloc&) {
        return;
    }
}

} // namespace

void begin_progress() {
    progress_reserved = MProgressWindow::reserve();
    change_window([] {
        MProgressWindow::startProgress();
        MProgressWindow::setProgressRange(0, 100);
        MProgressWindow::setTitle("Unwrapping mesh.");
        MProgressWindow::setProgressStatus("Unwrapping mesh.");
    });
}

void end_progress() {
    change_window([] { MProgressWindow::endProgress(); });
    progress_reserved = false;
}

void show_stage(const char* text) {
    change_window([text] {
        MProgressWindow::setTitle(text);
        MProgressWindow::setProgressStatus(text);
    });
}

void show_percent(int32_t percent) {
    change_window([percent] { MProgressWindow::setProgress(percent); });
}

int32_t set_progress(float fraction) {
    show_percent(static_cast<int32_t>(fraction * 100.0f));
    return 0;
}
