/// Iterator over the edges of a mesh, in id order. Output arrays are overwritten and keep their
/// memory. An edge may have any number of faces: one at a border, more than two where the surface
/// branches. The order of connected ids means nothing.
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
    int count(MStatus* ReturnStatus = NULL) const; ///< edges of the mesh

    int index(MStatus* ReturnStatus = NULL) const; ///< id of the current edge
    /// Vertex id at end 0 or end 1 of the current edge.
    int index(int endPoint, MStatus* ReturnStatus = NULL) const;
    /// Jumps to an edge and tells where the iterator was; fails and stays when out of range.
    MStatus setIndex(int index, int& prevIndex);

    /// Position of end 0 or end 1.
    MPoint point(int endPoint, MSpace::Space space = MSpace::kObject,
                 MStatus* ReturnStatus = NULL) const;
    MStatus getLength(double& length, MSpace::Space space = MSpace::kObject) const;

    /// Fills in the ids of the faces at this edge, each once, and returns how many there are.
    int getConnectedFaces(MIntArray& faceList, MStatus* ReturnStatus = NULL) const;
    bool onBoundary(MStatus* ReturnStatus = NULL) const; ///< fewer than two faces

private:
    MObject object_;
    MDagPath path_;
    int index_ = 0;
};
