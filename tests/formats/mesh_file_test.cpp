#include "formats/gzip.h"
#include "formats/mesh_file.h"
#include "tests/app/scratch.h"

#include <cstdio>

namespace {

const std::string k_triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

std::string inflated(const std::string& bytes) {
    std::string text, error;
    bool is_too_large = false;
    EXPECT_TRUE(formats::inflate_gzip(bytes, 1u << 30, text, is_too_large, error)) << error;
    return text;
}

/// Reads a mesh file from memory and writes it with a texture coordinate for every corner.
struct Trip {
    formats::MeshFile file;
    host::IoError error;
    bool read(const std::string& name, const std::string& bytes, uint64_t limit = 1u << 20) {
        formats::ReadOptions options;
        options.max_input = limit;
        return formats::parse_mesh(name, bytes, options, file, error);
    }
    std::string write(const std::string& name) const {
        host::ObjUvs uvs;
        uvs.u = {0.25f, 0.75f};
        uvs.v = {0.5f, 0.125f};
        for (size_t c = 0; c < file.document.corner_vertex.size(); ++c)
            uvs.corner_uv.push_back(int32_t(c % 2));
        std::string bytes, failure;
        EXPECT_TRUE(formats::format_mesh(file, uvs, name, {}, bytes, failure)) << failure;
        return bytes;
    }
};

TEST(MeshFile, CompressedObjIsReadAndWritten) {
    Trip trip;
    const std::string bytes = formats::deflate_gzip(k_triangle);
    ASSERT_TRUE(trip.read("m.obj.gz", bytes)) << trip.error.message;
    EXPECT_EQ(k_triangle, trip.file.document.text);
    EXPECT_EQ(bytes, trip.file.original());
    EXPECT_EQ(inflated(trip.write("out.obj.gz")), trip.write("out.obj"));
}

TEST(MeshFile, FormatIsThatOfTheContentIfTheNameDoesNotTell) {
    Trip trip;
    EXPECT_TRUE(trip.read("-", formats::deflate_gzip(k_triangle)));
    EXPECT_EQ(formats::Format::obj, trip.file.format);
    EXPECT_FALSE(trip.read("-", " {}"));
    EXPECT_EQ("-: JSON: this is not a glTF file: it has no asset", trip.error.message);
}

TEST(MeshFile, LimitHoldsForFilesThatAreNotCompressed) {
    Trip trip;
    EXPECT_FALSE(trip.read("m.obj", k_triangle, 10));
    EXPECT_EQ("m.obj: more than 10 bytes; --max_input allows more", trip.error.message);
    EXPECT_EQ(host::IoError::too_large, trip.error.kind);
    EXPECT_FALSE(trip.read("m.obj.gz", formats::deflate_gzip(k_triangle), 10));
    EXPECT_EQ(host::IoError::too_large, trip.error.kind);
    EXPECT_FALSE(trip.read("m.obj.gz", "\x1f\x8b"));
    EXPECT_EQ("m.obj.gz: the gzip data are cut off", trip.error.message);
    EXPECT_EQ(host::IoError::malformed, trip.error.kind);
}

TEST(MeshFile, DocumentHasTheTableOfFormats) {
    std::ostringstream document;
    document << std::ifstream(TESSORA_SOURCE_DIR "/docs/formats.md").rdbuf();
    std::string table;
    for (const formats::FormatFacts& f : formats::all_formats())
        table += std::string("| `") + f.name + "` | `" + f.extension + "` | " +
                 (f.is_read ? "yes" : "no") + " | " + (f.is_written ? "yes" : "no") + " | " +
                 f.loses + " | " + f.lacks + " |\n";
    std::printf("%s", table.c_str());
    EXPECT_NE(std::string::npos, document.str().find("|---|---|---|---|---|---|\n" + table + "\n"));
}

} // namespace
