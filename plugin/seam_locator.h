/// `tessora_seams`: a locator that shows the seams of an unwrapped mesh in the modern viewport,
/// where the overlay of the panels cannot draw. The plug-in creates none: users who want to see the
/// seams there create one below the transform of the mesh. It shows what the overlay would show
/// (plugin/viewport.h), as long as the overlay is attached.
///
/// In the modern viewport a node does not draw by itself. Its type has a classification, by which
/// the host finds the draw override that was registered for it. Nothing of this has been run in the
/// application yet (docs/maya.md).
#pragma once

#include "plugin/kit.h"

#if KIT_HAS_MODERN_DRAWING

#include <maya/MPxDrawOverride.h>
#include <maya/MPxLocatorNode.h>
#include <maya/MString.h>
#include <maya/MTypeId.h>

class SeamLocator : public MPxLocatorNode {
public:
    static const char* const type_name;
    static const char* const classification; ///< names the drawing to the host
    static const char* const registrant;     ///< whose drawing it is
    static const MTypeId id;

    /// A new instance, owned by the host; null if memory runs out.
    static void* creator();
    /// Declares nothing: a locator finds its mesh by its place.
    static MStatus initialize();
};

/// Draws one locator: the host asks it for the data of each frame, which it then draws from.
class SeamDrawing : public MHWRender::MPxDrawOverride {
public:
    /// A drawing of the locator, owned by the host; null if memory runs out.
    static MHWRender::MPxDrawOverride* creator(const MObject& locator);

    MHWRender::DrawAPI supportedDrawAPIs() const override;
    bool isBounded(const MDagPath& locator, const MDagPath& camera) const override;
    /// The box around the mesh whose seams are drawn; empty if there is none.
    MBoundingBox boundingBox(const MDagPath& locator, const MDagPath& camera) const override;
    /// Reads the lines of the next frame; the graph may be evaluated here and not later.
    MUserData* prepareForDraw(const MDagPath& locator, const MDagPath& camera,
                              const MHWRender::MFrameContext& frame, MUserData* old) override;
    bool hasUIDrawables() const override;
    void addUIDrawables(const MDagPath& locator, MHWRender::MUIDrawManager& manager,
                        const MHWRender::MFrameContext& frame, const MUserData* data) override;

private:
    explicit SeamDrawing(const MObject& locator);
};

#endif
