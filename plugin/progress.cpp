#include "plugin/progress.h"

#include <maya/MProgressWindow.h>

bool progress_reserved = false;

void begin_progress() {
    progress_reserved = MProgressWindow::reserve();
    if (!progress_reserved)
        return;
    MProgressWindow::startProgress();
    MProgressWindow::setProgressRange(0, 100);
    MProgressWindow::setTitle("Unwrapping mesh.");
    MProgressWindow::setProgressStatus("Unwrapping mesh.");
}

void end_progress() {
    if (!progress_reserved)
        return;
    MProgressWindow::endProgress();
    progress_reserved = false;
}

void show_stage(const char* text) {
    if (!progress_reserved)
        return;
    MProgressWindow::setTitle(text);
    MProgressWindow::setProgressStatus(text);
}

void show_percent(int32_t percent) {
    if (progress_reserved)
        MProgressWindow::setProgress(percent);
}

int32_t set_progress(float fraction) {
    show_percent(static_cast<int32_t>(fraction * 100.0f));
    return 0;
}
