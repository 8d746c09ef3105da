/// Iterator over the vertices of a mesh, in id order. Output arrays are overwritten and keep their
/// memory; a method that fails leaves them unchanged. The order of connected ids is unspecified.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MFloatArray.h>
#include <maya/MIntArray.h>
#include <maya/MPoint.h>
#include <maya/MSpace.h>

class MHOST_EXPORT MItMeshVertex {
public:
    MItMeshVertex(MObject& polyObject, MStatus* ReturnStatus = NULL);
    MItMeshVertex(MObject& polyObject, MObject& component, MStatus* ReturnStatus = NULL);
    MItMeshVertex(const MDagPath& polyObject, MObject& component = MObject::kNullObj,
                  MStatus* ReturnStatus = NULL);
    ~MItMeshVertex();

    bool isDone(MStatus* ReturnStatus = NULL) const;
    MStatus next();
    MStatus reset();
    MStatus reset(MObject& polyObject);
    int count(MStatus* ReturnStatus = NULL) const; ///< number of vertices of the mesh
    int index(MStatus* ReturnStatus = NULL) const; ///< id of the current vertex
    /// Moves to a vertex and returns the previous position; fails without effect if out of range.
    MStatus setIndex(int index, int& prevIndex);

    MPoint position(MSpace::Space space = MSpace::kObject, MStatus* ReturnStatus = NULL) const;

    /// Distinct edges, faces and neighbouring vertices.
    MStatus getConnectedEdges(MIntArray& edgeList) const;
    MStatus numConnectedEdges(int& count) const;
    MStatus getConnectedFaces(MIntArray& faceList) const;
    MStatus numConnectedFaces(int& count) const;
    MStatus getConnectedVertices(MIntArray& vertexList) const;
    bool onBoundary(MStatus* ReturnStatus = NULL) const;

    /// The UVs of the mapped faces at the vertex: one entry per mapped corner, so equal UVs repeat.
    /// The three arrays are parallel to each other and to the array of `getUVIndices`. Both methods
    /// fail if no face at the vertex is mapped or the set is unknown.
    MStatus getUVs(MFloatArray& uArray, MFloatArray& vArray, MIntArray& faceIds,
                   const MString* uvSet = NULL) const;
    MStatus getUVIndices(MIntArray& uvIndices, const MString* uvSet = NULL) const;
    /// Number of distinct UV ids at the vertex.
    MStatus numUVs(int& count, const MString* uvSet = NULL) const;
    /// The UV shared by all mapped faces; fails if they have different UVs.
    MStatus getUV(float2& uvPoint, const MString* uvSet = NULL) const;
    MStatus getUV(int faceId, float2& uvPoint, const MString* uvSet = NULL) const;

private:
    MObject object_;
    MDagPath path_;
    int index_ = 0;
};
