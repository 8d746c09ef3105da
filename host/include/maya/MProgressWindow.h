/// The one progress window of the application. Whoever reserves it owns it until `endProgress`;
/// without a reservation every call that changes something fails. Without a user interface there
/// is no window and `reserve` returns false. `setProgress` may let the application handle events.
#pragma once

#include <maya/MStatus.h>
#include <maya/MString.h>

class MHOST_EXPORT MProgressWindow {
public:
    /// False while somebody else holds the window, or when there is none.
    static bool reserve();
    static MStatus startProgress();
    /// Closes the window and gives up the reservation.
    static MStatus endProgress();

    static MStatus setProgressRange(int minValue, int maxValue);
    static MStatus setProgressMin(int minValue);
    static MStatus setProgressMax(int maxValue);
    /// Values are clamped to the range.
    static MStatus setProgress(int progress);
    static MStatus advanceProgress(int amount);
    static MStatus setTitle(const MString& title);
    static MStatus setProgressStatus(const MString& progressStatus);
    static MStatus setInterruptable(bool value);

    static int progressMin(MStatus* ReturnStatus = NULL);
    static int progressMax(MStatus* ReturnStatus = NULL);
    static int progress(MStatus* ReturnStatus = NULL);
    static MString title(MStatus* ReturnStatus = NULL);
    static MString progressStatus(MStatus* ReturnStatus = NULL);
    static bool isInterruptable(MStatus* ReturnStatus = NULL);
    static bool isCancelled(MStatus* ReturnStatus = NULL);
};
