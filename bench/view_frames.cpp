/// Times offscreen frames of one panel with a generated mesh, without and with the seam overlay,
/// and counts the buffers that redraws rebuild.
///
///   view_frames TRIANGLES [WIDTH HEIGHT SAMPLES]
///
/// The mesh is a wavy sheet. The overlay is drawn by the plug-in's own routine; its lines are the
/// borders of square patches, alternating existing and new seams. Prints one JSON object: minimum
/// wall-clock and processor time per frame in milliseconds (all threads of the software renderer).
#include "host/commands/session.h"
#include "host/graph/scene.h"
#include "host/mesh/mesh.h"
#include "host/view/offscreen.h"
#include "plugin/viewport.h"

#include <maya/MSelectionList.h>

#include <GL/gl.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>

namespace {

constexpr int k_frames = 8;

struct Cost {
    double wall = 1e300, processor = 1e300; ///< milliseconds
};

/// The minimum cost of several runs, each finished with glFinish.
Cost cheapest(int runs, host::Offscreen& surface, const std::function<void()>& run) {
    Cost lowest;
    for (int i = 0; i < runs; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        const std::clock_t used = std::clock();
        run();
        if (surface.make_current()) {
            glFinish();
            surface.give_back();
        }
        const std::chrono::duration<double, std::milli> wall =
            std::chrono::steady_clock::now() - begin;
        lowest.wall = std::min(lowest.wall, wall.count());
        lowest.processor =
            std::min(lowest.processor, 1e3 * double(std::clock() - used) / CLOCKS_PER_SEC);
    }
    return lowest;
}

host::Mesh sheet(uint32_t side) {
    std::vector<host::Float3> points;
    std::vector<uint32_t> counts, vertices;
    for (uint32_t row = 0; row <= side; ++row)
        for (uint32_t column = 0; column <= side; ++column) {
            const double x = 10.0 * column / side - 5.0, z = 10.0 * row / side - 5.0;
            points.push_back({float(x), float(std::sin(1.5 * x) * std::cos(z)), float(z)});
        }
    for (uint32_t row = 0; row < side; ++row)
        for (uint32_t column = 0; column < side; ++column) {
            const uint32_t a = row * (side + 1) + column, below = a + side + 1;
            counts.push_back(4);
            vertices.insert(vertices.end(), {a, below, below + 1, a + 1});
        }
    host::Mesh mesh;
    host::Mesh::make(std::move(points), std::move(counts), std::move(vertices), mesh);
    return mesh;
}

/// Adds the borders of patches of 16 x 16 squares as seams.
void add_seams(uint32_t side, VisualizationData& data) {
    for (uint32_t line = 16; line < side; line += 16)
        for (uint32_t along = 0; along < side; ++along) {
            MIntArray& seams = (line / 16) % 2 == 0 ? data.existing_seams : data.new_seams;
            const auto across = [&](uint32_t at) { return int(line * (side + 1) + at); };
            const auto down = [&](uint32_t at) { return int(at * (side + 1) + line); };
            for (const int vertex :
                 {across(along), across(along + 1), down(along), down(along + 1)})
                seams.append(vertex);
        }
}

void print(const char* name, const Cost& cost) {
    std::printf(", \"%s_wall_ms\": %.2f, \"%s_cpu_ms\": %.2f", name, cost.wall, name,
                cost.processor);
}

struct FrameCosts {
    Cost first;   ///< builds buffers and compiles shaders
    Cost plain;   ///< mesh alone
    Cost overlay; ///< with seams
    Cost turned;  ///< with seams, the camera turned before each frame
    uint64_t seam_edges = 0;
    host::DrawCounts before, after; ///< counts before and after drawing the frames with seams
};

FrameCosts time_frames(host::Offscreen& surface, host::GlPanels& panels, uint32_t side) {
    FrameCosts costs;
    const auto frame = [&] { panels.draw(3); };
    costs.first = cheapest(1, surface, frame);
    costs.plain = cheapest(k_frames, surface, frame);
    VisualizationData data;
    MSelectionList list;
    list.add("sheetShape");
    list.getDagPath(0, data.mesh_path);
    add_seams(side, data);
    costs.seam_edges = (data.existing_seams.length() + data.new_seams.length()) / 2;
    attach_viewport_callbacks(data);
    frame();
    costs.before = panels.counts();
    costs.overlay = cheapest(k_frames, surface, frame);
    costs.turned = cheapest(k_frames, surface, [&] {
        host::orbit(host::panel_camera(3), 3.0, 0.0);
        panels.draw(3);
    });
    costs.after = panels.counts();
    detach_viewport_callbacks(data);
    return costs;
}

void print_json(const FrameCosts& costs, uint32_t side) {
    const auto number = [](uint64_t value) { return static_cast<unsigned long long>(value); };
    std::printf("{\"triangles\": %u, \"seam_edges\": %llu", 2 * side * side,
                number(costs.seam_edges));
    print("first", costs.first);
    print("plain", costs.plain);
    print("overlay", costs.overlay);
    print("turned", costs.turned);
    std::printf(", \"frames\": %llu, \"buffers_rebuilt\": %llu, \"bytes_uploaded\": %llu}\n",
                number(costs.after.panels - costs.before.panels),
                number(costs.after.buffers_built - costs.before.buffers_built),
                number(costs.after.bytes_uploaded - costs.before.bytes_uploaded));
}

} // namespace

int main(int argc, char** argv) {
    const double triangles = argc > 1 ? std::atof(argv[1]) : 10000.0;
    const auto side = uint32_t(std::lround(std::sqrt(triangles / 2.0)));
    const int width = argc > 3 ? std::atoi(argv[2]) : 960;
    const int height = argc > 3 ? std::atoi(argv[3]) : 720;
    const int samples = argc > 4 ? std::atoi(argv[4]) : 1;
    std::string error;
    const auto surface = host::Offscreen::make(error);
    if (!surface || !surface->resize(width, height, samples, error)) {
        std::fprintf(stderr, "view_frames: %s\n", error.c_str());
        return 1;
    }
    host::GlPanels panels(*surface);
    panels.arrange_one(3, width, height);
    host::graph::Scene& scene = host::graph::Scene::current();
    const auto transform = scene.make_node(scene.find_type("transform"), "sheet");
    const auto shape = scene.make_node(scene.find_type("mesh"), "sheetShape");
    scene.add(*transform, nullptr);
    scene.add(*shape, transform->as_dag_node());
    shape->as_mesh()->set_mesh(sheet(side));
    panels.frame(3, false);
    print_json(time_frames(*surface, panels, side), side);
    return 0;
}
