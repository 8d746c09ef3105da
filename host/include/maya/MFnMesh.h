/// Function set for polygon meshes: shape nodes, mesh data or mesh geometry. Vertex ids are
/// relative to the mesh, corner ("face-vertex") indices to their face; both start at 0. Points are
/// stored in single precision. A UV set is a list of UVs and, per face corner, an optional index
/// into it. A NULL UV set name means the current set. World space requires a DAG path. Methods that
/// change the mesh act on the attached object immediately.
#pragma once

#include <maya/MFloatArray.h>
#include <maya/MFloatVectorArray.h>
#include <maya/MFnDagNode.h>
#include <maya/MIntArray.h>
#include <maya/MPointArray.h>
#include <maya/MSpace.h>
#include <maya/MStringArray.h>

class MDGModifier;
class MSelectionList;
class MUintArray;

class MHOST_EXPORT MFnMesh : public MFnDagNode {
public:
    MFnMesh();
    MFnMesh(const MDagPath& path, MStatus* ReturnStatus = NULL);
    MFnMesh(MObject& object, MStatus* ReturnStatus = NULL);
    MFnMesh(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnMesh() override;

    MFn::Type type() const override;

    /// Creates a mesh inside `parentOrOwner` (mesh data) and attaches to it. `polygonConnects`
    /// holds indices into `vertexArray`, `polygonCounts` the number of corners of each polygon.
    MObject create(int numVertices, int numPolygons, const MPointArray& vertexArray,
                   const MIntArray& polygonCounts, const MIntArray& polygonConnects,
                   MObject parentOrOwner = MObject::kNullObj, MStatus* ReturnStatus = NULL);
    /// Copies a mesh into `parentOrOwner` (mesh data) and attaches to the copy.
    MObject copy(const MObject& source, MObject parentOrOwner = MObject::kNullObj,
                 MStatus* ReturnStatus = NULL);
    /// Replaces the attached mesh's geometry by a copy of `source`.
    MStatus copyInPlace(const MObject& source);
    /// Requests a redraw after changes.
    MStatus updateSurface();

    int numVertices(MStatus* ReturnStatus = NULL) const;
    int numEdges(MStatus* ReturnStatus = NULL) const;
    int numPolygons(MStatus* ReturnStatus = NULL) const;
    int numFaceVertices(MStatus* ReturnStatus = NULL) const;

    /// All points, in vertex order.
    MStatus getPoints(MPointArray& vertexArray, MSpace::Space space = MSpace::kObject) const;
    /// Unit normals of all polygons, or of one polygon.
    MStatus getFaceNormals(MFloatVectorArray& normals, MSpace::Space space = MSpace::kObject) const;
    MStatus getPolygonNormal(int polygonId, MVector& normal,
                             MSpace::Space space = MSpace::kObject) const;
    int polygonVertexCount(int polygonId, MStatus* ReturnStatus = NULL) const;
    MStatus getPolygonVertices(int polygonId, MIntArray& vertexList) const;
    MStatus getEdgeVertices(int edgeId, int2& vertexList) const;
    /// Vertex ids of one triangle of a polygon, or of all triangles of the mesh.
    MStatus getPolygonTriangleVertices(int polygonId, int triangleId, int vertexList[3]) const;
    MStatus getTriangles(MIntArray& triangleCounts, MIntArray& triangleVertices) const;

    int numUVSets(MStatus* ReturnStatus = NULL) const;
    /// UV set names in order of creation.
    MStatus getUVSetNames(MStringArray& setNames) const;
    /// The set that a NULL name refers to; empty if the mesh has no UV sets.
    MString currentUVSetName(MStatus* ReturnStatus = NULL, int instance = -1) const;
    /// Fails without effect if the name is unknown.
    MStatus setCurrentUVSetName(const MString& setName, MDGModifier* modifier = NULL,
                                MSelectionList* currentSelection = NULL);
    /// Adds an empty UV set to mesh data; fails on a shape node. A name that is taken is made
    /// unique and written back.
    MStatus createUVSetDataMesh(MString& uvSetName);
    /// Adds an empty UV set to a shape node and returns its name. An empty or taken name is
    /// replaced by a new unique one.
    MString createUVSetWithName(const MString& uvSetName, MDGModifier* modifier = NULL,
                                MStatus* ReturnStatus = NULL, const MUintArray* instances = NULL);
    MStatus deleteUVSet(const MString& setName, MDGModifier* modifier = NULL,
                        MSelectionList* currentSelection = NULL);
    MStatus renameUVSet(const MString& origName, const MString& newName,
                        MDGModifier* modifier = NULL);

    int numUVs(MStatus* ReturnStatus = NULL) const;
    int numUVs(const MString& uvSet, MStatus* ReturnStatus = NULL) const;
    MStatus getUVs(MFloatArray& uArray, MFloatArray& vArray, const MString* uvSet = NULL) const;
    /// Replaces the list of UVs. Both arrays must have the same length, which must not be less than
    /// the current length: to shrink the list, call clearUVs first. Assignments are kept.
    MStatus setUVs(const MFloatArray& uArray, const MFloatArray& vArray,
                   const MString* uvSet = NULL);
    /// Sets single UVs; the list grows as needed.
    MStatus setUV(int uvId, float u, float v, const MString* uvSet = NULL);
    MStatus setSomeUVs(const MIntArray& uvIds, const MFloatArray& uArray, const MFloatArray& vArray,
                       const MString* uvSet = NULL);
    /// Removes all UVs and all assignments of the set.
    MStatus clearUVs(const MString* uvSet = NULL);

    /// Assigns a UV to one face corner.
    /// Errors: kInvalidParameter if any index is out of range.
    MStatus assignUV(int polygonId, int vertexIndex, int uvId, const MString* uvSet = NULL);
    /// Assigns UVs to all face corners. `uvCounts` holds each polygon's corner count, or 0 to leave
    /// the polygon unmapped; `uvIds` the UV ids of all mapped corners.
    MStatus assignUVs(const MIntArray& uvCounts, const MIntArray& uvIds,
                      const MString* uvSet = NULL);
    MStatus getAssignedUVs(MIntArray& uvCounts, MIntArray& uvIds,
                           const MString* uvSet = NULL) const;
    /// The UV id of one corner; fails if the corner is unmapped.
    MStatus getPolygonUVid(int polygonId, int vertexIndex, int& uvId,
                           const MString* uvSet = NULL) const;

protected:
    MStatus accepts(const MObject& object) const override;
};
