#include "tests/platform/d3dx9/fake_engine.h"

namespace fake_engine {

State& state() {
    static State value;
    return value;
}

namespace {

namespace atlas = tessora::atlas;

template <class T>
std::vector<T> copied(const atlas::Span<T>& span) {
    return {span.data, span.data + span.size};
}

atlas::Failure answer(const atlas::Mesh& mesh, const atlas::Options& options,
                      atlas::Result& result) {
    State& now = state();
    now.options = options;
    now.positions = copied(mesh.positions);
    now.indices = copied(mesh.indices);
    now.adjacency = copied(mesh.adjacency);
    now.false_edges = copied(mesh.false_edges);
    for (const float fraction : now.fractions)
        if (options.progress != nullptr && options.progress(fraction, options.user) != 0)
            return {atlas::Status::aborted, atlas::k_none};
    for (const float fraction : now.stage_fractions)
        if (options.stage_progress != nullptr &&
            options.stage_progress(atlas::Stage::packing, fraction, options.user) != 0)
            return {atlas::Status::aborted, atlas::k_none};
    if (now.failure.status != atlas::Status::ok)
        return now.failure;
    result.source_vertex = now.indices;
    for (uint32_t i = 0; i < now.indices.size(); ++i) {
        result.indices.push_back(i);
        result.uvs.push_back(u_of(i));
        result.uvs.push_back(v_of(i));
        if (i % 3 == 0)
            result.chart.push_back(i / 3);
    }
    result.chart_count = static_cast<uint32_t>(result.chart.size());
    result.stretch = k_stretch;
    result.over_limit = now.over_limit;
    return {};
}

} // namespace

} // namespace fake_engine

namespace tessora::atlas {

// Like the engine, this returns lack of memory as a status; no exception may leave it.
Failure create(const Mesh& mesh, const Options& options, Result& result) noexcept {
    ++fake_engine::state().creates;
    try {
        return fake_engine::answer(mesh, options, result);
    } catch (...) {
        return {Status::out_of_memory, k_none};
    }
}

Failure partition(const Mesh& mesh, const Options& options, Result& result,
                  std::vector<uint32_t>& partition_adjacency) noexcept {
    ++fake_engine::state().partitions;
    try {
        partition_adjacency.assign(mesh.indices.size, k_none);
        return fake_engine::answer(mesh, options, result);
    } catch (...) {
        return {Status::out_of_memory, k_none};
    }
}

const char* describe(Status) noexcept { return "the engine says no"; }

const char* describe(Stage stage) noexcept { return stage == Stage::packing ? "packing" : "?"; }

} // namespace tessora::atlas
