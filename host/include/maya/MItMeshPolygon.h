/// Iterator over the polygons of a mesh, in id order; `setIndex` gives random access. Output arrays
/// are overwritten and keep their memory; once they have grown, no method allocates.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MIntArray.h>
#include <maya/MPointArray.h>
#include <maya/MSpace.h>

class MHOST_EXPORT MItMeshPolygon {
public:
    MItMeshPolygon(const MObject& polyObject, MStatus* ReturnStatus = NULL);
    MItMeshPolygon(const MDagPath& polyObject, MObject& component = MObject::kNullObj,
                   MStatus* ReturnStatus = NULL);
    ~MItMeshPolygon();

    bool isDone(MStatus* ReturnStatus = NULL) const;
    MStatus next();
    MStatus reset();
    MStatus reset(const MObject& polyObject);
    unsigned int count(MStatus* ReturnStatus = NULL) const; ///< number of polygons of the mesh
    unsigned int index(MStatus* ReturnStatus = NULL) const; ///< id of the current polygon
    /// Moves to a polygon and returns the previous position; fails without effect if out of range.
    MStatus setIndex(int index, int& prevIndex);

    unsigned int polygonVertexCount(MStatus* ReturnStatus = NULL) const;
    /// Vertex ids in winding order.
    MStatus getVertices(MIntArray& vertices) const;
    int vertexIndex(int index, MStatus* ReturnStatus = NULL) const;
    MStatus getPoints(MPointArray& points, MSpace::Space space = MSpace::kObject) const;

    /// Unit normal by Newell's method; zero if the polygon has no area.
    MStatus getNormal(MVector& normal, MSpace::Space space = MSpace::kObject) const;

    /// A polygon of n corners always has n - 2 triangles. `hasValidTriangulation` returns false if
    /// some of them overlap or have no area, because the outline is self-intersecting or has no
    /// area.
    bool hasValidTriangulation(MStatus* ReturnStatus = NULL) const;
    MStatus numTriangles(int& count) const;
    /// Points and mesh-relative vertex ids of one or of all triangles, wound like the polygon.
    MStatus getTriangle(int localIndex, MPointArray& points, MIntArray& vertexList,
                        MSpace::Space space = MSpace::kObject) const;
    MStatus getTriangles(MPointArray& points, MIntArray& vertexList,
                         MSpace::Space space = MSpace::kObject) const;

    /// Edge ids in winding order; edge i runs from corner i to corner i + 1.
    MStatus getEdges(MIntArray& edges) const;
    bool onBoundary(MStatus* ReturnStatus = NULL) const;
    bool zeroArea(MStatus* ReturnStatus = NULL) const;

    /// Whether every corner of the polygon has a UV.
    bool hasUVs(MStatus* ReturnStatus = NULL) const;
    bool hasUVs(const MString& uvSet, MStatus* ReturnStatus = NULL) const;
    MStatus getUVIndex(int vertex, int& index, const MString* uvSet = NULL) const;

private:
    MObject object_;
    MDagPath path_;
    int index_ = 0;
};
