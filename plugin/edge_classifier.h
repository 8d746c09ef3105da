/// Decides for every triangle edge whether it lies on an edge of the mesh, and whether it becomes a
/// chart border.
///
/// A triangle edge is real if a mesh edge joins its two vertices; the others are diagonals that the
/// host's triangulation added inside a polygon, and are never cut. A real edge is cut if it is a UV
/// border and borders are kept, or if its two faces meet at a crease:
///
///   groove  concave or flat; cut if grooves are on and the angle is at least `groove_angle`
///   ridge   convex; cut if ridges are on and the angle is at least `ridge_angle`
///
/// Groove and ridge are told apart by the sign of (edge vector) . (cross product of the normals),
/// with counter-clockwise corners and outward normals. Edges with one face, or more than two, are
/// never creases.
#pragma once

#include "plugin/edge_table.h"
#include "plugin/mesh_data.h"
#include "plugin/unwrap_settings.h"

#include <maya/MIntArray.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MPointArray.h>

class EdgeClassifier {
public:
    /// Both must outlive the classifier. `seam_pairs` may be null. `classifies`: whether classify()
    /// will be called.
    EdgeClassifier(const UnwrapSettings& settings, MIntArray* seam_pairs, bool classifies)
        : settings_(settings), seam_pairs_(seam_pairs),
          looks_for_creases_(classifies && (settings.use_grooves || settings.use_ridges)) {}

    /// Reads the edges of the mesh, the first step. Errors: as for the table.
    MStatus read_edges(MObject& mesh, uint32_t vertex_count) {
        return edges_.build(mesh, vertex_count);
    }
    const EdgeTable& edges() const { return edges_; }

    /// Builds the other look-up tables. `border_edges` are the ids of the UV borders; an id that is
    /// listed twice adds its seam pair twice. Moves the iterator `polygons`. Errors: the host's
    /// status, or kInsufficientMemory.
    MStatus prepare(uint32_t vertex_count, MItMeshPolygon& polygons, uint32_t polygon_count,
                    const MIntArray& border_edges);

    /// Classifies edge `k` of a triangle of `polygon`: appends one entry to `real_edges` and one to
    /// `cut_edges` and, for every matching UV border, the edge's two vertices to the seam pairs.
    /// `ids` and `points` hold the triangle's three mesh vertices, in object space.
    void classify(int polygon, const MIntArray& ids, const MPointArray& points, unsigned k,
                  MeshData& data);

    /// What classify() does about seam pairs, for the edge between two vertices of a triangle.
    void note_borders(int from, int to) { note_borders(edges_.between(from, to), from, to); }

private:
    struct Normal {
        double x, y, z;
    };
    /// Whether any edge of a vertex is a crease; computed on first use.
    enum SelfCrease : uint8_t { k_unknown, k_no_crease, k_some_crease };

    MStatus read_normals(MItMeshPolygon& polygons, uint32_t polygon_count);
    /// Zero for a polygon that does not exist.
    MVector normal(int polygon) const;
    bool is_crease(const MeshEdge& edge, int polygon, const MVector& along) const;
    bool has_crease(EdgeTable::Spokes spokes, int polygon, const MVector& along) const;
    bool has_self_crease(int vertex, EdgeTable::Spokes spokes, int polygon, const MVector& along);
    bool note_borders(EdgeTable::Spokes spokes, int from, int to);

    const UnwrapSettings& settings_;
    MIntArray* const seam_pairs_;
    const bool looks_for_creases_;
    EdgeTable edges_;
    WorkBuffer<uint32_t> border_counts_; ///< per edge, how often it is listed as a UV border
    WorkBuffer<Normal> normals_;         ///< per polygon; only when creases are looked for
    WorkBuffer<uint8_t> self_creases_;   ///< per vertex, a SelfCrease
};
