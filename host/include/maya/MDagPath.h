/// The way from the world down to a DAG node. One shape may be reached by several paths; world
/// space means: through this one. Methods on an invalid path fail.
#pragma once

#include <maya/MMatrix.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

#include <vector>

class MHOST_EXPORT MDagPath {
public:
    /// An invalid path.
    MDagPath();
    MDagPath(const MDagPath& other);
    MDagPath& operator=(const MDagPath& other);
    ~MDagPath();

    bool isValid(MStatus* ReturnStatus = NULL) const;
    /// Type of the node at the end.
    MFn::Type apiType(MStatus* ReturnStatus = NULL) const;
    bool hasFn(MFn::Type type, MStatus* ReturnStatus = NULL) const;
    MObject node(MStatus* ReturnStatus = NULL) const;
    /// The lowest transform on the path.
    MObject transform(MStatus* ReturnStatus = NULL) const;
    /// Number of nodes on the path, the world not counted.
    unsigned int length(MStatus* ReturnStatus = NULL) const;

    /// Goes down to the only shape right below a transform; does nothing at a shape. Several
    /// shapes, hidden ones included, or none: kFailure, and the path stays.
    MStatus extendToShape();
    MStatus extendToShapeDirectlyBelow(unsigned int index);
    MStatus numberOfShapesDirectlyBelow(unsigned int& count) const;
    unsigned int childCount(MStatus* ReturnStatus = NULL) const;
    MObject child(unsigned int index, MStatus* ReturnStatus = NULL) const;
    /// Adds a child of the end node to the path; removes nodes from its end.
    MStatus push(const MObject& child);
    MStatus pop(unsigned int count = 1);

    /// "|group|shape".
    MString fullPathName(MStatus* ReturnStatus = NULL) const;
    /// As short as it can be while it still names this path only: "shape", "group|shape".
    MString partialPathName(MStatus* ReturnStatus = NULL) const;

    /// Object to world: with the end node's own matrix when it is a transform, or without.
    MMatrix inclusiveMatrix(MStatus* ReturnStatus = NULL) const;
    MMatrix exclusiveMatrix(MStatus* ReturnStatus = NULL) const;

    bool operator==(const MDagPath& other) const;
    bool operator!=(const MDagPath& other) const;

    /// Any path to a DAG node; fails for everything else and leaves `path` alone.
    static MStatus getAPathTo(const MObject& node, MDagPath& path);

    /// For the host's own code: the nodes from the top level down.
    explicit MDagPath(const std::vector<MObject>& nodes);
    const std::vector<MObject>& host_nodes() const { return nodes_; }

private:
    std::vector<MObject> nodes_;
};
