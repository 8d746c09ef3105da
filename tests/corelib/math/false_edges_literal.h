/// A slow and simple reference implementation of the false-edge repair. The product's must return
/// the same entries for every input.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

class LiteralRepair {
public:
    LiteralRepair(const std::vector<uint32_t>& corners, const std::vector<uint32_t>& adjacency,
                  std::vector<uint32_t>& false_edges)
        : corners_(corners), adjacency_(adjacency), false_edges_(false_edges) {}

    void run() {
        const uint32_t faces = static_cast<uint32_t>(corners_.size() / 3);
        checked_faces_.assign(faces, false);
        for (uint32_t f = 0; f < faces; ++f)
            if (!checked_faces_[f])
                polygon(f);
    }

private:
    static constexpr uint32_t k_none = 0xFFFFFFFFu;
    using List = std::vector<uint32_t>;

    bool real(uint32_t face, uint32_t k) const { return false_edges_[3 * face + k] == k_none; }
    uint32_t corner(uint32_t face, uint32_t k) const { return corners_[3 * face + k]; }

    int find_vertex_list(uint32_t vertex) const {
        for (size_t i = 0; i < vertex_lists_.size(); ++i)
            if (std::count(vertex_lists_[i].begin(), vertex_lists_[i].end(), vertex) != 0)
                return static_cast<int>(i);
        return -1;
    }
    List& list_of(uint32_t vertex) {
        return vertex_lists_[static_cast<size_t>(find_vertex_list(vertex))];
    }

    void merge_vertex_lists(int a, int b) {
        List& to = vertex_lists_[static_cast<size_t>(a)];
        const List& from = vertex_lists_[static_cast<size_t>(b)];
        to.insert(to.end(), from.begin(), from.end());
        vertex_lists_.erase(vertex_lists_.begin() + b);
    }

    void polygon(uint32_t f) {
        cur_poly_faces_.push_back(f);
        seed_polygon(f);
        checked_faces_[f] = true;
        for (uint32_t k = 0; k < 3; ++k)
            if (!real(f, k))
                check_queue_.push_back(adjacency_[3 * f + k]);
        bool failed = false;
        while (!check_queue_.empty()) {
            const uint32_t check_face = check_queue_.back();
            check_queue_.pop_back();
            if (check_face >= checked_faces_.size() || checked_faces_[check_face])
                continue;
            if (!add_face(check_face))
                failed = true;
            cur_poly_faces_.push_back(check_face);
            for (uint32_t k = 0; k < 3; ++k) {
                const uint32_t neighbor_index = adjacency_[3 * check_face + k];
                if (!real(check_face, k) &&
                    std::count(check_queue_.begin(), check_queue_.end(), neighbor_index) == 0)
                    check_queue_.push_back(neighbor_index);
            }
            checked_faces_[check_face] = true;
        }
        if (!failed)
            join();
        else if (vertex_lists_.size() != 1)
            for (const uint32_t face : cur_poly_faces_)
                for (uint32_t k = 0; k < 3; ++k)
                    false_edges_[3 * face + k] = k_none;
        vertex_lists_.clear();
        cur_poly_faces_.clear();
    }

    void seed_polygon(uint32_t f) {
        const uint32_t a = corner(f, 0), b = corner(f, 1), c = corner(f, 2);
        vertex_lists_.push_back({a});
        if (real(f, 0))
            list_of(a).push_back(b);
        else
            vertex_lists_.push_back({b});
        if (real(f, 2)) {
            list_of(a).push_back(c);
            if (real(f, 1) && find_vertex_list(b) != find_vertex_list(a))
                merge_vertex_lists(find_vertex_list(a), find_vertex_list(b));
        } else if (real(f, 1)) {
            list_of(b).push_back(c);
        } else {
            vertex_lists_.push_back({c});
        }
    }

    bool add_face(uint32_t g) {
        const bool a_new = find_vertex_list(corner(g, 0)) == -1;
        const bool b_new = find_vertex_list(corner(g, 1)) == -1;
        const bool c_new = find_vertex_list(corner(g, 2)) == -1;
        if (a_new)
            return !b_new && !c_new && add_corner(g, 0);
        if (b_new)
            return !c_new && add_corner(g, 1);
        return !c_new || add_corner(g, 2);
    }

    bool add_corner(uint32_t g, uint32_t k) {
        const uint32_t x = corner(g, k), next = corner(g, (k + 1) % 3),
                       previous = corner(g, (k + 2) % 3);
        const bool outgoing_real = real(g, k), incoming_real = real(g, (k + 2) % 3);
        if (!outgoing_real) {
            if (!incoming_real)
                vertex_lists_.push_back({x});
            else
                list_of(previous).push_back(x);
            return true;
        }
        list_of(next).push_back(x);
        if (incoming_real && find_vertex_list(previous) != find_vertex_list(next))
            merge_vertex_lists(find_vertex_list(next), find_vertex_list(previous));
        return true;
    }

    void join() {
        while (vertex_lists_.size() >= 2) {
            uint32_t t = k_none, edge = 0;
            int first = 0, second = 0;
            for (const uint32_t face : cur_poly_faces_) {
                first = find_vertex_list(corner(face, 0));
                second = find_vertex_list(corner(face, 1));
                edge = 0;
                if (first == second) {
                    second = find_vertex_list(corner(face, 2));
                    edge = 2;
                }
                if (first != second) {
                    t = face;
                    break;
                }
            }
            if (t == k_none)
                return;
            const uint32_t n = false_edges_[3 * t + edge];
            uint32_t back = 3;
            for (uint32_t k = 0; k < 3 && back == 3 && n < checked_faces_.size(); ++k)
                if (false_edges_[3 * n + k] == t)
                    back = k;
            false_edges_[3 * t + edge] = k_none;
            if (back != 3)
                false_edges_[3 * n + back] = k_none;
            merge_vertex_lists(first, second);
        }
    }

    const std::vector<uint32_t>& corners_;
    const std::vector<uint32_t>& adjacency_;
    std::vector<uint32_t>& false_edges_;
    std::vector<bool> checked_faces_;
    std::vector<uint32_t> cur_poly_faces_;
    std::vector<uint32_t> check_queue_;
    std::vector<List> vertex_lists_;
};
