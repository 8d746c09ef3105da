/// Iterator over the vertices of a mesh, in id order. Output arrays are overwritten and keep their
/// memory, except where a method fails: then they stay as they were. The order of connected ids
/// means nothing.
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
    int count(MStatus* ReturnStatus = NULL) const; ///< vertices of the mesh
    int index(MStatus* ReturnStatus = NULL) const; ///< id of the current vertex
    /// Jumps to a vertex and tells where the iterator was; fails and stays when out of range.
    MStatus setIndex(int index, int& prevIndex);

    MPoint position(MSpace::Space space = MSpace::kObject, MStatus* ReturnStatus = NULL) const;

    /// Edges, faces and neighbouring vertices, each id once.
    MStatus getConnectedEdges(MIntArray& edgeList) const;
    MStatus numConnectedEdges(int& count) const;
    MStatus getConnectedFaces(MIntArray& faceList) const;
    MStatus numConnectedFaces(int& count) const;
    MStatus getConnectedVertices(MIntArray& vertexList) const;
    bool onBoundary(MStatus* ReturnStatus = NULL) const;

    /// One entry per mapped face at the vertex (per corner, where a face comes by twice), the
    /// three arrays aligned with each other and with `getUVIndices`; equal UVs are listed again.
    /// Both fail when no face here is mapped or the set is unknown.
    MStatus getUVs(MFloatArray& uArray, MFloatArray& vArray, MIntArray& faceIds,
                   const MString* uvSet = NULL) const;
    MStatus getUVIndices(MIntArray& uvIndices, const MString* uvSet = NULL) const;
    /// How many different UV ids the vertex has.
    MStatus numUVs(int& count, const MString* uvSet = NULL) const;
    /// The UV that all mapped faces share; fails when they do not share one.
    MStatus getUV(float2& uvPoint, const MString* uvSet = NULL) const;
    MStatus getUV(int faceId, float2& uvPoint, const MString* uvSet = NULL) const;

private:
    MObject object_;
    MDagPath path_;
    int index_ = 0;
};
