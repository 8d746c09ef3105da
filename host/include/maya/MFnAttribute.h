/// Base of the function sets for attributes. Setters must be called before the attribute is added
/// to a node type.
#pragma once

#include <maya/MFnBase.h>
#include <maya/MString.h>

class MHOST_EXPORT MFnAttribute : public MFnBase {
public:
    MFnAttribute();
    MFnAttribute(MObject& object, MStatus* ReturnStatus = NULL);
    MFnAttribute(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnAttribute() override;

    MFn::Type type() const override;

    MString name(MStatus* ReturnStatus = NULL) const;
    MString shortName(MStatus* ReturnStatus = NULL) const;
    /// The compound that contains this attribute; null if there is none.
    MObject parent(MStatus* ReturnStatus = NULL) const;

    bool isReadable(MStatus* ReturnStatus = NULL) const;
    bool isWritable(MStatus* ReturnStatus = NULL) const;
    bool isConnectable(MStatus* ReturnStatus = NULL) const;
    bool isStorable(MStatus* ReturnStatus = NULL) const;
    bool isCached(MStatus* ReturnStatus = NULL) const;
    bool isArray(MStatus* ReturnStatus = NULL) const;
    bool isKeyable(MStatus* ReturnStatus = NULL) const;
    bool isHidden(MStatus* ReturnStatus = NULL) const;
    bool isDynamic(MStatus* ReturnStatus = NULL) const;

    /// Defaults: readable, writable, connectable, storable and cached are true, all others false.
    MStatus setReadable(bool state);
    MStatus setWritable(
        bool state); ///< false: the plug can neither be set nor be the destination of a connection
    MStatus setConnectable(bool state);
    MStatus setStorable(bool state);
    MStatus setCached(bool state);
    MStatus setArray(bool state);
    MStatus setKeyable(bool state);
    MStatus setChannelBox(bool state);
    MStatus setHidden(bool state);
    MStatus setInternal(bool state);
    MStatus setUsesArrayDataBuilder(bool state);
    MStatus setIndexMatters(bool state);
    MStatus setUsedAsColor(bool state);
    MStatus setNiceNameOverride(const MString& localizedName);
};
