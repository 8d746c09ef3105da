/// The part of the host's interface that the plug-in uses, declared as in the public reference
/// pages, without definitions. A plug-in source that relies on something only the embedded host's
/// headers have does not compile against these.
///
/// DEVKIT_ERA 2008: global names, six-digit version. Later: names in a versioned inline namespace,
/// without obsolete overloads, handles and ids of other types.
#pragma once

#include <cstddef>

#if DEVKIT_ERA == 2008
#define MAYA_API_VERSION 200800
#define DEVKIT_OPEN
#define DEVKIT_CLOSE
#define DEVKIT_OBSOLETE
typedef void* DevkitWindow;
#else
#define MAYA_API_VERSION 20230000
#define DEVKIT_OPEN inline namespace OpenMaya20230000 {
#define DEVKIT_CLOSE }
#define DEVKIT_OBSOLETE [[deprecated]]
#define PLUGIN_EXPORT __attribute__((visibility("default")))
typedef unsigned long DevkitWindow;
#endif

DEVKIT_OPEN

class MString;
class MStringArray;
class MDagPath;
class MPlugArray;
class MSelectionList;
class MIntArray;

class MStatus {
public:
    enum MStatusCode {
        kSuccess = 0,
        kFailure,
        kInsufficientMemory,
        kInvalidParameter,
        kLicenseFailure,
        kUnknownParameter,
        kNotImplemented,
        kNotFound,
        kEndOfFile
    };
    MStatus();
    MStatus(MStatusCode);
    MStatus(const MStatus&);
    MStatus& operator=(const MStatus&);
    MStatus& operator=(const MStatusCode);
    bool operator==(const MStatus&) const;
    bool operator==(const MStatusCode) const;
    bool operator!=(const MStatus&) const;
    bool operator!=(const MStatusCode) const;
    operator bool() const;
    bool error() const;
    MStatusCode statusCode() const;
    MString errorString() const;
    void perror(const char*) const;
};
typedef MStatus MS;

class MString {
public:
    MString();
    MString(const char*);
    MString(const MString&);
    ~MString();
    MString& operator=(const MString&);
    MString& operator=(const char*);
    MString& operator+=(const MString&);
    MString& operator+=(const char*);
    MString operator+(const MString&) const;
    MString operator+(const char*) const;
    bool operator==(const MString&) const;
    bool operator==(const char*) const;
    bool operator!=(const MString&) const;
    bool operator!=(const char*) const;
    const char* asChar() const;
    unsigned int length() const;
};

#define DEVKIT_ARRAY(NAME, TYPE)                                                                   \
    class NAME {                                                                                   \
    public:                                                                                        \
        NAME();                                                                                    \
        NAME(const NAME&);                                                                         \
        NAME(unsigned int initialSize, const TYPE& initialValue);                                  \
        explicit NAME(unsigned int initialSize);                                                   \
        ~NAME();                                                                                   \
        NAME& operator=(const NAME&);                                                              \
        const TYPE& operator[](unsigned int) const;                                                \
        TYPE& operator[](unsigned int);                                                            \
        MStatus set(const TYPE&, unsigned int);                                                    \
        MStatus setLength(unsigned int);                                                           \
        unsigned int length() const;                                                               \
        MStatus remove(unsigned int);                                                              \
        MStatus insert(const TYPE&, unsigned int);                                                 \
        MStatus append(const TYPE&);                                                               \
        MStatus clear();                                                                           \
        void setSizeIncrement(unsigned int);                                                       \
        unsigned int sizeIncrement() const;                                                        \
    }

#if DEVKIT_ERA == 2008
typedef void* MCallbackId;
#else
typedef long long MCallbackId;
#endif

class MMatrix {
public:
    MMatrix();
    double matrix[4][4];
    MMatrix inverse() const;
    MStatus get(double dest[4][4]) const;
    MStatus get(float dest[4][4]) const;
};

class MVector {
public:
    MVector();
    MVector(double, double, double = 0.0);
    MVector operator^(const MVector&) const;
    double operator*(const MVector&) const;
    MVector operator*(double) const;
    MVector operator-(const MVector&) const;
    MVector operator-() const;
    double length() const;
    MVector normal() const;
    MStatus normalize();
    double angle(const MVector&) const;
    double x, y, z;
};

class MPoint {
public:
    MPoint();
    MPoint(double, double, double = 0.0, double = 1.0);
    MVector operator-(const MPoint&) const;
    MPoint operator*(const MMatrix&) const;
    double x, y, z, w;
};

class MFloatVector {
public:
    MFloatVector();
    MFloatVector(float, float, float = 0.0f);
    float x, y, z;
};

DEVKIT_ARRAY(MIntArray, int);
DEVKIT_ARRAY(MFloatArray, float);
DEVKIT_ARRAY(MStringArray, MString);
DEVKIT_ARRAY(MPointArray, MPoint);
DEVKIT_ARRAY(MFloatVectorArray, MFloatVector);
DEVKIT_ARRAY(MCallbackIdArray, MCallbackId);

class MFn {
public:
    enum Type { kInvalid, kDependencyNode, kDagNode, kTransform, kMesh, kMeshData, kPolyTweak };
};

class MSpace {
public:
    enum Space { kInvalid = 0, kTransform, kObject, kPostTransform, kWorld };
};

class MTypeId {
public:
    MTypeId();
    MTypeId(unsigned int);
    MTypeId(const MTypeId&);
    MTypeId& operator=(const MTypeId&);
    bool operator==(const MTypeId&) const;
    unsigned int id() const;
};

class MObject {
public:
    MObject();
    MObject(const MObject&);
    ~MObject();
    MObject& operator=(const MObject&);
    bool operator==(const MObject&) const;
    bool operator!=(const MObject&) const;
    bool isNull() const;
    bool hasFn(MFn::Type) const;
    MFn::Type apiType() const;
    static MObject kNullObj;
};

class MObjectHandle {
public:
    MObjectHandle();
    MObjectHandle(const MObject&);
    bool isValid() const;
    bool isAlive() const;
    MObject object() const;
};

class MPlug {
public:
    MPlug();
    MPlug(const MPlug&);
    MPlug(const MObject& node, const MObject& attribute);
    ~MPlug();
    MPlug& operator=(const MPlug&);
    bool operator==(const MPlug&) const;
    bool operator==(const MObject&) const;
    bool operator!=(const MPlug&) const;
    bool operator!=(const MObject&) const;
    MObject node(MStatus* = NULL) const;
    MObject attribute(MStatus* = NULL) const;
    MString name(MStatus* = NULL) const;
    bool isNull(MStatus* = NULL) const;
    bool isConnected(MStatus* = NULL) const;
    bool connectedTo(MPlugArray&, bool asDst, bool asSrc, MStatus* = NULL) const;
    unsigned int numElements(MStatus* = NULL) const;
    MPlug elementByPhysicalIndex(unsigned int, MStatus* = NULL) const;
    MPlug elementByLogicalIndex(unsigned int, MStatus* = NULL) const;
    unsigned int logicalIndex(MStatus* = NULL) const;
    unsigned int numChildren(MStatus* = NULL) const;
    unsigned int numConnectedChildren(MStatus* = NULL) const;
    MPlug child(unsigned int, MStatus* = NULL) const;
    MStatus getValue(MObject&) const;
    MStatus getValue(double&) const;
    MStatus getValue(float&) const;
    MStatus getValue(int&) const;
    MStatus getValue(short&) const;
    MStatus getValue(bool&) const;
    MStatus getValue(MString&) const;
    MStatus setValue(MObject&);
    MStatus setValue(double);
    MStatus setValue(float);
    MStatus setValue(int);
    MStatus setValue(short);
    MStatus setValue(bool);
    MStatus setValue(const MString&);
    MStatus setValue(const char*);
};
DEVKIT_ARRAY(MPlugArray, MPlug);

#if DEVKIT_ERA != 2008
class MBoundingBox {
public:
    MBoundingBox();
    MBoundingBox(const MBoundingBox&);
    ~MBoundingBox();
    MBoundingBox& operator=(const MBoundingBox&);
};
#endif

class MDagPath {
public:
    MDagPath();
    MDagPath(const MDagPath&);
    ~MDagPath();
    MDagPath& operator=(const MDagPath&);
    static MStatus getAPathTo(const MObject&, MDagPath&);
    bool isValid(MStatus* = NULL) const;
    MFn::Type apiType(MStatus* = NULL) const;
    MObject node(MStatus* = NULL) const;
    MObject transform(MStatus* = NULL) const;
    MStatus extendToShape();
    MString fullPathName(MStatus* = NULL) const;
    MString partialPathName(MStatus* = NULL) const;
    MMatrix inclusiveMatrix(MStatus* = NULL) const;
};

class MFnBase {
public:
    virtual ~MFnBase();
    MObject object(MStatus* = NULL) const;
};

class MFnDependencyNode : public MFnBase {
public:
    MFnDependencyNode();
    MFnDependencyNode(MObject&, MStatus* = NULL);
    MFnDependencyNode(const MObject&, MStatus* = NULL);
    MObject attribute(const MString&, MStatus* = NULL) const;
#if DEVKIT_ERA == 2008
    MPlug findPlug(const MString&, MStatus* = NULL) const;
    MPlug findPlug(const MObject&, MStatus* = NULL) const;
#endif
    MPlug findPlug(const MString&, bool wantNetworkedPlug, MStatus* = NULL) const;
    MPlug findPlug(const MObject&, bool wantNetworkedPlug, MStatus* = NULL) const;
    MString name(MStatus* = NULL) const;
    MString typeName(MStatus* = NULL) const;
    MTypeId typeId(MStatus* = NULL) const;
    class MPxNode* userNode(MStatus* = NULL) const;
};

class MFnDagNode : public MFnDependencyNode {
public:
    MFnDagNode();
    MFnDagNode(MObject&, MStatus* = NULL);
    MFnDagNode(const MObject&, MStatus* = NULL);
    MFnDagNode(const MDagPath&, MStatus* = NULL);
    MObject duplicate(bool instance = false, bool instanceLeaf = false, MStatus* = NULL) const;
    MObject child(unsigned int, MStatus* = NULL) const;
    unsigned int childCount(MStatus* = NULL) const;
    MObject parent(unsigned int, MStatus* = NULL) const;
    MStatus getPath(MDagPath&);
    MString fullPathName(MStatus* = NULL) const;
    MString partialPathName(MStatus* = NULL) const;
#if DEVKIT_ERA != 2008
    MBoundingBox boundingBox(MStatus* = NULL) const;
#endif
    MStatus setIntermediateObject(bool);
    bool isIntermediateObject(MStatus* = NULL) const;
};

class MFnMesh : public MFnDagNode {
public:
    MFnMesh();
    MFnMesh(MObject&, MStatus* = NULL);
    MFnMesh(const MObject&, MStatus* = NULL);
    MFnMesh(const MDagPath&, MStatus* = NULL);
    MStatus getPoints(MPointArray&, MSpace::Space = MSpace::kObject) const;
    int numVertices(MStatus* = NULL) const;
    int numEdges(MStatus* = NULL) const;
    int numPolygons(MStatus* = NULL) const;
    MStatus getUVSetNames(MStringArray&) const;
    MString currentUVSetName(MStatus* = NULL, int instance = -1) const;
    MStatus createUVSetDataMesh(MString&);
    MStatus clearUVs(const MString* = NULL);
    MStatus setUVs(const MFloatArray&, const MFloatArray&, const MString* = NULL);
    MStatus assignUV(int polygon, int vertex, int uv, const MString* = NULL);
};

class MItMeshPolygon {
public:
    MItMeshPolygon(const MObject&, MStatus* = NULL);
    MItMeshPolygon(const MDagPath&, MObject& = MObject::kNullObj, MStatus* = NULL);
    ~MItMeshPolygon();
    MStatus reset();
    MStatus next();
    bool isDone(MStatus* = NULL);
#if DEVKIT_ERA == 2008
    int count(MStatus* = NULL);
    int index(MStatus* = NULL);
#else
    unsigned int count(MStatus* = NULL);
    unsigned int index(MStatus* = NULL);
#endif
    MStatus getVertices(MIntArray&);
    MStatus numTriangles(int&) const;
    MStatus getTriangle(int, MPointArray&, MIntArray&, MSpace::Space = MSpace::kObject) const;
    MStatus getNormal(MVector&, MSpace::Space = MSpace::kObject) const;
    unsigned int polygonVertexCount(MStatus* = NULL);
};

class MItMeshEdge {
public:
    MItMeshEdge(MObject&, MStatus* = NULL);
    MItMeshEdge(MObject&, MObject&, MStatus* = NULL);
    MItMeshEdge(const MDagPath&, MObject& = MObject::kNullObj, MStatus* = NULL);
    ~MItMeshEdge();
    MStatus reset();
    MStatus next();
    bool isDone(MStatus* = NULL);
    int count(MStatus* = NULL);
    int index(MStatus* = NULL);
    int index(int, MStatus* = NULL);
    int getConnectedFaces(MIntArray&, MStatus* = NULL);
};

class MItMeshVertex {
public:
    MItMeshVertex(MObject&, MStatus* = NULL);
    MItMeshVertex(MObject&, MObject&, MStatus* = NULL);
    MItMeshVertex(const MDagPath&, MObject& = MObject::kNullObj, MStatus* = NULL);
    ~MItMeshVertex();
    MStatus reset();
    MStatus next();
    bool isDone(MStatus* = NULL);
    int count(MStatus* = NULL);
    int index(MStatus* = NULL);
    MStatus getUVs(MFloatArray&, MFloatArray&, MIntArray&, const MString* = NULL);
    MStatus getUVIndices(MIntArray&, const MString* = NULL);
};

class MSelectionList {
public:
    MSelectionList();
    MSelectionList(const MSelectionList&);
    ~MSelectionList();
    MStatus add(const MString&);
    MStatus getDagPath(unsigned int, MDagPath&, MObject& = MObject::kNullObj) const;
    unsigned int length(MStatus* = NULL) const;
};

class MItSelectionList {
public:
    MItSelectionList(const MSelectionList&, MFn::Type = MFn::kInvalid, MStatus* = NULL);
    ~MItSelectionList();
    bool isDone(MStatus* = NULL);
    MStatus next();
    MStatus reset();
    MStatus setFilter(MFn::Type);
    MStatus getDagPath(MDagPath&);
    MStatus getDagPath(MDagPath&, MObject&);
};

class MDGModifier {
public:
    MDGModifier();
    virtual ~MDGModifier();
    MObject createNode(const MTypeId&, MStatus* = NULL);
    MObject createNode(const MString&, MStatus* = NULL);
    MStatus deleteNode(const MObject&);
    MStatus connect(const MPlug&, const MPlug&);
    MStatus connect(const MObject&, const MObject&, const MObject&, const MObject&);
    MStatus disconnect(const MPlug&, const MPlug&);
    MStatus disconnect(const MObject&, const MObject&, const MObject&, const MObject&);
    virtual MStatus doIt();
    virtual MStatus undoIt();
};

class MDagModifier : public MDGModifier {
public:
    MDagModifier();
    ~MDagModifier() override;
    MStatus reparentNode(const MObject&, const MObject& = MObject::kNullObj);
#if DEVKIT_ERA != 2008
    MStatus deleteNode(const MObject&, bool includeParents = true);
#endif
};

class MGlobal {
public:
    enum MMayaState { kInteractive = 0, kBatch, kLibraryApp, kBaseUIMode };
    static MMayaState mayaState(MStatus* ReturnStatus = NULL);
    static MStatus executeCommand(const MString&, bool displayEnabled = false,
                                  bool undoEnabled = false);
    static MStatus executeCommand(const MString&, int&, bool = false, bool = false);
    static MStatus executeCommand(const MString&, double&, bool = false, bool = false);
    static MStatus executeCommand(const MString&, MString&, bool = false, bool = false);
    static MStatus executeCommand(const MString&, MIntArray&, bool = false, bool = false);
    static MStatus executeCommand(const MString&, MStringArray&, bool = false, bool = false);
#if DEVKIT_ERA == 2008
    static MStatus getActiveSelectionList(MSelectionList&);
#else
    static MStatus getActiveSelectionList(MSelectionList&,
                                          bool orderedSelectionIfAvailable = false);
#endif
    static void displayInfo(const MString&);
    static void displayWarning(const MString&);
    static void displayError(const MString&);
    static MStatus deleteNode(MObject&);
};

class MFnData : public MFnBase {
public:
    enum Type { kInvalid = 0, kNumeric, kString, kMesh };
};

class MFnNumericData : public MFnData {
public:
    enum Type { kInvalid = 0, kBoolean, kShort, kLong, kInt = kLong, kFloat, k3Float, kDouble };
    MFnNumericData();
    MFnNumericData(MObject&, MStatus* = NULL);
    MFnNumericData(const MObject&, MStatus* = NULL);
    MObject create(MFnNumericData::Type, MStatus* = NULL);
    MStatus getData(float&, float&, float&);
    MStatus setData(float, float, float);
};

class MFnAttribute : public MFnBase {
public:
    MStatus setReadable(bool);
    MStatus setWritable(bool);
    MStatus setStorable(bool);
    MStatus setKeyable(bool);
    MStatus setHidden(bool);
    MStatus setConnectable(bool);
};

class MFnNumericAttribute : public MFnAttribute {
public:
    MFnNumericAttribute();
    MObject create(const MString& fullName, const MString& briefName, MFnNumericData::Type,
                   double defaultValue = 0, MStatus* = NULL);
};

class MFnTypedAttribute : public MFnAttribute {
public:
    MFnTypedAttribute();
    MObject create(const MString& fullName, const MString& briefName, MFnData::Type,
                   MObject defaultData = MObject::kNullObj, MStatus* = NULL);
    MObject create(const MString& fullName, const MString& briefName, const MTypeId&,
                   MObject defaultData = MObject::kNullObj, MStatus* = NULL);
};

class MDataHandle {
public:
    MDataHandle();
    MDataHandle(const MDataHandle&);
    ~MDataHandle();
    MDataHandle& operator=(const MDataHandle&);
    bool& asBool() const;
    short& asShort() const;
    int& asInt() const;
    float& asFloat() const;
    double& asDouble() const;
    MString& asString() const;
    MObject asMesh() const;
    MObject data();
    void setClean();
    void set(bool);
    void set(short);
    void set(int);
    void set(float);
    void set(double);
    void set(const MString&);
    MStatus set(const MObject&);
    void setInt(int);
    void setFloat(float);
};

class MDataBlock {
public:
    MDataHandle inputValue(const MPlug&, MStatus* = NULL);
    MDataHandle inputValue(const MObject&, MStatus* = NULL);
    MDataHandle outputValue(const MPlug&, MStatus* = NULL);
    MDataHandle outputValue(const MObject&, MStatus* = NULL);
    MStatus setClean(const MPlug&);
    MStatus setClean(const MObject&);
};

class MPxNode {
public:
    enum Type { kDependNode, kLocatorNode };
#if DEVKIT_ERA != 2008
    enum SchedulingType { kParallel, kSerial, kGloballySerial, kUntrusted };
    virtual SchedulingType schedulingType() const;
#endif
    MPxNode();
    virtual ~MPxNode();
    virtual void postConstructor();
    virtual MStatus compute(const MPlug&, MDataBlock&);
    MObject thisMObject() const;
    MString name() const;
    static MStatus addAttribute(const MObject&);
    static MStatus attributeAffects(const MObject&, const MObject&);
    static MObject state;
};

#if DEVKIT_ERA != 2008
class MPxLocatorNode : public MPxNode {
public:
    MPxLocatorNode();
    ~MPxLocatorNode() override;
};

class MColor {
public:
    MColor(float r, float g, float b, float a = 1.0f);
    float r, g, b, a;
};

class MUserData {
public:
    MUserData();
    DEVKIT_OBSOLETE explicit MUserData(bool deleteAfterUse);
    virtual ~MUserData();
};

namespace MHWRender {

enum DrawAPI { kNone = 0, kOpenGL = 1, kDirectX11 = 2, kOpenGLCoreProfile = 4, kAllDevices = 7 };

class MFrameContext;
class MDrawContext;

class MRenderItem {
public:
    static unsigned int sActiveLineDepthPriority;
};

class MUIDrawManager {
public:
    enum Selectability { kNonSelectable, kSelectable, kAutomatic };
    void beginDrawable(Selectability = kAutomatic, unsigned int selectionName = 0);
    void endDrawable();
    void setDepthPriority(unsigned int);
    void setLineWidth(float);
    void setColor(const MColor&);
    void lineList(const MPointArray&, bool draw2D);
};

class MPxDrawOverride {
public:
    typedef void (*GeometryDraw)(const MDrawContext&, const MUserData*);
    MPxDrawOverride(const MObject&, GeometryDraw, bool isAlwaysDirty = true);
    virtual ~MPxDrawOverride();
    virtual DrawAPI supportedDrawAPIs() const;
    virtual bool isBounded(const MDagPath& object, const MDagPath& camera) const;
    virtual MBoundingBox boundingBox(const MDagPath& object, const MDagPath& camera) const;
    virtual MUserData* prepareForDraw(const MDagPath& object, const MDagPath& camera,
                                      const MFrameContext&, MUserData* oldData) = 0;
    virtual bool hasUIDrawables() const;
    virtual void addUIDrawables(const MDagPath&, MUIDrawManager&, const MFrameContext&,
                                const MUserData*);
};

class MDrawRegistry {
public:
    typedef MPxDrawOverride* (*DrawOverrideCreator)(const MObject&);
    static MStatus registerDrawOverrideCreator(const MString& drawClassification,
                                               const MString& registrantId, DrawOverrideCreator);
    static MStatus deregisterDrawOverrideCreator(const MString& drawClassification,
                                                 const MString& registrantId);
};

} // namespace MHWRender
#endif

class MSyntax {
public:
    enum MArgType { kInvalidArgType, kNoArg, kBoolean, kLong, kDouble, kString };
    MSyntax();
    MSyntax(const MSyntax&);
    ~MSyntax();
    MStatus addFlag(const char* shortName, const char* longName, MArgType = kNoArg,
                    MArgType = kNoArg, MArgType = kNoArg, MArgType = kNoArg, MArgType = kNoArg,
                    MArgType = kNoArg);
};

class MArgList {
public:
    MArgList();
    unsigned int length(MStatus* = NULL) const;
};

class MArgParser {
public:
    virtual ~MArgParser();
    bool isFlagSet(const char*, MStatus* = NULL) const;
    MStatus getFlagArgument(const char*, unsigned int, bool&) const;
    MStatus getFlagArgument(const char*, unsigned int, int&) const;
    MStatus getFlagArgument(const char*, unsigned int, double&) const;
    MStatus getFlagArgument(const char*, unsigned int, MString&) const;
};

class MArgDatabase : public MArgParser {
public:
    MArgDatabase();
    MArgDatabase(const MSyntax&, const MArgList&, MStatus* = NULL);
    ~MArgDatabase() override;
};

class MPxCommand {
public:
    MPxCommand();
    virtual ~MPxCommand();
    virtual MStatus doIt(const MArgList&);
    virtual MStatus undoIt();
    virtual MStatus redoIt();
    virtual bool isUndoable() const;
    virtual bool hasSyntax() const;
    MSyntax syntax() const;
#if DEVKIT_ERA == 2008
    static void displayInfo(const MString&);
    static void displayWarning(const MString&);
    static void displayError(const MString&);
#else
    static void displayInfo(const MString&);
    static void displayWarning(const MString&, bool showLineNumber = false);
    static void displayError(const MString&, bool showLineNumber = false);
#endif
    static void clearResult();
    static void setResult(int);
    static void setResult(bool);
    static void setResult(double);
    static void setResult(const char*);
    static void setResult(const MString&);
    static void appendToResult(int);
    static void appendToResult(bool);
    static void appendToResult(double);
    static void appendToResult(const char*);
    static void appendToResult(const MString&);
};

class MMessage {
public:
    typedef void (*MNodeFunction)(MObject& node, void* clientData);
    typedef void (*MStringFunction)(const MString&, void* clientData);
    static MStatus removeCallback(MCallbackId);
    static MStatus removeCallbacks(MCallbackIdArray&);
};

class MNodeMessage : public MMessage {
public:
    static MCallbackId addNodePreRemovalCallback(MObject&, MMessage::MNodeFunction, void* = NULL,
                                                 MStatus* = NULL);
};

class MUiMessage : public MMessage {
public:
    static MCallbackId add3dViewPostRenderMsgCallback(const MString&, MMessage::MStringFunction,
                                                      void* = NULL, MStatus* = NULL);
};

class M3dView {
public:
    M3dView();
    M3dView(const M3dView&);
    ~M3dView();
    static M3dView active3dView(MStatus* = NULL);
    static DevkitWindow applicationShell(MStatus* = NULL);
    static MStatus getM3dViewFromModelPanel(const MString&, M3dView&);
    MStatus getCamera(MDagPath&);
#if DEVKIT_ERA != 2008
    enum RendererName {
        kDefaultQualityRenderer,
        kHighQualityRenderer,
        kExternalRenderer,
        kViewport2Renderer
    };
    RendererName getRendererName(MStatus* = NULL) const;
#endif
    DEVKIT_OBSOLETE MStatus beginGL();
    DEVKIT_OBSOLETE MStatus endGL();
};

class MProgressWindow {
public:
    static bool reserve();
    static MStatus startProgress();
    static MStatus endProgress();
    static MStatus setProgressRange(int, int);
    static MStatus setProgress(int);
    static MStatus setTitle(const MString&);
    static MStatus setProgressStatus(const MString&);
};

typedef void* (*MCreatorFunction)();
typedef MSyntax (*MCreateSyntaxFunction)();
typedef MStatus (*MInitializeFunction)();

class MFnPlugin : public MFnBase {
public:
    MFnPlugin(MObject&, const char* vendor = "Unknown", const char* version = "Unknown",
              const char* requiredApiVersion = "Any", MStatus* = 0);
    ~MFnPlugin() override;
    MStatus registerCommand(const MString&, MCreatorFunction, MCreateSyntaxFunction = NULL);
    MStatus deregisterCommand(const MString&);
    MStatus registerNode(const MString&, const MTypeId&, MCreatorFunction, MInitializeFunction,
                         MPxNode::Type = MPxNode::kDependNode, const MString* = NULL);
    MStatus deregisterNode(const MTypeId&);
    MStatus registerUI(const MString&, const MString&, const MString& = "", const MString& = "");
    MStringArray addMenuItem(const MString&, const MString&, const MString&, const MString&,
                             bool needOptionBox = false, const MString* optBoxFunction = NULL,
                             MStatus* = NULL);
    MStatus removeMenuItem(MStringArray&);
    MString loadPath(MStatus* = NULL) const;
};

DEVKIT_CLOSE

#undef DEVKIT_ARRAY
#undef DEVKIT_OPEN
#undef DEVKIT_CLOSE
