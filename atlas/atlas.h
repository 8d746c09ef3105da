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

struct Options {
    float max_stretch = 0.15f; ///< 0 = isometric only, 1 = any; limit on L2 stretch is 1/(1-s)
    uint32_t max_charts = 0;   ///< 0 = no limit; more charts than this are an error
    uint32_t width = 512;      ///< texels
    uint32_t height = 512;     ///< texels
    float gutter = 2.0f;       ///< minimum distance between two charts in the final texture, texels
    Quality quality = Quality::quality;
    bool stack = false; ///< copies of a sheet share its place; wound against it, they are mirrored
    bool cut_to_pack = false; ///< cut large charts in two where that lets all charts grow; read by
                              ///< create() only
    /// Callbacks come on the thread that called; null for none.
    Progress progress = nullptr;
    StageProgress stage_progress = nullptr;
    void* user = nullptr;           ///< for both callbacks
    ParallelFor executor = nullptr; ///< null: all work is done on the calling thread
};

enum class Status {
    ok,
    invalid_argument,   ///< array sizes disagree, width or height 0, gutter or stretch not finite
    index_out_of_range, ///< element: position in `indices`
    adjacency_out_of_range, ///< element: position in `adjacency`
    non_finite_position,    ///< element: vertex id
    does_not_fit, ///< the texture has no room for charts and gutter; element: number of charts
    chart_limit,  ///< more charts than max_charts are needed; element: the number found
    aborted,      ///< by a progress callback
    out_of_memory
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
    float stretch = 0.0f; ///< reached: max over charts of 1 - 1/L2
};

/// Partitions, flattens and packs.
Failure create(const Mesh& mesh, const Options& options, Result& result) noexcept;

/// Partitions and flattens only: every chart has its own coordinates, at the scale at which the
/// whole mesh has area 1; `width`, `height` and `gutter` are ignored. partition_adjacency becomes
/// `mesh.adjacency` with k_none at every chart border.
Failure partition(const Mesh& mesh, const Options& options, Result& result,
                  std::vector<uint32_t>& partition_adjacency) noexcept;

/// Describes a status in one English sentence without a full stop.
const char* describe(Status status) noexcept;

/// Names a stage in a few English words, for display: "Packing charts".
const char* describe(Stage stage) noexcept;

} // namespace tessora::atlas
