#!/usr/bin/env python3
"""Tests of the calculations in the benchmark scripts."""

import math
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import compare_peers
import growth
import road_table
import seams
import unwrap_runs


def measures(**changes):
    """Measures of a faultless layout, with some changed."""
    good = {"unmapped_corners": 0, "flipped": 0, "collapsed": 0, "mirrored_charts": 0, "outside": 0,
            "overlap_pairs_within": 0, "overlap_pairs_between": 0, "gap_texels": 2.1,
            "over_limit_broken": [], "dented": 0, "turned": 0}
    return {**good, **changes}


class Arithmetic(unittest.TestCase):
    def test_geometric_mean_is_nan_for_an_empty_list(self):
        self.assertAlmostEqual(unwrap_runs.geometric_mean([1, 4, 16]), 4)
        self.assertTrue(math.isnan(unwrap_runs.geometric_mean([])))

    def test_growth_exponent_is_that_of_a_power_law(self):
        sizes = [10, 100, 1000]
        self.assertAlmostEqual(unwrap_runs.growth_exponent(sizes, [3 * n**1.5 for n in sizes]), 1.5)

    def test_capacity_counts_grid_points_spaced_by_the_gutter(self):
        # 1024 x 256 with 8: the margin takes 8/256 of both sides; 992 and 248 are left.
        self.assertEqual(unwrap_runs.gutter_capacity(1024, 256, 8), 125 * 32)
        self.assertEqual(unwrap_runs.gutter_capacity(8, 8, 8), 0)
        self.assertEqual(unwrap_runs.gutter_capacity(8, 8, 0), math.inf)

    def test_has_uvs_looks_at_faces_only(self):
        with tempfile.TemporaryDirectory() as folder:
            mesh = pathlib.Path(folder) / "mesh.obj"
            for text, expected in [("vt 0 0\nf 1 2 3\n", False), ("f 1//1 2//2 3//3\n", False),
                                   ("f 1/1 2/2 3/3\n", True), ("f -3/-3/-3 -2/-2 -1/-1\n", True),
                                   ("f 1 2/5 3\n", True)]:
                mesh.write_text(text)
                self.assertEqual(unwrap_runs.has_uvs(mesh), expected, text)


class Seams(unittest.TestCase):
    def mesh(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "mesh.obj"
            path.write_text(text)
            return seams.Mesh(path)

    def strip(self, rise, opened):
        """Two squares of side 1 that share an edge; the second rises by so much."""
        second = "f 2/5 5/7 6/8 3/6" if opened else "f 2/2 5/7 6/8 3/3"
        return self.mesh("v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n" f"v 2 0 {rise}\nv 2 1 {rise}\n"
                         + "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvt 1.5 0\nvt 1.5 1\nvt 2.5 0\nvt 2.5 1\n"
                         "f 1/1 2/2 3/3 4/4\n" + second + "\n")

    def test_seams_are_told_by_how_much_the_surface_bends(self):
        degree = math.pi / 180
        for angle, expected in [(0, (1, 0)), (0.9, (1, 0)), (1.1, (0, 1)), (9.9, (0, 1)), (10.1, (0, 0))]:
            self.assertEqual(seams.seam_shares(self.strip(math.tan(angle * degree), True)), expected, angle)
        self.assertEqual(seams.seam_shares(self.strip(0, False)), (0, 0))

    def boxes(self, *uvs, width=1):
        """A square for each list of four coordinates; from the second on they are so wide."""
        text, corners = "", 0
        for i, uv in enumerate(uvs):
            w = width if i else 1
            text += f"v {3 * i} 0 0\nv {3 * i + w} 0 0\nv {3 * i + w} 1 0\nv {3 * i} 1 0\n"
            text += "".join(f"vt {u} {v}\n" for u, v in uv)
            text += "f " + " ".join(f"{corners + k}/{corners + k}" for k in range(1, 5)) + "\n"
            corners += 4
        return self.mesh(text)

    def test_congruent_parts_are_alike_if_their_sides_have_the_same_lengths_in_the_texture(self):
        square = [(0, 0), (0.2, 0), (0.2, 0.2), (0, 0.2)]
        turned = [(0.5, 0.5), (0.5, 0.7), (0.3, 0.7), (0.3, 0.5)]
        longer = [(0.6, 0.6), (0.9, 0.6), (0.9, 0.8), (0.6, 0.8)]
        self.assertEqual(seams.alike_parts(self.boxes(square, turned)), (2, 2))
        self.assertEqual(seams.alike_parts(self.boxes(square, turned, longer)), (3, 2))
        self.assertEqual(seams.alike_parts(self.boxes(square, turned, width=1.01)), (0, 0))


class RoadTable(unittest.TestCase):
    def test_a_good_layout_has_no_faults(self):
        self.assertEqual(road_table.faults(measures(), 2), [])
        self.assertEqual(road_table.faults(measures(gap_texels=None), 2), [])
        self.assertEqual(road_table.faults(measures(gap_texels=1.9901), 2), [])

    def test_every_fault_is_named(self):
        for key, value, word in [("flipped", 1, "flipped"), ("collapsed", 1, "collapsed"),
                                 ("unmapped_corners", 3, "unmapped"),
                                 ("mirrored_charts", 1, "mirrored"), ("outside", 1, "outside"),
                                 ("overlap_pairs_within", 1, "overlaps"),
                                 ("dented", 1, "dented"), ("turned", 2, "turned"),
                                 ("overlap_pairs_between", 1, "overlaps"),
                                 ("gap_texels", 1.98, "gap"), ("over_limit_broken", [4], "limit")]:
            found = road_table.faults(measures(**{key: value}), 2)
            self.assertEqual(len(found), 1, key)
            self.assertIn(word, found[0])

    def test_a_refusal_is_right_only_when_charts_are_many(self):
        few = road_table.refusal_verdict("no room", 1000, 1024, 256, 8)
        many = road_table.refusal_verdict("no room", 1001, 1024, 256, 8)
        self.assertTrue(few.startswith("BROKEN"))
        self.assertTrue(many.startswith("ok"))
        told = road_table.refusal_verdict("the 1300 charts do not fit", 10, 1024, 256, 8)
        self.assertTrue(told.startswith("ok"))
        self.assertTrue(road_table.refusal_verdict("", 0, 64, 64, 2).startswith("BROKEN"))


class ComparePeers(unittest.TestCase):
    def setUp(self):
        self.peers = compare_peers.read_peers(compare_peers.HERE / "peers.tsv")

    def test_the_table_of_peers_is_complete(self):
        self.assertEqual(len(self.peers), 23)
        self.assertEqual(self.peers["mine"]["smart_uv"]["charts"], 307)
        small = set(self.peers) - compare_peers.TOYS - compare_peers.LARGE
        self.assertEqual(sum(self.peers[n]["xatlas"]["charts"] for n in small), 6043)

    def test_the_best_peer_is_chosen_per_figure(self):
        best = compare_peers.better(self.peers["mine"])
        self.assertEqual((best["charts"], best["seam"], best["l2"], best["coverage"]),
                         (278, 27.5, 1.0043, 0.704))

    def test_ratios_are_ours_over_theirs_and_exclude_toys(self):
        row = {"charts": 139, "seam": 13.7, "l2": 1.01, "coverage": 0.7, "seconds": 1,
               "worst_l2": 1.1}
        means = compare_peers.summary({"mine": row, "tet": dict(row, charts=999)}, self.peers)
        self.assertEqual(means["meshes"], 1)
        self.assertAlmostEqual(means["charts, geometric mean of ratios"], 0.5)
        self.assertAlmostEqual(means["seams, geometric mean of ratios"], 0.5)
        self.assertAlmostEqual(means["coverage, furthest behind (mine)"], 0.683 - 0.7)

    def test_fast_is_compared_with_quality(self):
        row = {"charts": 10, "seam": 0.9, "coverage": 0.6}
        means = compare_peers.against_quality({"mine": dict(row, charts=12, coverage=0.58)},
                                              {"mine": row})
        self.assertAlmostEqual(means["charts, fast over quality, geometric mean"], 1.2)
        self.assertAlmostEqual(means["coverage, quality less fast, mean"], 0.02)


class Growth(unittest.TestCase):
    def test_a_torus_is_closed(self):
        points, triangles = growth.torus(8, 4)
        self.assertEqual((len(points), len(triangles)), (32, 64))
        edges = [frozenset(e) for a, b, c in triangles for e in ((a, b), (b, c), (c, a))]
        self.assertTrue(all(edges.count(e) == 2 for e in set(edges)))

    def test_subdividing_makes_four_and_keeps_edges_shared(self):
        points, triangles = growth.subdivide(*growth.torus(8, 4))
        self.assertEqual((len(points), len(triangles)), (32 + 96, 256))

    def test_replicas_share_nothing(self):
        points, triangles = growth.replicate(*growth.torus(8, 4), 3)
        self.assertEqual((len(points), len(triangles)), (96, 192))
        self.assertEqual({min(t) // 32 for t in triangles}, {0, 1, 2})
        self.assertTrue(all(max(t) // 32 == min(t) // 32 for t in triangles))

    def test_a_written_mesh_reads_back(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "mesh.obj"
            points, triangles = growth.torus(8, 4)
            growth.write_obj(path, points, triangles)
            read_points, read_triangles = growth.read_triangles(path)
        self.assertEqual(read_triangles, triangles)
        self.assertAlmostEqual(read_points[5][1], points[5][1], places=8)


if __name__ == "__main__":
    unittest.main()
