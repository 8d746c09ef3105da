#include "tests/atlas/shapes.h"

#include <array>
#include <cmath>
#include <map>

namespace atlas_test {
namespace {

constexpr double k_pi = 3.14159265358979323846;

/// Finds or makes the vertex at an integer position, so that neighbouring quads share it.
class Lattice {
public:
    explicit Lattice(TestMesh& mesh) : mesh_(mesh) {}
    uint32_t at(int x, int y, int z) {
        const auto [it, fresh] = ids_.insert({{x, y, z}, 0});
        if (fresh)
            it->second = mesh_.vertex(float(x), float(y), float(z));
        return it->second;
    }

private:
    TestMesh& mesh_;
    std::map<std::array<int, 3>, uint32_t> ids_;
};

/// The quads between two rows of vertices.
void add_strip(TestMesh& mesh, const std::vector<uint32_t>& low, const std::vector<uint32_t>& high,
               bool closed) {
    const size_t n = low.size();
    for (size_t i = 0; i + 1 < n + (closed ? 1 : 0); ++i)
        mesh.polygon({low[i], low[(i + 1) % n], high[(i + 1) % n], high[i]});
}

} // namespace

TestMesh cube_of_quads(uint32_t n) {
    TestMesh mesh;
    Lattice lattice(mesh);
    const int m = int(n);
    for (int axis = 0; axis < 3; ++axis)
        for (int side = 0; side < 2; ++side)
            for (int i = 0; i < m; ++i)
                for (int j = 0; j < m; ++j) {
                    std::vector<uint32_t> corners;
                    const int di[4] = {0, 1, 1, 0}, dj[4] = {0, 0, 1, 1};
                    for (int k = 0; k < 4; ++k) {
                        int p[3];
                        p[axis] = side * m;
                        p[(axis + 1) % 3] = i + (side != 0 ? di[k] : dj[k]);
                        p[(axis + 2) % 3] = j + (side != 0 ? dj[k] : di[k]);
                        corners.push_back(lattice.at(p[0], p[1], p[2]));
                    }
                    mesh.polygon(corners);
                }
    mesh.connect();
    return mesh;
}

TestMesh flat_grid(uint32_t n, bool quads) {
    TestMesh mesh;
    Lattice lattice(mesh);
    for (int i = 0; i < int(n); ++i)
        for (int j = 0; j < int(n); ++j)
            mesh.polygon({lattice.at(i, j, 0), lattice.at(i + 1, j, 0), lattice.at(i + 1, j + 1, 0),
                          lattice.at(i, j + 1, 0)});
    if (!quads)
        mesh.false_edges.clear();
    mesh.connect();
    return mesh;
}

TestMesh cylinder(uint32_t around, uint32_t along, bool caps) {
    TestMesh mesh;
    std::vector<std::vector<uint32_t>> rows(along + 1);
    for (uint32_t j = 0; j <= along; ++j)
        for (uint32_t i = 0; i < around; ++i) {
            const double a = 2 * k_pi * i / around;
            rows[j].push_back(
                mesh.vertex(float(std::cos(a)), float(std::sin(a)), float(3.0 * j / along)));
        }
    for (uint32_t j = 0; j < along; ++j)
        add_strip(mesh, rows[j], rows[j + 1], true);
    if (caps) {
        mesh.polygon(std::vector<uint32_t>(rows[0].rbegin(), rows[0].rend()));
        mesh.polygon(rows[along]);
    }
    mesh.connect();
    return mesh;
}

TestMesh sphere(uint32_t rings) {
    TestMesh mesh;
    const uint32_t around = 2 * rings;
    const uint32_t south = mesh.vertex(0, 0, -1), north = mesh.vertex(0, 0, 1);
    std::vector<std::vector<uint32_t>> rows;
    for (uint32_t j = 1; j < rings; ++j) {
        rows.emplace_back();
        const double b = k_pi * j / rings - k_pi / 2;
        for (uint32_t i = 0; i < around; ++i) {
            const double a = 2 * k_pi * i / around;
            rows.back().push_back(mesh.vertex(float(std::cos(a) * std::cos(b)),
                                              float(std::sin(a) * std::cos(b)),
                                              float(std::sin(b))));
        }
    }
    for (size_t j = 0; j + 1 < rows.size(); ++j)
        add_strip(mesh, rows[j], rows[j + 1], true);
    for (uint32_t i = 0; i < around; ++i) {
        mesh.triangle(south, rows.front()[(i + 1) % around], rows.front()[i]);
        mesh.triangle(north, rows.back()[i], rows.back()[(i + 1) % around]);
    }
    mesh.false_edges.clear();
    mesh.connect();
    return mesh;
}

TestMesh torus(uint32_t around, uint32_t along, double radius) {
    TestMesh mesh;
    std::vector<std::vector<uint32_t>> rows(along);
    for (uint32_t j = 0; j < along; ++j)
        for (uint32_t i = 0; i < around; ++i) {
            const double a = 2 * k_pi * i / around, b = 2 * k_pi * j / along;
            const double r = radius + std::cos(a);
            rows[j].push_back(
                mesh.vertex(float(r * std::cos(b)), float(r * std::sin(b)), float(std::sin(a))));
        }
    for (uint32_t j = 0; j < along; ++j)
        add_strip(mesh, rows[(j + 1) % along], rows[j], true);
    mesh.connect();
    return mesh;
}

TestMesh moebius(uint32_t along) {
    TestMesh mesh;
    std::vector<uint32_t> low, high;
    for (uint32_t i = 0; i < along; ++i) {
        const double a = 2 * k_pi * i / along, b = a / 2;
        for (int side = -1; side <= 1; side += 2) {
            const double r = 2 + 0.5 * side * std::cos(b);
            (side < 0 ? low : high)
                .push_back(mesh.vertex(float(r * std::cos(a)), float(r * std::sin(a)),
                                       float(0.5 * side * std::sin(b))));
        }
    }
    add_strip(mesh, low, high, false);
    mesh.polygon({low.back(), high.front(), low.front(), high.back()});
    mesh.connect();
    return mesh;
}

TestMesh fan(uint32_t count, double turns) {
    TestMesh mesh;
    const uint32_t hub = mesh.vertex(0, 0, 0);
    std::vector<uint32_t> rim;
    for (uint32_t i = 0; i < count; ++i) { // waves up and down, so that the angles grow
        const double a = 2 * k_pi * i / count;
        const double height = std::sqrt(std::max(0.0, turns * turns - 1)) * (i % 2 ? 1.0 : -1.0);
        rim.push_back(mesh.vertex(float(std::cos(a)), float(std::sin(a)), float(height)));
    }
    for (uint32_t i = 0; i < count; ++i)
        mesh.triangle(hub, rim[i], rim[(i + 1) % count]);
    mesh.connect();
    return mesh;
}

TestMesh washer(uint32_t n) {
    TestMesh mesh;
    Lattice lattice(mesh);
    for (int i = 0; i < int(3 * n); ++i)
        for (int j = 0; j < int(3 * n); ++j) {
            const bool hole = i >= int(n) && i < int(2 * n) && j >= int(n) && j < int(2 * n);
            if (!hole)
                mesh.polygon({lattice.at(i, j, 0), lattice.at(i + 1, j, 0),
                              lattice.at(i + 1, j + 1, 0), lattice.at(i, j + 1, 0)});
        }
    mesh.connect();
    return mesh;
}

TestMesh pierced_plate(uint32_t holes) {
    TestMesh mesh;
    Lattice lattice(mesh);
    const int columns = 2 * int(holes) + 1;
    const auto solid = [&](int i, int j) {
        return i >= 0 && j >= 0 && i < columns && j < 3 && !(j == 1 && i % 2 == 1);
    };
    for (int i = 0; i < columns; ++i)
        for (int j = 0; j < 3; ++j) {
            if (!solid(i, j))
                continue;
            mesh.polygon({lattice.at(i, j, 1), lattice.at(i + 1, j, 1), lattice.at(i + 1, j + 1, 1),
                          lattice.at(i, j + 1, 1)});
            mesh.polygon({lattice.at(i, j, 0), lattice.at(i, j + 1, 0), lattice.at(i + 1, j + 1, 0),
                          lattice.at(i + 1, j, 0)});
            const int side[4][4] = {{i, j, i + 1, j},
                                    {i + 1, j, i + 1, j + 1},
                                    {i + 1, j + 1, i, j + 1},
                                    {i, j + 1, i, j}};
            const int beyond[4][2] = {{i, j - 1}, {i + 1, j}, {i, j + 1}, {i - 1, j}};
            for (int k = 0; k < 4; ++k)
                if (!solid(beyond[k][0], beyond[k][1]))
                    mesh.polygon({lattice.at(side[k][0], side[k][1], 0),
                                  lattice.at(side[k][2], side[k][3], 0),
                                  lattice.at(side[k][2], side[k][3], 1),
                                  lattice.at(side[k][0], side[k][1], 1)});
        }
    mesh.connect();
    return mesh;
}

TestMesh loose_triangles(uint32_t count) {
    TestMesh mesh;
    for (uint32_t i = 0; i < count; ++i) {
        const float x = float(2 * i);
        const uint32_t a = mesh.vertex(x, 0, 0), b = mesh.vertex(x + 1, 0, 0);
        mesh.triangle(a, b, mesh.vertex(x, 1, 0));
    }
    mesh.connect();
    return mesh;
}

TestMesh ring_polygon(uint32_t sides) {
    TestMesh mesh;
    std::vector<uint32_t> inner, outer;
    for (uint32_t i = 0; i < sides; ++i) {
        const double a = 2 * k_pi * i / sides;
        inner.push_back(mesh.vertex(float(std::cos(a)), float(std::sin(a)), 0));
        outer.push_back(mesh.vertex(float(2 * std::cos(a)), float(2 * std::sin(a)), 0));
    }
    for (uint32_t i = 0; i < sides; ++i) {
        const uint32_t j = (i + 1) % sides;
        mesh.triangle(outer[i], outer[j], inner[i]);
        mesh.triangle(outer[j], inner[j], inner[i]);
    }
    mesh.connect();
    for (uint32_t n : mesh.adjacency)
        mesh.false_edges.push_back(n == tessora::atlas::k_none ? n : 0u);
    return mesh;
}

} // namespace atlas_test
