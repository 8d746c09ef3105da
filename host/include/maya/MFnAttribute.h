/// Base of the function sets for attributes. The setters are meant for the time between making an
/// attribute and adding it to a node type.
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
    /// The compound it is a component of; null for others.
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

    /// Readable, writable, connectable, storable and cached start true, the others false.
    MStatus setReadable(bool state);
    MStatus setWritable(bool state); ///< false: can be neither set nor fed by a connection
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
