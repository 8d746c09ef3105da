#include "host/ui/progress_window.h"

#include "host/base/fault.h"

#include <maya/MProgressWindow.h>

#include <algorithm>

using host::pass_fault;
using host::report;

namespace {

struct Window {
    host::ProgressState state;
    host::ProgressListener* listener = nullptr;
    bool is_reserved = false;
};

Window& window() {
    static Window the_window;
    return the_window;
}

/// Checks common to all calls that change the window: fault point, then reservation.
MStatus begin(const char* point) {
    const MStatus fault = pass_fault(point);
    if (fault.error())
        return fault;
    return window().is_reserved ? MS::kSuccess : MS::kFailure;
}

void notify() {
    if (window().listener != nullptr)
        window().listener->changed(window().state);
}

int clamped(int value) {
    const host::ProgressState& state = window().state;
    return std::max(state.minimum, std::min(value, state.maximum));
}

void set_value(int value) {
    window().state.value = clamped(value);
    notify();
}

void close() {
    window().state.is_shown = false;
    notify();
    window().state = host::ProgressState();
    window().is_reserved = false;
}

} // namespace

namespace host {

void set_progress_listener(ProgressListener* listener) {
    if (window().is_reserved)
        close();
    window().listener = listener;
}

} // namespace host

bool MProgressWindow::reserve() {
    if (pass_fault("MProgressWindow::reserve").error() || window().is_reserved ||
        window().listener == nullptr)
        return false;
    window().is_reserved = true;
    return true;
}

MStatus MProgressWindow::startProgress() {
    const MStatus status = begin("MProgressWindow::startProgress");
    if (status) {
        window().state.is_shown = true;
        set_value(window().state.minimum);
    }
    return status;
}

MStatus MProgressWindow::endProgress() {
    const MStatus status = begin("MProgressWindow::endProgress");
    if (status)
        close();
    return status;
}

MStatus MProgressWindow::setProgressRange(int minValue, int maxValue) {
    const MStatus status = begin("MProgressWindow::setProgressRange");
    if (status.error())
        return status;
    if (minValue > maxValue)
        return MS::kInvalidParameter;
    window().state.minimum = minValue;
    window().state.maximum = maxValue;
    set_value(window().state.value);
    return status;
}

MStatus MProgressWindow::setProgressMin(int minValue) {
    const MStatus status = begin("MProgressWindow::setProgressMin");
    return status ? setProgressRange(minValue, window().state.maximum) : status;
}

MStatus MProgressWindow::setProgressMax(int maxValue) {
    const MStatus status = begin("MProgressWindow::setProgressMax");
    return status ? setProgressRange(window().state.minimum, maxValue) : status;
}

MStatus MProgressWindow::setProgress(int progress) {
    const MStatus status = begin("MProgressWindow::setProgress");
    // Plug-ins call this for every element; the listener only hears of changes.
    if (status && clamped(progress) != window().state.value)
        set_value(progress);
    return status;
}

MStatus MProgressWindow::advanceProgress(int amount) {
    const MStatus status = begin("MProgressWindow::advanceProgress");
    if (status.error())
        return status;
    const long long sum = static_cast<long long>(window().state.value) + amount;
    set_value(static_cast<int>(std::max<long long>(
        window().state.minimum, std::min<long long>(sum, window().state.maximum))));
    return status;
}

MStatus MProgressWindow::setTitle(const MString& title) {
    const MStatus status = begin("MProgressWindow::setTitle");
    if (status) {
        window().state.title = title;
        notify();
    }
    return status;
}

MStatus MProgressWindow::setProgressStatus(const MString& progressStatus) {
    const MStatus status = begin("MProgressWindow::setProgressStatus");
    if (status) {
        window().state.status = progressStatus;
        notify();
    }
    return status;
}

MStatus MProgressWindow::setInterruptable(bool value) {
    const MStatus status = begin("MProgressWindow::setInterruptable");
    if (status) {
        window().state.is_interruptable = value;
        notify();
    }
    return status;
}

int MProgressWindow::progressMin(MStatus* ReturnStatus) {
    report(ReturnStatus, pass_fault("MProgressWindow::progressMin"));
    return window().state.minimum;
}

int MProgressWindow::progressMax(MStatus* ReturnStatus) {
    report(ReturnStatus, pass_fault("MProgressWindow::progressMax"));
    return window().state.maximum;
}

int MProgressWindow::progress(MStatus* ReturnStatus) {
    report(ReturnStatus, pass_fault("MProgressWindow::progress"));
    return window().state.value;
}

MString MProgressWindow::title(MStatus* ReturnStatus) {
    report(ReturnStatus, pass_fault("MProgressWindow::title"));
    return window().state.title;
}

MString MProgressWindow::progressStatus(MStatus* ReturnStatus) {
    report(ReturnStatus, pass_fault("MProgressWindow::progressStatus"));
    return window().state.status;
}

bool MProgressWindow::isInterruptable(MStatus* ReturnStatus) {
    report(ReturnStatus, pass_fault("MProgressWindow::isInterruptable"));
    return window().state.is_interruptable;
}

bool MProgressWindow::isCancelled(MStatus* ReturnStatus) {
    const MStatus status = begin("MProgressWindow::isCancelled");
    return report(ReturnStatus, status) && window().state.is_interruptable &&
           window().listener->is_cancelled();
}
