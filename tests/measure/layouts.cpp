#include "tests/measure/layouts.h"

void add_face(measure::Layout& layout, const std::vector<uint32_t>& vertices,
              const UvCorners& uvs) {
    const auto first = static_cast<uint32_t>(layout.corner_vertex.size());
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        layout.corner_vertex.push_back(vertices[i]);
        layout.corner_uv.push_back(static_cast<uint32_t>(layout.uvs.size() / 2));
        layout.uvs.insert(layout.uvs.end(), uvs[i].begin(), uvs[i].end());
    }
    for (uint32_t i = 2; i < vertices.size(); ++i) {
        const uint32_t corners[] = {first, first + i - 1, first + i};
        layout.triangle_corners.insert(layout.triangle_corners.end(), corners, corners + 3);
        layout.triangle_polygon.push_back(layout.polygon_count);
    }
    ++layout.polygon_count;
}

void add_polygon(measure::Layout& layout, const UvCorners& places, const UvCorners& uvs) {
    std::vector<uint32_t> vertices;
    for (const auto& place : places) {
        vertices.push_back(layout.vertex_count());
        layout.positions.insert(layout.positions.end(), {place[0], place[1], 0.0f});
    }
    add_face(layout, vertices, uvs);
}

UvCorners rectangle(float left, float bottom, float right, float top) {
    return {{left, bottom}, {right, bottom}, {right, top}, {left, top}};
}

measure::Layout one_quad(const UvCorners& places, const UvCorners& uvs) {
    measure::Layout layout;
    add_polygon(layout, places, uvs);
    return layout;
}

measure::Layout cube_net() {
    measure::Layout layout;
    layout.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1};
    const float q = 0.25f;
    const auto cell = [q](int x, int y) {
        return rectangle(x * q, y * q, (x + 1) * q, (y + 1) * q);
    };
    add_face(layout, {4, 5, 6, 7}, cell(1, 1)); // +z, the middle of the cross
    add_face(layout, {0, 1, 5, 4}, cell(1, 0)); // -y below it
    add_face(layout, {7, 6, 2, 3}, cell(1, 2)); // +y above it
    add_face(layout, {3, 2, 1, 0}, cell(1, 3)); // -z on top
    add_face(layout, {0, 4, 7, 3}, cell(0, 1)); // -x to the left
    add_face(layout, {5, 1, 2, 6}, cell(2, 1)); // +x to the right
    return layout;
}

measure::Layout strip(int count, float gap) {
    measure::Layout layout;
    for (int i = 0; i <= count; ++i)
        layout.positions.insert(layout.positions.end(), {float(i), 0, 0, float(i), 1, 0});
    const float w = 1.0f / 16;
    for (int i = 0; i < count; ++i) {
        const auto v = static_cast<uint32_t>(2 * i);
        const float u = i * (w + gap);
        add_face(layout, {v, v + 2, v + 3, v + 1}, rectangle(u, 0, u + w, w));
    }
    return layout;
}

measure::Layout grid(uint32_t n) {
    measure::Layout layout;
    const float step = 1.0f / static_cast<float>(n);
    for (uint32_t y = 0; y <= n; ++y)
        for (uint32_t x = 0; x <= n; ++x) {
            const float place[] = {static_cast<float>(x) * step, static_cast<float>(y) * step};
            layout.positions.insert(layout.positions.end(), {place[0], place[1], 0.0f});
            layout.uvs.insert(layout.uvs.end(), place, place + 2);
        }
    for (uint32_t y = 0; y < n; ++y)
        for (uint32_t x = 0; x < n; ++x) {
            const uint32_t v = y * (n + 1) + x, w = v + n + 1;
            const auto first = static_cast<uint32_t>(layout.corner_vertex.size());
            for (uint32_t corner : {v, v + 1, w + 1, w}) {
                layout.corner_vertex.push_back(corner);
                layout.corner_uv.push_back(corner);
            }
            for (uint32_t corner : {0u, 1u, 2u, 0u, 2u, 3u})
                layout.triangle_corners.push_back(first + corner);
            layout.triangle_polygon.insert(layout.triangle_polygon.end(), 2, layout.polygon_count);
            ++layout.polygon_count;
        }
    return layout;
}
