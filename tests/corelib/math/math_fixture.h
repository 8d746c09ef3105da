/// Shared by the tests of corelib/math: records logged lines, creates devices and meshes.
#pragma once

#include "corelib/math/atlas_context.h"
#include "corelib/math/atlas_mesh.h"
#include "tests/corelib/support.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

/// Collects the lines sent to the message box; expects each in the debugger output as well.
class LoggedLines : public testing::Test {
protected:
    LoggedLines() {
        notices() = Notices();
        notices().answer = 1;
        setenv("OUTPUT_DEBUG_STRING_FILE", debugger_.path(), 1);
    }
    ~LoggedLines() override {
        std::string all;
        for (const std::string& text : notices().texts)
            all += text;
        EXPECT_EQ(debugger_.text(), all);
        unsetenv("OUTPUT_DEBUG_STRING_FILE");
    }

    /// The logged line without its level and line end; "" if none. Fails if more lines were logged.
    std::string logged() const {
        const std::vector<std::string>& texts = notices().texts;
        EXPECT_LE(texts.size(), 1u);
        if (texts.empty())
            return "";
        const std::string start = "[CRITICAL]: ";
        const std::string& text = texts.front();
        EXPECT_EQ(text.compare(0, start.size(), start), 0) << text;
        EXPECT_EQ(text.substr(text.size() - 2), "\r\n");
        return text.substr(start.size(), text.size() - start.size() - 2);
    }

private:
    TemporaryFile debugger_;
};

template <class T>
array<T> list_of(const std::vector<T>& values) {
    array<T> list;
    for (const T& value : values)
        list.append(value);
    return list;
}

template <class T>
std::vector<T> values_of(const array<T>& list) {
    return {list.data(), list.data() + list.count()};
}

/// `count` vertices, number i at (i, 2i, 3i), with arbitrary texture coordinates.
inline array<Vertex> vertices_in_a_row(uint32_t count) {
    array<Vertex> vertices;
    for (uint32_t i = 0; i < count; ++i) {
        const float at = static_cast<float>(i);
        vertices.append(Vertex{at, 2 * at, 3 * at, -7.0f, -8.0f});
    }
    return vertices;
}

/// Tests with a device for a 512x512 texture, released at the end.
class WithDevice : public LoggedLines {
protected:
    WithDevice() { EXPECT_TRUE(create_device(context_, nullptr, 0, 0.25f, 512, 512, 2.0f, true)); }
    ~WithDevice() override { release_device(context_); }

    ID3DXMesh* make_mesh(uint32_t vertices, const std::vector<uint32_t>& indices) {
        return create_mesh(context_, vertices_in_a_row(vertices), list_of(indices));
    }

    AtlasContext context_;
};

/// The square 0 1 2 3 in two triangles.
inline const std::vector<uint32_t> k_quad = {0, 1, 2, 0, 2, 3};
inline constexpr uint32_t k_none = 0xFFFFFFFFu;
