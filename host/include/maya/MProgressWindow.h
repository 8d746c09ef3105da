/// The application's only progress window. `reserve` gives the caller exclusive use until
/// `endProgress`; without a reservation all changes fail. In batch mode there is no window and
/// `reserve` returns false. `setProgress` may process user interface events.
#pragma once

#include <maya/MStatus.h>
#include <maya/MString.h>

class MHOST_EXPORT MProgressWindow {
public:
    /// Returns false if the window is already reserved or does not exist.
    static bool reserve();
    static MStatus startProgress();
    /// Closes the window and ends the reservation.
    static MStatus endProgress();

    static MStatus setProgressRange(int minValue, int maxValue);
    static MStatus setProgressMin(int minValue);
    static MStatus setProgressMax(int maxValue);
    /// The value is clamped to the progress range.
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
