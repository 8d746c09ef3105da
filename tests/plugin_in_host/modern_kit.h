/// What a kit of 2016 has and the embedded host has not: the plug-in is compiled with this header
/// ahead of its own includes, and loaded into the embedded host as ever. Locators and their
/// drawings are not handed to the host; they are recorded here, as is what a drawing draws.
#pragma once

#include <maya/M3dView.h>
#include <maya/MDagPath.h>
#include <maya/MFnMesh.h>
#include <maya/MPointArray.h>
#include <maya/MPxNode.h>
#include <maya/MTypes.h>
// The module's own source has the version and declares the entry points.
#define MNoVersionString
#define MNoPluginEntry
#include <maya/MFnPlugin.h>

#include <string>
#include <vector>

#undef MAYA_API_VERSION
#define MAYA_API_VERSION 201600

// === Shape of the kit ========================================================================

class MColor {
public:
    MColor(float red, float green, float blue, float alpha = 1.0f)
        : r(red), g(green), b(blue), a(alpha) {}
    float r, g, b, a;
};

class MBoundingBox {
public:
    void expand(const MPoint& point);
    MPoint min, max;
    bool is_empty = true;
};

class MUserData {
public:
    explicit MUserData(bool deleteAfterUse) : is_deleted_after_use(deleteAfterUse) {}
    virtual ~MUserData() = default;
    const bool is_deleted_after_use;
};

class ModernNode : public MPxNode {
public:
    enum SchedulingType { kParallel, kSerial, kGloballySerial, kUntrusted };
    virtual SchedulingType schedulingType() const { return kParallel; }
};

class MPxLocatorNode : public ModernNode {};

class ModernView : public M3dView {
public:
    enum RendererName {
        kDefaultQualityRenderer,
        kHighQualityRenderer,
        kExternalRenderer,
        kViewport2Renderer
    };
    RendererName getRendererName(MStatus* status) const;
};

class ModernDagNode : public MFnDagNode {
public:
    using MFnDagNode::MFnDagNode;
    MBoundingBox boundingBox() const;
};

class ModernPlugin : public MFnPlugin {
public:
    using MFnPlugin::MFnPlugin;
    MStatus registerNode(const MString& name, const MTypeId& id, MCreatorFunction creator,
                         MInitializeFunction initialize, MPxNode::Type type,
                         const MString* classification = nullptr);
    MStatus deregisterNode(const MTypeId& id);
};

namespace MHWRender {

enum DrawAPI { kNone = 0, kOpenGL = 1, kDirectX11 = 2, kAllDevices = 3 };

class MDrawContext {};
class MFrameContext {};

class MRenderItem {
public:
    static constexpr unsigned int sActiveLineDepthPriority = 7;
};

/// Records the calls in words, and the points of each list of lines.
class MUIDrawManager {
public:
    void beginDrawable();
    void endDrawable();
    void setDepthPriority(unsigned int priority);
    void setLineWidth(float width);
    void setColor(const MColor& color);
    void lineList(const MPointArray& points, bool draw2D);

    std::vector<std::string> calls;
    std::vector<MPointArray> lists;
};

class MPxDrawOverride {
public:
    typedef void (*GeometryDraw)(const MDrawContext&, const MUserData*);
    MPxDrawOverride(const MObject&, GeometryDraw draw_function) : draw(draw_function) {}
    virtual ~MPxDrawOverride() = default;
    virtual DrawAPI supportedDrawAPIs() const = 0;
    virtual bool isBounded(const MDagPath& object, const MDagPath& camera) const = 0;
    virtual MBoundingBox boundingBox(const MDagPath& object, const MDagPath& camera) const = 0;
    virtual MUserData* prepareForDraw(const MDagPath& object, const MDagPath& camera,
                                      const MFrameContext& frame, MUserData* old) = 0;
    virtual bool hasUIDrawables() const = 0;
    virtual void addUIDrawables(const MDagPath& object, MUIDrawManager& manager,
                                const MFrameContext& frame, const MUserData* data) = 0;
    const GeometryDraw draw;
};

class MDrawRegistry {
public:
    typedef MPxDrawOverride* (*DrawOverrideCreator)(const MObject&);
    static MStatus registerDrawOverrideCreator(const MString& classification,
                                               const MString& registrant,
                                               DrawOverrideCreator creator);
    static MStatus deregisterDrawOverrideCreator(const MString& classification,
                                                 const MString& registrant);
};

} // namespace MHWRender

#define MPxNode ModernNode
#define M3dView ModernView
#define MFnDagNode ModernDagNode
#define MFnPlugin ModernPlugin

// === What is recorded ========================================================================

namespace modern_kit {

struct Locator {
    std::string name, classification;
    unsigned int id;
    MCreatorFunction creator;
    MInitializeFunction initialize;
};

struct Drawing {
    std::string classification, registrant;
    MHWRender::MDrawRegistry::DrawOverrideCreator creator;
};

struct Record {
    std::vector<Locator> locators; ///< that are registered
    std::vector<Drawing> drawings;
    MStatus locator_status, drawing_status; ///< what the next registrations return
};

Record& record();

} // namespace modern_kit
