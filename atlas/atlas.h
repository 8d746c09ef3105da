/// The UV-atlas engine: arrays in, arrays out.
///
/// Takes any triangle soup (closed, open, non-manifold, degenerate, disconnected) and unwraps it to
/// a texture: charts without flipped or overlapping triangles, under a stretch limit, packed with a
/// gutter that holds in the final texture. Deterministic: the same input gives the same bits on
/// every run, compiler, machine and number of threads. Starts no threads: it uses those of the
/// caller's executor, if there is one. Never ends the process and never throws; memory is
/// proportional to the mesh.
///
/// Returned coordinates are isotropic, in units of the LONGER texture side: u in [0, width/M], v in
/// [0, height/M] with M = max(width, height). See docs/atlas-packing.md for the proof that the
/// gutter survives the caller's aspect correction and margin.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessora::atlas {

/// Stands for "none": no neighbour across an edge, a real edge in the false-edge array, no element.
inline constexpr uint32_t k_none = 0xFFFFFFFFu;

/// A read-only array owned by the caller.
template <class T>
struct Span {
    const T* data = nullptr;
    size_t size = 0;
    const T& operator[](size_t i) const { return data[i]; }
};

/// Shape: positions[3*nv], indices[3*nt], adjacency[3*nt], false_edges[3*nt] or empty.
/// Entry 3t+k of an edge array belongs to the edge from corner k to corner (k+1)%3 of triangle t.
struct Mesh {
    Span<float> positions;      ///< any unit; only ratios matter
    Span<uint32_t> indices;     ///< vertex ids, 0 <= id < nv
    Span<uint32_t> adjacency;   ///< neighbouring triangle, or k_none (border, or opened by a cut)
    Span<uint32_t> false_edges; ///< k_none = real edge; anything else = diagonal inside one polygon
};

enum class Quality { fast, quality };

/// Called with the fraction done, strictly increasing, at most 11 times, last with 1.0f.
/// Returning non-zero aborts the call.
using Progress = int (*)(float fraction, void* user);

/// The stages of the work, in order.
enum class Stage { surface, clusters, regions, merging, smoothing, packing, emission };

/// Called with the stage at work and the fraction of it that is done, 0..1: at the begin of every
/// stage and then often, at least every half second, so it should return quickly. Stages come in
/// order, each at most once; fractions never decrease within a stage. The calls depend on the
/// arguments alone, never on a clock. Returning non-zero aborts the call.
using StageProgress = int (*)(Stage stage, float fraction, void* user);

/// Runs function(i, user) once for each i in [0, count), in any order and on any threads, and
/// returns when all are done. The calling thread takes part, so that calls from within `function`
/// finish too. `function` never throws.
using ParallelFor = void (*)(size_t count, void (*function)(size_t i, void* user), void* user);

/// The range of efforts is 0 to 10.
inline constexpr int k_usual_effort = 4, k_max_effort = 10;

struct Options {
    float max_stretch = 0.15f; ///< 0 = isometric only, 1 = any; limit on L2 stretch is 1/(1-s)
    uint32_t max_charts = 0;   ///< 0 = no limit; more charts than this are an error
    uint32_t width = 512;      ///< texels
    uint32_t height = 512;     ///< texels
    float gutter = 2.0f;       ///< minimum distance between two charts in the final texture, texels
    Quality quality = Quality::quality;
    bool stack = false; ///< copies of a sheet share its place; wound against it, they are mirrored
    /// Cut large charts in two where that lets all charts grow; read by create() only. Quality mode
    /// does so without being asked if there is more than one chart, none of them a copy, and
    /// max_stretch is below 0.5.
    bool cut_to_pack = false;
    /// 0 to 10; every step doubles the time for packing, and more cuts for the texture are worth it
    int effort = k_usual_effort;
    /// Callbacks come on the thread that called; null for none.
    Progress progress = nullptr;
    StageProgress stage_progress = nullptr;
    void* user = nullptr;           ///< for both callbacks
    ParallelFor executor = nullptr; ///< null: all work is done on the calling thread
    /// Meshes with fewer triangles are done on the calling thread all the same.
    uint32_t min_parallel = 5000;
};

enum class Status {
    ok,
    /// Array sizes disagree or need more than 32 bits; width or height 0, gutter or stretch not
    /// finite
    invalid_argument,
    index_out_of_range,     ///< element: position in `indices`
    adjacency_out_of_range, ///< element: position in `adjacency`
    non_finite_position,    ///< element: vertex id
    does_not_fit, ///< the texture has no room for charts and gutter; element: number of charts
    chart_limit,  ///< more charts than max_charts are needed; element: the number found
    aborted,      ///< by a progress callback
    out_of_memory,
    kept_charts_collide, ///< two kept charts are closer than the gutter; element: a triangle of the
                         ///< later one
    kept_chart_outside,  ///< a kept chart is in no tile; element: a triangle of it
    non_finite_uv        ///< element: UV id
};

struct Failure {
    Status status = Status::ok;
    uint32_t element = k_none;
};

/// Triangles keep their order and corner order.
struct Result {
    std::vector<uint32_t> source_vertex; ///< per new vertex: the input vertex it is a copy of
    std::vector<uint32_t> indices;       ///< 3 per triangle, into the new vertices
    std::vector<float> uvs;              ///< 2 per new vertex
    std::vector<uint32_t> chart;         ///< per triangle: 0 <= id < chart_count
    std::vector<uint32_t> over_limit;    ///< triangles of charts that exceed the limit, ascending
    std::vector<uint32_t> lost; ///< triangles that rounding to single precision collapsed or
                                ///< flipped, ascending; normally none
    uint32_t chart_count = 0;
    float stretch = 0.0f; ///< reached: max over charts of 1 - 1/L2; of the rounded coordinates
                          ///< where that differs visibly
};

/// Partitions, flattens and packs.
Failure create(const Mesh& mesh, const Options& options, Result& result) noexcept;

/// Partitions and flattens only: every chart has its own coordinates, at the scale at which the
/// whole mesh has area 1; `width`, `height` and `gutter` are ignored. partition_adjacency becomes
/// `mesh.adjacency` with k_none at every chart border.
Failure partition(const Mesh& mesh, const Options& options, Result& result,
                  std::vector<uint32_t>& partition_adjacency) noexcept;

/// Charts that exist, whoever made them, for pack().
/// Shape: uvs[2*nu], indices[3*nt]; chart, keep, area: one entry per triangle, or empty.
struct UvMesh {
    Span<float> uvs;        ///< u v of the texture; u * width and v * height are texels
    Span<uint32_t> indices; ///< UV ids, 0 <= id < nu
    /// Any numbers; equal ones are one chart. Empty: triangles that share a UV id are one chart.
    Span<uint32_t> chart;
    /// Non-zero: the triangle's chart stays where it is, and the others are packed around it.
    Span<uint8_t> keep;
    Span<float> area; ///< in space, any unit squared; needed unless the density is as_is
};

enum class Turns {
    any,     ///< whatever packs best
    quarter, ///< by 0, 90, 180 or 270 degrees
    none
};

enum class Density {
    as_is,   ///< charts keep their sizes relative to each other. With kept charts, the others keep
             ///< their size, too, or shrink alike
    uniform, ///< every chart has the same number of texels per unit of its area in space
    fixed    ///< that number is given; what does not fit is does_not_fit
};

/// Charts of one shape may lie in one place. Such a stack counts as one chart.
enum class Stack {
    none,
    congruent, ///< charts that a turn and a shift bring to the same place
    mirrored   ///< also after turning them over, which makes them mirrored in the texture
};

struct PackSettings {
    uint32_t width = 512;  ///< texels, of one tile
    uint32_t height = 512; ///< texels
    float gutter = 2.0f;   ///< minimum distance of two charts, texels; half of it stays free at
                           ///< the borders of a tile
    uint32_t tiles = 1;    ///< textures of this size to fill, at most 100; tile i is moved by
                           ///< (i % 10, i / 10), as UDIM 1001 + i
    Turns turns = Turns::any;
    bool align = false; ///< before any other turn, every chart is turned so that most of its
                        ///< straight border is parallel to the axes, or its smallest box is; with
                        ///< Turns::any, further turns are quarters
    Density density = Density::as_is;
    double texels_per_unit = 0; ///< for Density::fixed, > 0
    Stack stack = Stack::none;
    int effort = k_usual_effort; ///< 0 to 10; every step doubles the time for the search
    Quality quality = Quality::quality;
    /// Callbacks and executor as in Options; the stages are packing and emission.
    Progress progress = nullptr;
    StageProgress stage_progress = nullptr;
    void* user = nullptr;
    ParallelFor executor = nullptr;
};

/// What became of one chart. A point p of the chart in texels, (u * width, v * height), came to lie
/// at scale * (cosine * p.x - sine * p.y, sine * p.x + cosine * p.y) + (x, y) texels of its tile;
/// if it was turned over, p.x is negated first.
struct PackedChart {
    uint32_t first_triangle = 0;
    uint32_t tile = 0;
    uint32_t stacked_on = k_none; ///< the chart in whose place it lies
    double scale = 1, cosine = 1, sine = 0, x = 0, y = 0;
    bool kept = false;
    bool turned_over = false;
    bool mirrored = false; ///< before packing: more area is clockwise than counter-clockwise
    bool tangled = false;  ///< before packing: some triangles are flipped against the others, or
                           ///< the chart overlaps itself, if only by a rounding error, or is in
                           ///< several pieces. It keeps its shape, and other charts keep clear of
                           ///< all of it
};

struct PackResult {
    std::vector<float> uvs;          ///< 2 per corner; equal for corners that were equal in a chart
    std::vector<uint32_t> chart;     ///< per triangle, numbered by the first triangle
    std::vector<PackedChart> charts; ///< per chart
    std::vector<double> coverage;    ///< per tile: the area of its charts over its own
    double texels_per_unit = 0;      ///< mean over the packed charts; 0 without areas in space
    std::vector<uint32_t> lost;      ///< triangles that rounding to single precision collapsed or
                                     ///< flipped, ascending; normally none
};

/// Packs charts that exist into one texture or several, without touching their shape.
///
/// Promises, in single precision: no two charts closer than the gutter, except in a stack and
/// except two kept ones that were up to 0.01 texel closer; every coordinate in its tile; kept
/// charts have the bits they came with. docs/atlas-packing.md has the
/// method. Deterministic, single-threaded, never throws.
Failure pack(const UvMesh& mesh, const PackSettings& settings, PackResult& result) noexcept;

/// Describes a status in one English sentence without a full stop.
const char* describe(Status status) noexcept;

/// Names a stage in a few English words, for display: "Packing charts".
const char* describe(Stage stage) noexcept;

} // namespace tessora::atlas
