/// A path from the world to a DAG node. An instanced node has several paths; world space is
/// relative to one of them. Methods of an invalid path fail.
#pragma once

#include <maya/MMatrix.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

#include <vector>

class MHOST_EXPORT MDagPath {
public:
    /// Constructs an invalid path.
    MDagPath();
    MDagPath(const MDagPath& other);
    MDagPath& operator=(const MDagPath& other);
    ~MDagPath();

    bool isValid(MStatus* ReturnStatus = NULL) const;
    /// Type of the path's last node.
    MFn::Type apiType(MStatus* ReturnStatus = NULL) const;
    bool hasFn(MFn::Type type, MStatus* ReturnStatus = NULL) const;
    MObject node(MStatus* ReturnStatus = NULL) const;
    /// The lowest transform on the path.
    MObject transform(MStatus* ReturnStatus = NULL) const;
    /// Number of nodes on the path, without the world.
    unsigned int length(MStatus* ReturnStatus = NULL) const;

    /// Extends the path by the only shape directly below its last transform; no effect if it
    /// already ends at a shape.
    /// Errors: kFailure if there is no shape or more than one, including hidden shapes; the path is
    ///         unchanged.
    MStatus extendToShape();
    MStatus extendToShapeDirectlyBelow(unsigned int index);
    MStatus numberOfShapesDirectlyBelow(unsigned int& count) const;
    unsigned int childCount(MStatus* ReturnStatus = NULL) const;
    MObject child(unsigned int index, MStatus* ReturnStatus = NULL) const;
    /// `push` appends a child of the last node; `pop` removes nodes from the end.
    MStatus push(const MObject& child);
    MStatus pop(unsigned int count = 1);

    /// "|group|shape".
    MString fullPathName(MStatus* ReturnStatus = NULL) const;
    /// The shortest unique name of this path: "shape" or "group|shape".
    MString partialPathName(MStatus* ReturnStatus = NULL) const;

    /// Matrix from object space to world space; `inclusiveMatrix` includes the last node if it is a
    /// transform, `exclusiveMatrix` does not.
    MMatrix inclusiveMatrix(MStatus* ReturnStatus = NULL) const;
    MMatrix exclusiveMatrix(MStatus* ReturnStatus = NULL) const;

    bool operator==(const MDagPath& other) const;
    bool operator!=(const MDagPath& other) const;

    /// Finds a path to a DAG node; fails for other objects and leaves `path` unchanged.
    static MStatus getAPathTo(const MObject& node, MDagPath& path);

    /// Internal: constructs a path from its nodes, top level first.
    explicit MDagPath(const std::vector<MObject>& nodes);
    const std::vector<MObject>& host_nodes() const { return nodes_; }

private:
    std::vector<MObject> nodes_;
};
