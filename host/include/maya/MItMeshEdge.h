/// Iterator over the edges of a mesh, in id order. Output arrays are overwritten and keep their
/// memory. An edge has one face at a border, two inside a surface, and more where the mesh is
/// non-manifold. The order of connected ids is unspecified.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MIntArray.h>
#include <maya/MPoint.h>
#include <maya/MSpace.h>

class MHOST_EXPORT MItMeshEdge {
public:
    MItMeshEdge(MObject& polyObject, MStatus* ReturnStatus = NULL);
    MItMeshEdge(MObject& polyObject, MObject& component, MStatus* ReturnStatus = NULL);
    MItMeshEdge(const MDagPath& polyObject, MObject& component = MObject::kNullObj,
                MStatus* ReturnStatus = NULL);
    ~MItMeshEdge();

    bool isDone(MStatus* ReturnStatus = NULL) const;
    MStatus next();
    MStatus reset();
    MStatus reset(MObject& polyObject);
    int count(MStatus* ReturnStatus = NULL) const; ///< number of edges of the mesh

    int index(MStatus* ReturnStatus = NULL) const; ///< id of the current edge
    /// Vertex id at end 0 or end 1 of the current edge.
    int index(int endPoint, MStatus* ReturnStatus = NULL) const;
    /// Moves to an edge and returns the previous position; fails without effect if out of range.
    MStatus setIndex(int index, int& prevIndex);

    /// Position of end 0 or end 1.
    MPoint point(int endPoint, MSpace::Space space = MSpace::kObject,
                 MStatus* ReturnStatus = NULL) const;
    MStatus getLength(double& length, MSpace::Space space = MSpace::kObject) const;

    /// The distinct faces at this edge; returns their number.
    int getConnectedFaces(MIntArray& faceList, MStatus* ReturnStatus = NULL) const;
    bool onBoundary(MStatus* ReturnStatus = NULL) const; ///< fewer than two faces

private:
    MObject object_;
    MDagPath path_;
    int index_ = 0;
};
