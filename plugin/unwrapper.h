/// One unwrap: a polygon mesh of the host gets new texture coordinates in a named UV set.
///
/// The caller fills an UnwrapSettings, makes an Unwrapper for it, and brackets `unwrap` with
/// `begin_progress` and `end_progress`:
///
///     Unwrapper unwrapper(&settings);
///     begin_progress();
///     const MStatus status = unwrapper.unwrap(mesh, &existing_seams, &new_seams);
///     end_progress();
///
/// Three stages run in order: collect the mesh into flat lists, generate the atlas, apply it. A
/// second collection then finds the seams that the unwrap introduced. Every list belongs to one
/// call and is freed on every path. Main thread only.
#pragma once

#include "plugin/progress.h"
#include "plugin/unwrap_settings.h"

#include <maya/MIntArray.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>

class Unwrapper {
public:
    /// Does not own the settings. Sets `progress_reserved` to false.
    explicit Unwrapper(UnwrapSettings* settings);

    UnwrapSettings& settings() { return *settings_; }
    const UnwrapSettings& settings() const { return *settings_; }

    /// Clamps the settings, then unwraps. `mesh` is read and modified; mesh data, not a shape node,
    /// if the UV set has to be created. On success the settings' result fields are set.
    /// Shape:  both seam lists are flat pairs of mesh vertex ids; each may be null.
    ///         `existing_seams` gets the UV borders before the unwrap, an edge once per adjacent
    ///         triangle; it is empty if seams are not kept. `new_seams` gets the seams of the new
    ///         layout that are not in `existing_seams`, each edge once, sorted.
    /// Errors: the failing status of the host or of the stage; kFailure if no atlas could be made;
    ///         the stage has written the reason. kInsufficientMemory if the host ran out of memory.
    ///         The mesh is unchanged unless applying failed.
    MStatus unwrap(MObject mesh, MIntArray* existing_seams, MIntArray* new_seams);

private:
    MStatus run_stages(MObject& mesh, MIntArray* existing_seams, MIntArray* new_seams);

    UnwrapSettings* settings_;
};
