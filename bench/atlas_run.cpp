// Runs the engine on a mesh file and prints the quality of the result and the time as a CSV row.
//
//   atlas_run MESH.obj [--fast] [--stretch S] [--size WxH] [--gutter G] [--cut-angle DEGREES]
//             [--unpacked] [--check] [--cut-to-pack] [--effort N] [--repeat N] [--copies N]
//             [--threads N]
//             [--stages] [--header] [--dump FILE.obj]
//
// --check verifies the result by brute force (slow) and lists violated guarantees; --copies N puts
// N copies of the mesh side by side; --threads N (1, 2, 4 or 8) runs on that many threads, and the
// seconds are then those of the wall clock; --stages prints the CPU time of every stage and the
// longest time between two reports of progress; --dump writes the triangles with their coordinates.
#include "atlas/atlas.h"
#include "host/io/obj_reader.h"
#include "tests/atlas/check_result.h"
#include "tests/atlas/threads.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

namespace {

using atlas_test::TestMesh;
using namespace tessora::atlas;

struct Request {
    std::string file, dump;
    Options options;
    double cut_angle = 181;
    bool packed = true, check = false, header = false, stages = false;
    int repeat = 1, copies = 1;
};

double seconds(clockid_t clock) {
    timespec now;
    clock_gettime(clock, &now);
    return double(now.tv_sec) + 1e-9 * double(now.tv_nsec);
}

double cpu_seconds() { return seconds(CLOCK_THREAD_CPUTIME_ID); }

/// The time that each stage takes, and the longest time without a report.
struct StageClock {
    std::array<double, size_t(Stage::emission) + 1> spent = {};
    Stage stage = Stage::surface, silent_stage = Stage::surface;
    double last = 0, silence = 0;

    void note(Stage now) {
        const double time = cpu_seconds(), passed = time - last;
        if (passed > silence) {
            silence = passed;
            silent_stage = stage;
        }
        spent[size_t(stage)] += passed;
        stage = now;
        last = time;
    }
    static int report(Stage now, float, void* user) {
        static_cast<StageClock*>(user)->note(now);
        return 0;
    }
    void print() const {
        for (size_t i = 0; i < spent.size(); ++i)
            std::printf("  %-20s %8.3f s\n", describe(Stage(i)), spent[i]);
        std::printf("  longest silence      %8.3f s (%s)\n", silence, describe(silent_stage));
    }
};

ParallelFor executor_of(int threads) {
    using atlas_test::run_on;
    switch (threads) {
    case 2:
        return run_on<2>;
    case 4:
        return run_on<4>;
    case 8:
        return run_on<8>;
    default:
        return nullptr;
    }
}

/// A memory figure of this process in megabytes ("VmRSS:" or "VmHWM:"); Linux only.
double status_mb(const char* line) {
    std::FILE* file = std::fopen("/proc/self/status", "r");
    char text[256];
    double kilobytes = 0;
    while (file != nullptr && std::fgets(text, sizeof text, file) != nullptr)
        if (std::strncmp(text, line, std::strlen(line)) == 0)
            kilobytes = std::atof(text + std::strlen(line));
    if (file != nullptr)
        std::fclose(file);
    return kilobytes / 1024;
}

/// Resets the peak memory of this process to its current memory and returns that.
double reset_peak() {
    if (std::FILE* file = std::fopen("/proc/self/clear_refs", "w")) {
        std::fputs("5", file);
        std::fclose(file);
    }
    return status_mb("VmRSS:");
}

struct Point {
    double x, y;
};

double turn(Point a, Point b, Point c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// The polygon projected along the coordinate axis closest to its Newell normal, counter-clockwise.
std::vector<Point> project_polygon(const TestMesh& mesh, const std::vector<uint32_t>& corners) {
    const size_t count = corners.size();
    double n[3] = {0, 0, 0};
    for (size_t i = 0; i < count; ++i) {
        const float* a = &mesh.positions[3 * corners[i]];
        const float* b = &mesh.positions[3 * corners[(i + 1) % count]];
        for (int k = 0; k < 3; ++k)
            n[k] +=
                double(a[(k + 1) % 3] - b[(k + 1) % 3]) * double(a[(k + 2) % 3] + b[(k + 2) % 3]);
    }
    int drop = 0;
    for (int k = 1; k < 3; ++k)
        if (std::fabs(n[k]) > std::fabs(n[drop]))
            drop = k;
    std::vector<Point> flat(count);
    for (size_t i = 0; i < count; ++i) {
        const float* p = &mesh.positions[3 * corners[i]];
        flat[i] = {p[(drop + 1) % 3], p[(drop + 2) % 3] * (n[drop] < 0 ? -1.0 : 1.0)};
    }
    return flat;
}

/// How well shaped the triangle at entry i of the remaining corners is; 0 if it is not an ear that
/// can be clipped.
double ear_quality(const std::vector<Point>& flat, const std::vector<uint32_t>& left, size_t i) {
    const size_t m = left.size();
    const Point a = flat[left[(i + m - 1) % m]], b = flat[left[i]], c = flat[left[(i + 1) % m]];
    const double area = turn(a, b, c);
    if (!(area > 0))
        return 0;
    for (uint32_t corner : left) {
        const Point p = flat[corner];
        const auto same = [&](Point q) { return p.x == q.x && p.y == q.y; };
        if (!same(a) && !same(b) && !same(c) && turn(a, b, p) >= 0 && turn(b, c, p) >= 0 &&
            turn(c, a, p) >= 0)
            return 0;
    }
    return area / ((c.x - a.x) * (c.x - a.x) + (c.y - a.y) * (c.y - a.y));
}

/// Triangulates by ear clipping; takes the second corner if no ear is left to clip.
void add_polygon(TestMesh& mesh, const std::vector<uint32_t>& corners) {
    const size_t count = corners.size();
    const std::vector<Point> flat = project_polygon(mesh, corners);
    std::vector<uint32_t> left(count);
    for (uint32_t i = 0; i < count; ++i)
        left[i] = i;
    mesh.false_edges.resize(mesh.indices.size(), k_none);
    while (left.size() >= 3) {
        const size_t m = left.size();
        size_t best = 1;
        double best_quality = 0;
        for (size_t i = 0; i < m && m > 3; ++i) {
            const double quality = ear_quality(flat, left, i);
            if (quality > best_quality) {
                best_quality = quality;
                best = i;
            }
        }
        const uint32_t ear[3] = {left[(best + m - 1) % m], left[best], left[(best + 1) % m]};
        mesh.triangle(corners[ear[0]], corners[ear[1]], corners[ear[2]]);
        for (int k = 0; k < 3; ++k) {
            const bool real = (ear[k] + 1) % count == ear[(k + 1) % 3];
            mesh.false_edges.push_back(real ? k_none : 0u);
        }
        left.erase(left.begin() + long(best));
    }
}

bool load(const Request& request, TestMesh& mesh) {
    host::ObjDocument document;
    host::IoError error;
    std::string text;
    if (!host::read_text(request.file, text, error) ||
        !host::parse_obj(request.file, std::move(text), document, error)) {
        std::fprintf(stderr, "%s\n", error.message.c_str());
        return false;
    }
    float low = document.positions[0], high = low;
    for (size_t i = 0; i < document.positions.size(); i += 3) {
        low = std::min(low, document.positions[i]);
        high = std::max(high, document.positions[i]);
    }
    for (int copy = 0; copy < request.copies; ++copy) {
        const uint32_t base = uint32_t(mesh.positions.size() / 3);
        for (size_t i = 0; i < document.positions.size(); ++i)
            mesh.positions.push_back(document.positions[i] +
                                     (i % 3 == 0 ? float(copy) * (high - low) : 0.0f));
        for (size_t p = 0; p < document.polygon_count(); ++p) {
            std::vector<uint32_t> corners;
            for (uint32_t c = document.corner_begin[p]; c < document.corner_begin[p + 1]; ++c) {
                uint32_t v = base + document.corner_vertex[c];
                if (std::find(corners.begin(), corners.end(), v) != corners.end())
                    v = mesh.vertex(mesh.positions[3 * v], mesh.positions[3 * v + 1],
                                    mesh.positions[3 * v + 2]);
                corners.push_back(v);
            }
            add_polygon(mesh, corners);
        }
    }
    mesh.connect();
    return true;
}

/// Opens every edge bent by at least the angle, on both sides.
void cut_bends(TestMesh& mesh, double degrees) {
    const double limit = std::cos(degrees * 3.14159265358979 / 180);
    const auto normal = [&](uint32_t t, double* n) {
        const float* p[3];
        for (int k = 0; k < 3; ++k)
            p[k] = &mesh.positions[3 * mesh.indices[3 * t + k]];
        double e[3], f[3];
        for (int k = 0; k < 3; ++k)
            e[k] = p[1][k] - p[0][k], f[k] = p[2][k] - p[0][k];
        double size = 0;
        for (int k = 0; k < 3; ++k) {
            n[k] = e[(k + 1) % 3] * f[(k + 2) % 3] - e[(k + 2) % 3] * f[(k + 1) % 3];
            size += n[k] * n[k];
        }
        for (int k = 0; k < 3 && size > 0; ++k)
            n[k] /= std::sqrt(size);
    };
    std::vector<uint32_t> open;
    for (uint32_t h = 0; h < mesh.indices.size(); ++h) {
        if (mesh.adjacency[h] == k_none || mesh.false_edges[h] != k_none)
            continue;
        double a[3], b[3];
        normal(h / 3, a);
        normal(mesh.adjacency[h], b);
        if (a[0] * b[0] + a[1] * b[1] + a[2] * b[2] <= limit)
            open.push_back(h);
    }
    for (uint32_t h : open)
        mesh.adjacency[h] = k_none;
}

void dump(const std::string& file, const TestMesh& mesh, const Result& result) {
    std::FILE* out = std::fopen(file.c_str(), "w");
    if (out == nullptr)
        return;
    for (size_t i = 0; i < mesh.positions.size(); i += 3)
        std::fprintf(out, "v %.9g %.9g %.9g\n", double(mesh.positions[i]),
                     double(mesh.positions[i + 1]), double(mesh.positions[i + 2]));
    for (size_t i = 0; i < result.uvs.size(); i += 2)
        std::fprintf(out, "vt %.9g %.9g\n", double(result.uvs[i]), double(result.uvs[i + 1]));
    for (uint32_t t = 0; t < mesh.faces(); ++t) {
        std::fprintf(out, "f");
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
            std::fprintf(out, " %u/%u", mesh.indices[c] + 1, result.indices[c] + 1);
        std::fprintf(out, "\n");
    }
    std::fclose(out);
}

bool parse(int count, char** words, Request& request) {
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        const auto value = [&]() { return i + 1 < count ? words[++i] : words[0]; };
        const auto is_set = [&](const char* name, bool& flag) {
            return word == name && (flag = true);
        };
        if (is_set("--check", request.check) || is_set("--stages", request.stages) ||
            is_set("--header", request.header) ||
            is_set("--cut-to-pack", request.options.cut_to_pack))
            continue;
        if (word == "--fast")
            request.options.quality = Quality::fast;
        else if (word == "--stretch")
            request.options.max_stretch = float(std::atof(value()));
        else if (word == "--size")
            std::sscanf(value(), "%ux%u", &request.options.width, &request.options.height);
        else if (word == "--gutter")
            request.options.gutter = float(std::atof(value()));
        else if (word == "--cut-angle")
            request.cut_angle = std::atof(value());
        else if (word == "--unpacked")
            request.packed = false;
        else if (word == "--threads")
            request.options.executor = executor_of(std::atoi(value()));
        else if (word == "--repeat")
            request.repeat = std::atoi(value());
        else if (word == "--effort")
            request.options.effort = std::atoi(value());
        else if (word == "--copies")
            request.copies = std::atoi(value());
        else if (word == "--dump")
            request.dump = value();
        else if (word[0] == '-' || !request.file.empty())
            return false;
        else
            request.file = word;
    }
    return !request.file.empty() && request.repeat > 0;
}

/// File name without folder and extension.
std::string base_name(const std::string& file) {
    const size_t slash = file.rfind('/');
    const std::string name = file.substr(slash == std::string::npos ? 0 : slash + 1);
    return name.substr(0, name.rfind('.'));
}

/// One measured series of runs and its last result.
struct Runs {
    Result result;
    Failure failure;
    double best = 1e30; ///< seconds
    StageClock stages;
};

void repeat(const Request& request, const Mesh& mesh, Runs& runs) {
    Options options = request.options;
    const clockid_t clock = options.executor == nullptr ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC;
    if (request.stages) {
        options.stage_progress = StageClock::report;
        options.user = &runs.stages;
    }
    std::vector<uint32_t> adjacency;
    for (int i = 0; i < request.repeat; ++i) {
        runs.stages = {};
        runs.stages.last = cpu_seconds();
        const double start = seconds(clock);
        runs.failure = request.packed ? create(mesh, options, runs.result)
                                      : partition(mesh, options, runs.result, adjacency);
        runs.best = std::min(runs.best, seconds(clock) - start);
        runs.stages.note(Stage::emission);
    }
}

int run(const Request& request) {
    TestMesh mesh;
    if (!load(request, mesh))
        return 3;
    if (request.cut_angle <= 180)
        cut_bends(mesh, request.cut_angle);
    Runs runs;
    const double held = reset_peak(); // the mesh, and memory not returned after reading it
    repeat(request, mesh.view(), runs);
    const Result& result = runs.result;
    const double best = runs.best;
    const double memory = status_mb("VmHWM:") - held;
    if (request.header)
        std::printf(
            "mesh,triangles,charts,seam,l2,worst,coverage,seconds,ktri_per_s,mb,over,faults\n");
    const std::string name = base_name(request.file);
    if (runs.failure.status != Status::ok) {
        std::printf("%s,%u,failed: %s (%u)\n", name.c_str(), mesh.faces(),
                    describe(runs.failure.status), runs.failure.element);
        return 1;
    }
    if (!request.dump.empty())
        dump(request.dump, mesh, result);
    const atlas_test::Judgement j =
        atlas_test::judge(mesh, request.options, result, request.packed, request.check);
    std::printf("%s,%u,%u,%.2f,%.4f,%.4f,%.3f,%.3f,%.0f,%.0f,%zu,%zu\n", name.c_str(), mesh.faces(),
                j.charts, j.seam, j.l2, j.worst_chart, j.coverage, best, mesh.faces() / best * 1e-3,
                memory, result.over_limit.size(), j.faults.size());
    if (request.stages)
        runs.stages.print();
    for (const std::string& fault : j.faults)
        std::printf("  %s\n", fault.c_str());
    return j.faults.empty() ? 0 : 1;
}

} // namespace

int main(int count, char** words) {
    Request request;
    if (!parse(count, words, request)) {
        std::fprintf(
            stderr,
            "usage: atlas_run MESH.obj [--fast] [--stretch S] [--size WxH] "
            "[--gutter G] [--cut-angle DEGREES] [--unpacked] [--check] "
            "[--cut-to-pack] [--effort N] [--repeat N] [--copies N] [--threads N] [--stages] "
            "[--header] [--dump FILE.obj]\n");
        return 2;
    }
    return run(request);
}
