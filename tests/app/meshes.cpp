#include "tests/app/meshes.h"

#include <array>
#include <cstdio>
#include <map>

namespace test {
namespace {

std::string vertex(double x, double y, double z) {
    char line[128];
    std::snprintf(line, sizeof line, "v %.9g %.9g %.9g\n", x, y, z);
    return line;
}

std::string quad(int a, int b, int c, int d) {
    char line[64];
    std::snprintf(line, sizeof line, "f %d %d %d %d\n", a, b, c, d);
    return line;
}

} // namespace

std::string cube_grid(int n, double scale) {
    std::map<std::array<int, 3>, int> ids;
    std::string vertices, faces;
    const auto id = [&](std::array<int, 3> p) {
        const auto [at, is_new] = ids.try_emplace(p, static_cast<int>(ids.size()) + 1);
        if (is_new)
            vertices += vertex(scale * p[0] / n, scale * p[1] / n, scale * p[2] / n);
        return at->second;
    };
    for (size_t axis = 0; axis < 3; ++axis)
        for (int side = 0; side <= n; side += n)
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j) {
                    int corner[4];
                    for (int k = 0; k < 4; ++k) {
                        // Opposite sides have opposite corner order, so that all normals point
                        // outwards.
                        const int turn = side ? k : 3 - k;
                        std::array<int, 3> p;
                        p[axis] = side;
                        p[(axis + 1) % 3] = i + (turn == 1 || turn == 2);
                        p[(axis + 2) % 3] = j + (turn >= 2);
                        corner[k] = id(p);
                    }
                    faces += quad(corner[0], corner[1], corner[2], corner[3]);
                }
    return vertices + faces;
}

std::string dome(int n, double scale) {
    std::string text;
    for (int i = 0; i <= n; ++i)
        for (int j = 0; j <= n; ++j) {
            const double x = 2.0 * i / n - 1.0, y = 2.0 * j / n - 1.0;
            text += vertex(scale * x, scale * y, scale * -1.2 * (x * x + y * y));
        }
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            const int a = i * (n + 1) + j + 1;
            text += quad(a, a + n + 1, a + n + 2, a + 1);
        }
    return text;
}

std::string l_shape() {
    const double outline[6][2] = {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}};
    std::string text;
    for (int z = 0; z < 2; ++z)
        for (const auto& point : outline)
            text += vertex(point[0], point[1], z);
    text += "f 6 5 4 3 2 1\nf 7 8 9 10 11 12\n";
    for (int k = 0; k < 6; ++k) {
        const int next = (k + 1) % 6;
        text += quad(k + 1, next + 1, next + 7, k + 7);
    }
    return text;
}

} // namespace test
