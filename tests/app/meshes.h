/// OBJ files, as text, for tests of the program.
#pragma once

#include <string>

namespace test {

inline const std::string k_cube_vertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                                           "v 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\n";
inline const std::string k_cube_faces = "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\n"
                                        "f 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";
/// Six quads, no texture coordinates.
inline const std::string k_cube = k_cube_vertices + k_cube_faces;

/// Every quad is mapped to the whole unit square by itself.
inline const std::string k_cube_with_uvs =
    k_cube_vertices + "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n" +
    "f 1/1 4/2 3/3 2/4\nf 5/1 6/2 7/3 8/4\nf 1/1 2/2 6/3 5/4\n"
    "f 2/1 3/2 7/3 6/4\nf 3/1 4/2 8/3 7/4\nf 4/1 1/2 5/3 8/4\n";

/// A cube of side `scale` with n x n quads per side.
std::string cube_grid(int n, double scale = 1.0);

/// A steep open dome of n x n quads over a square; not developable.
std::string dome(int n, double scale = 1.0);

/// An L-shaped bar: five convex edges and one concave edge run along it.
std::string l_shape();

} // namespace test
