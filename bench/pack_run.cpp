/// Packs generated charts, or the charts of a mesh, and reports coverage and time.
///
///   pack_run [--fast|--quality] [--size W H] [--gutter G] [--repeat N] [--picture FILE.ppm]
///   WHAT...
///
/// WHAT is an OBJ file, or KIND:COUNT with KIND one of blobs, boxes, mixed, strips.
/// Each line gives: charts, border edges, coverage, processor seconds of the packing alone (best of
/// --repeat N), and a fingerprint of the layout.
#include "atlas/atlas.h"
#include "atlas/pack/pack.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

using namespace tessora::atlas;

namespace {

struct Charts {
    std::vector<double> points;
    std::vector<uint32_t> edges, edge_begin{0};
    size_t triangles = 0;

    void ring(const std::vector<std::array<double, 2>>& corners) {
        const uint32_t first = uint32_t(points.size() / 2), n = uint32_t(corners.size());
        for (uint32_t i = 0; i < n; ++i) {
            points.insert(points.end(), {corners[i][0], corners[i][1]});
            edges.insert(edges.end(), {first + i, first + (i + 1) % n});
        }
        edge_begin.push_back(uint32_t(edges.size() / 2));
    }
};

void add_blob(Charts& charts, std::mt19937& random, double size) {
    std::uniform_real_distribution<double> unit(0, 1);
    const double a2 = 0.4 * unit(random), a3 = 0.3 * unit(random), a5 = 0.15 * unit(random);
    const double p2 = 6.28 * unit(random), p3 = 6.28 * unit(random), p5 = 6.28 * unit(random);
    const double squash = 0.3 + 0.7 * unit(random);
    std::vector<std::array<double, 2>> corners;
    for (int i = 0; i < 160; ++i) {
        const double t = 6.283185307179586 * i / 160;
        const double r = size * (1 + a2 * std::cos(2 * t + p2) + a3 * std::cos(3 * t + p3) +
                                 a5 * std::cos(5 * t + p5));
        corners.push_back({r * std::cos(t), squash * r * std::sin(t)});
    }
    charts.ring(corners);
}

Charts generated(const std::string& kind, uint32_t count) {
    Charts charts;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> unit(0, 1);
    for (uint32_t i = 0; i < count; ++i) {
        const double size = 0.1 / (0.1 + unit(random));
        const bool box = kind == "boxes" || (kind == "mixed" && random() % 2 == 0);
        if (kind == "strips")
            charts.ring({{0, 0}, {10 * size, 0}, {10 * size, 0.3 * size}, {0, 0.3 * size}});
        else if (box)
            charts.ring({{0, 0}, {2 * size, 0}, {2 * size, size}, {0, size}});
        else
            add_blob(charts, random, size);
    }
    return charts;
}

struct Soup {
    std::vector<float> positions;
    std::vector<uint32_t> indices, adjacency;
};

Soup read_obj(const std::string& path) {
    Soup soup;
    std::ifstream in(path);
    std::string line, word;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        words >> word;
        if (word == "v") {
            float x = 0;
            for (int k = 0; k < 3 && words >> x; ++k)
                soup.positions.push_back(x);
        } else if (word == "f") {
            std::vector<uint32_t> corners;
            while (words >> word) {
                const long id = std::strtol(word.c_str(), nullptr, 10);
                corners.push_back(uint32_t(id > 0 ? id - 1 : long(soup.positions.size() / 3) + id));
            }
            for (size_t k = 2; k < corners.size(); ++k)
                soup.indices.insert(soup.indices.end(), {corners[0], corners[k - 1], corners[k]});
        }
        word.clear();
    }
    // Triangles are neighbours if exactly two share an edge.
    soup.adjacency.assign(soup.indices.size(), k_none);
    std::unordered_map<uint64_t, std::vector<uint32_t>> users;
    const auto key = [&](uint32_t h) {
        const uint64_t a = soup.indices[h], b = soup.indices[h % 3 == 2 ? h - 2 : h + 1];
        return a < b ? a << 32 | b : b << 32 | a;
    };
    for (uint32_t h = 0; h < soup.indices.size(); ++h)
        users[key(h)].push_back(h);
    for (uint32_t h = 0; h < soup.indices.size(); ++h) {
        const std::vector<uint32_t>& both = users[key(h)];
        if (both.size() == 2)
            soup.adjacency[h] = (both[0] == h ? both[1] : both[0]) / 3;
    }
    return soup;
}

Charts flattened(const std::string& path, Quality quality) {
    Charts charts;
    const Soup soup = read_obj(path);
    Mesh mesh;
    mesh.positions = {soup.positions.data(), soup.positions.size()};
    mesh.indices = {soup.indices.data(), soup.indices.size()};
    mesh.adjacency = {soup.adjacency.data(), soup.adjacency.size()};
    Options options;
    options.quality = quality;
    Result result;
    std::vector<uint32_t> opened;
    const Failure failure = partition(mesh, options, result, opened);
    if (failure.status != Status::ok) {
        std::fprintf(stderr, "%s: %s\n", path.c_str(), describe(failure.status));
        return charts;
    }
    charts.triangles = soup.indices.size() / 3;
    charts.points.assign(result.uvs.begin(), result.uvs.end());
    std::unordered_map<uint64_t, uint32_t> directed;
    const auto key = [&](uint32_t a, uint32_t b) { return uint64_t(a) << 32 | b; };
    const auto next = [](uint32_t h) { return h % 3 == 2 ? h - 2 : h + 1; };
    for (uint32_t h = 0; h < result.indices.size(); ++h)
        ++directed[key(result.indices[h], result.indices[next(h)])];
    std::vector<std::vector<uint32_t>> borders(result.chart_count);
    for (uint32_t h = 0; h < result.indices.size(); ++h) {
        const uint32_t a = result.indices[h], b = result.indices[next(h)];
        if (directed.count(key(b, a)) == 0)
            borders[result.chart[h / 3]].insert(borders[result.chart[h / 3]].end(), {a, b});
    }
    for (const std::vector<uint32_t>& border : borders) {
        charts.edges.insert(charts.edges.end(), border.begin(), border.end());
        charts.edge_begin.push_back(uint32_t(charts.edges.size() / 2));
    }
    return charts;
}

/// A hash of all bits of the placements, to compare layouts between compilers and machines.
uint32_t fingerprint(const Packing& packing) {
    uint64_t hash = 14695981039346656037ull;
    const auto add = [&](double value) {
        uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        hash = (hash ^ bits) * 1099511628211ull;
        hash ^= hash >> 29;
    };
    add(packing.scale);
    for (const Placement& p : packing.placements)
        for (double value : {p.cosine, p.sine, p.x, p.y})
            add(value);
    return uint32_t(hash >> 32);
}

/// Writes a picture with every chart in its own colour, filled by the even-odd rule; two pixels per
/// texel on small textures.
void draw(const std::string& path, const Charts& charts, const Packing& packing,
          const PackOptions& options) {
    const uint32_t zoom = options.width * options.height > 200000 ? 1 : 2;
    const uint32_t w = options.width * zoom, h = options.height * zoom;
    std::vector<uint8_t> pixels(size_t(3) * w * h, 24);
    const InnerRectangle inner = inner_rectangle(options.width, options.height, options.gutter);
    const double left = (options.width - inner.width) / 2,
                 low = (options.height - inner.height) / 2;
    for (size_t c = 0; c + 1 < charts.edge_begin.size(); ++c) {
        std::vector<std::vector<double>> rows(h);
        const Placement& at = packing.placements[c];
        const auto point = [&](size_t i) {
            const double x = charts.points[2 * size_t(charts.edges[i])] * packing.scale;
            const double y = charts.points[2 * size_t(charts.edges[i]) + 1] * packing.scale;
            return std::array<double, 2>{(at.cosine * x - at.sine * y + at.x + left) * zoom,
                                         (at.sine * x + at.cosine * y + at.y + low) * zoom};
        };
        for (size_t e = charts.edge_begin[c]; e < charts.edge_begin[c + 1]; ++e) {
            std::array<double, 2> a = point(2 * e), b = point(2 * e + 1);
            if (a[1] > b[1])
                std::swap(a, b);
            for (double y = std::ceil(a[1] - 0.5); y < std::ceil(b[1] - 0.5); ++y)
                if (y >= 0 && y < h)
                    rows[size_t(y)].push_back(a[0] +
                                              (y + 0.5 - a[1]) / (b[1] - a[1]) * (b[0] - a[0]));
        }
        const uint32_t colour = uint32_t(c) * 2654435761u;
        for (uint32_t y = 0; y < h; ++y) {
            std::sort(rows[y].begin(), rows[y].end());
            for (size_t i = 0; i + 1 < rows[y].size(); i += 2)
                for (double x = std::ceil(rows[y][i] - 0.5); x < rows[y][i + 1] - 0.5; ++x)
                    for (int k = 0; k < 3 && x >= 0 && x < w; ++k)
                        pixels[3 * (size_t(h - 1 - y) * w + size_t(x)) + size_t(k)] =
                            uint8_t(80 + (colour >> (8 * k + 4)) % 170);
        }
    }
    std::ofstream out(path, std::ios::binary);
    out << "P6\n" << w << " " << h << "\n255\n";
    out.write(reinterpret_cast<const char*>(pixels.data()), std::streamsize(pixels.size()));
}

/// Packs one WHAT of the command line, prints its line, and draws it if a picture is asked for.
void run(const std::string& what, PackOptions options, int repeat, const std::string& picture) {
    const size_t colon = what.find(':');
    const Charts charts =
        colon == std::string::npos
            ? flattened(what, options.quality)
            : generated(what.substr(0, colon), uint32_t(std::atoi(&what[colon + 1])));
    options.triangles = charts.triangles;
    Packing packing;
    double best = 1e9;
    for (int r = 0; r < repeat; ++r) {
        const std::clock_t start = std::clock();
        packing = pack_charts({{charts.points.data(), charts.points.size()},
                               {charts.edges.data(), charts.edges.size()},
                               {charts.edge_begin.data(), charts.edge_begin.size()}},
                              options);
        best = std::min(best, double(std::clock() - start) / CLOCKS_PER_SEC);
    }
    std::printf("%-40s %6zu charts  %7zu edges  coverage %.4f  %8.4f s  bits %08x%s\n",
                what.c_str(), charts.edge_begin.size() - 1, charts.edges.size() / 2,
                packing.coverage, best, fingerprint(packing),
                packing.status == Status::ok ? "" : "  DOES NOT FIT");
    std::fflush(stdout);
    if (!picture.empty() && packing.status == Status::ok)
        draw(picture, charts, packing, options);
}

} // namespace

int main(int argc, char** argv) {
    PackOptions options;
    std::string picture;
    int repeat = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--fast" || word == "--quality") {
            options.quality = word == "--fast" ? Quality::fast : Quality::quality;
        } else if (word == "--size" && i + 2 < argc) {
            options.width = uint32_t(std::atoi(argv[++i]));
            options.height = uint32_t(std::atoi(argv[++i]));
        } else if (word == "--gutter" && i + 1 < argc) {
            options.gutter = float(std::atof(argv[++i]));
        } else if (word == "--repeat" && i + 1 < argc) {
            repeat = std::atoi(argv[++i]);
        } else if (word == "--picture" && i + 1 < argc) {
            picture = argv[++i];
        } else {
            run(word, options, repeat, picture);
        }
    }
    return 0;
}
