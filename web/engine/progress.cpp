/// Lets JavaScript hear of progress, and checks what web/src/engine.ts knows of the C interface.
#include "atlas/c/tessora_atlas.h"

#include <cstddef>

static_assert(sizeof(tessora_array) == 16 && offsetof(tessora_array, count) == 4 &&
              offsetof(tessora_array, stride) == 8 && offsetof(tessora_array, type) == 12);
static_assert(sizeof(tessora_mesh) == 124 && offsetof(tessora_mesh, positions) == 4 &&
              offsetof(tessora_mesh, indices) == 20 && offsetof(tessora_mesh, offsets) == 36 &&
              offsetof(tessora_mesh, cuts) == 52 && offsetof(tessora_mesh, normals) == 68 &&
              offsetof(tessora_mesh, normals_per_corner) == 116 &&
              offsetof(tessora_mesh, weld) == 120);
static_assert(sizeof(tessora_options) == 60 && offsetof(tessora_options, effort) == 56 &&
              offsetof(tessora_options, max_stretch) == 4 &&
              offsetof(tessora_options, max_charts) == 8 &&
              offsetof(tessora_options, width) == 12 && offsetof(tessora_options, height) == 16 &&
              offsetof(tessora_options, gutter) == 20 && offsetof(tessora_options, quality) == 24 &&
              offsetof(tessora_options, stack) == 28 &&
              offsetof(tessora_options, cut_to_pack) == 32 &&
              offsetof(tessora_options, progress) == 40);
static_assert(sizeof(tessora_uvs) == 52 && offsetof(tessora_uvs, uvs) == 4 &&
              offsetof(tessora_uvs, charts) == 20 && offsetof(tessora_uvs, keep) == 36);
static_assert(
    sizeof(tessora_pack_options) == 72 && offsetof(tessora_pack_options, width) == 4 &&
    offsetof(tessora_pack_options, height) == 8 && offsetof(tessora_pack_options, gutter) == 12 &&
    offsetof(tessora_pack_options, tiles) == 16 && offsetof(tessora_pack_options, turns) == 20 &&
    offsetof(tessora_pack_options, align) == 24 && offsetof(tessora_pack_options, density) == 28 &&
    offsetof(tessora_pack_options, stack) == 32 && offsetof(tessora_pack_options, effort) == 36 &&
    offsetof(tessora_pack_options, quality) == 40 &&
    offsetof(tessora_pack_options, texels_per_unit) == 48 &&
    offsetof(tessora_pack_options, progress) == 56);
static_assert(sizeof(tessora_error) == 256 && offsetof(tessora_error, element) == 4 &&
              offsetof(tessora_error, text) == 8);

/// Supplied by JavaScript. Returns 1 to cancel.
extern "C" __attribute__((import_module("env"), import_name("tessora_js_report"))) int
tessora_js_report(const char* stage, float fraction);

namespace {
int report(const char* stage, float fraction, void*) { return tessora_js_report(stage, fraction); }
} // namespace

/// A function pointer for tessora_options::progress.
extern "C" __attribute__((export_name("tessora_js_progress"))) tessora_progress
tessora_js_progress() {
    return report;
}
