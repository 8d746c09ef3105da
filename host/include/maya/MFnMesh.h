/// Function set for polygon meshes: a shape node, mesh data, or geometry. Vertex ids are relative
/// to the mesh, corner ("face-vertex") indices to their face; both start at 0. Points are stored in
/// single precision. A UV set is a list of UVs and, per face corner, an index into it or nothing.
/// Where a method takes the name of a UV set, NULL means the current set. World space needs a path.
/// Methods that change a mesh change the object they are attached to, at once.
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

    /// Makes a mesh inside `parentOrOwner` (mesh data) and attaches to it. Ids in
    /// `polygonConnects` are those of `vertexArray`; the counts say how many each polygon takes.
    MObject create(int numVertices, int numPolygons, const MPointArray& vertexArray,
                   const MIntArray& polygonCounts, const MIntArray& polygonConnects,
                   MObject parentOrOwner = MObject::kNullObj, MStatus* ReturnStatus = NULL);
    /// Copies a mesh into `parentOrOwner` (mesh data) and attaches to the copy.
    MObject copy(const MObject& source, MObject parentOrOwner = MObject::kNullObj,
                 MStatus* ReturnStatus = NULL);
    /// Replaces the attached mesh's geometry by a copy of another's.
    MStatus copyInPlace(const MObject& source);
    /// Asks for a redraw after changes.
    MStatus updateSurface();

    int numVertices(MStatus* ReturnStatus = NULL) const;
    int numEdges(MStatus* ReturnStatus = NULL) const;
    int numPolygons(MStatus* ReturnStatus = NULL) const;
    int numFaceVertices(MStatus* ReturnStatus = NULL) const;

    /// All points, in vertex order.
    MStatus getPoints(MPointArray& vertexArray, MSpace::Space space = MSpace::kObject) const;
    /// Unit normals of all polygons, or of one.
    MStatus getFaceNormals(MFloatVectorArray& normals, MSpace::Space space = MSpace::kObject) const;
    MStatus getPolygonNormal(int polygonId, MVector& normal,
                             MSpace::Space space = MSpace::kObject) const;
    int polygonVertexCount(int polygonId, MStatus* ReturnStatus = NULL) const;
    MStatus getPolygonVertices(int polygonId, MIntArray& vertexList) const;
    MStatus getEdgeVertices(int edgeId, int2& vertexList) const;
    /// Vertex ids of one triangle of a polygon, and of every triangle of the mesh.
    MStatus getPolygonTriangleVertices(int polygonId, int triangleId, int vertexList[3]) const;
    MStatus getTriangles(MIntArray& triangleCounts, MIntArray& triangleVertices) const;

    int numUVSets(MStatus* ReturnStatus = NULL) const;
    /// Names in the order in which the sets were made.
    MStatus getUVSetNames(MStringArray& setNames) const;
    /// The set that is meant when none is named; empty on a mesh without sets.
    MString currentUVSetName(MStatus* ReturnStatus = NULL, int instance = -1) const;
    /// An unknown name fails and changes nothing.
    MStatus setCurrentUVSetName(const MString& setName, MDGModifier* modifier = NULL,
                                MSelectionList* currentSelection = NULL);
    /// Adds an empty set to mesh data; fails on a shape node. A name that is taken is made unique
    /// and written back.
    MStatus createUVSetDataMesh(MString& uvSetName);
    /// Adds an empty set to a shape node and returns the name it got; an empty name or one that is
    /// taken gets a new one.
    MString createUVSetWithName(const MString& uvSetName, MDGModifier* modifier = NULL,
                                MStatus* ReturnStatus = NULL, const MUintArray* instances = NULL);
    MStatus deleteUVSet(const MString& setName, MDGModifier* modifier = NULL,
                        MSelectionList* currentSelection = NULL);
    MStatus renameUVSet(const MString& origName, const MString& newName,
                        MDGModifier* modifier = NULL);

    int numUVs(MStatus* ReturnStatus = NULL) const;
    int numUVs(const MString& uvSet, MStatus* ReturnStatus = NULL) const;
    MStatus getUVs(MFloatArray& uArray, MFloatArray& vArray, const MString* uvSet = NULL) const;
    /// Replaces the list. Both arrays must be of one length, and no shorter than the list is now:
    /// to shrink it, clear it first. Assignments stay.
    MStatus setUVs(const MFloatArray& uArray, const MFloatArray& vArray,
                   const MString* uvSet = NULL);
    /// Sets single UVs; the list grows as needed.
    MStatus setUV(int uvId, float u, float v, const MString* uvSet = NULL);
    MStatus setSomeUVs(const MIntArray& uvIds, const MFloatArray& uArray, const MFloatArray& vArray,
                       const MString* uvSet = NULL);
    /// Empties the set: no UVs, no corner assigned.
    MStatus clearUVs(const MString* uvSet = NULL);

    /// Maps one corner to a UV of the list; any index out of range is kInvalidParameter.
    MStatus assignUV(int polygonId, int vertexIndex, int uvId, const MString* uvSet = NULL);
    /// Maps all corners: per polygon its corner count or 0 (leave unmapped), and the UV ids.
    MStatus assignUVs(const MIntArray& uvCounts, const MIntArray& uvIds,
                      const MString* uvSet = NULL);
    MStatus getAssignedUVs(MIntArray& uvCounts, MIntArray& uvIds,
                           const MString* uvSet = NULL) const;
    /// The UV id of one corner; fails on an unmapped one.
    MStatus getPolygonUVid(int polygonId, int vertexIndex, int& uvId,
                           const MString* uvSet = NULL) const;

protected:
    MStatus accepts(const MObject& object) const override;
};
