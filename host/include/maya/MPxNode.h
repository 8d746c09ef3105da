/// Base of plug-in nodes. The host creates instances by the creator registered with the type;
/// `thisMObject` is valid from `postConstructor` on.
#pragma once

#include <maya/MDataBlock.h>
#include <maya/MObject.h>
#include <maya/MPlug.h>
#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MTypeId.h>

class MPlugArray;

namespace host {
namespace graph {
class PluginNodes;
class Plugin;
} // namespace graph
} // namespace host

class MHOST_EXPORT MPxNode {
public:
    enum Type { kDependNode = 0, kLocatorNode, kDeformerNode, kLast };

    MPxNode();
    virtual ~MPxNode();

    virtual void postConstructor();
    /// Computes a plug. If it succeeds without marking the plug clean, the plug stays dirty and the
    /// next read computes it again. Return kUnknownParameter for plugs handled by the host.
    virtual MStatus compute(const MPlug& plug, MDataBlock& block);
    /// Adds plugs that become dirty when `plug` changes.
    virtual MStatus setDependentsDirty(const MPlug& plug, MPlugArray& affectedPlugs);
    virtual MStatus connectionMade(const MPlug& plug, const MPlug& otherPlug, bool asSrc);
    virtual MStatus connectionBroken(const MPlug& plug, const MPlug& otherPlug, bool asSrc);
    virtual MPxNode::Type type() const;
    virtual bool isAbstractClass() const;

    MObject thisMObject() const;
    MTypeId typeId() const;
    MString typeName() const;
    MString name() const;
    MDataBlock forceCache(MDGContext& context);
    MDataBlock forceCache();

    /// These static members may be called only while the type is being registered.
    static MStatus addAttribute(const MObject& attribute);
    static MStatus attributeAffects(const MObject& whenChanges, const MObject& isAffected);
    static MStatus inheritAttributesFrom(const MString& parentClassName);

    /// Attributes that every node has.
    static MObject message;
    static MObject caching;
    static MObject state;
    static MObject isHistoricallyInteresting;

private:
    MPxNode(const MPxNode&);
    MPxNode& operator=(const MPxNode&);
    friend class host::graph::PluginNodes;
    host::Object* node_; ///< not owned: the node owns this instance
};
