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

TEST(MeshFile, ContentTellsFbxAndCollada) {
    Trip trip;
    const std::string binary = "Kaydara FBX Binary  \0more";
    for (const std::string& bytes : {binary, std::string("; FBX 7.4.0 project file\n")}) {
        EXPECT_TRUE(trip.read("-", bytes));
        EXPECT_EQ(formats::Format::fbx, trip.file.format);
        EXPECT_TRUE(trip.file.is_foreign());
    }
    EXPECT_TRUE(trip.read("-", formats::deflate_gzip("<?xml version=\"1.0\"?>\n<COLLADA>")));
    EXPECT_EQ(formats::Format::dae, trip.file.format);
    EXPECT_EQ("<?xml version=\"1.0\"?>\n<COLLADA>", trip.file.inflated);
}

TEST(MeshFile, TextFbxNeverReplacesABinaryOne) {
    const test::Scratch dir;
    Trip trip;
    const std::string path = dir.put("a.fbx", "Kaydara FBX Binary"), other = dir.path("b.fbx");
    ASSERT_TRUE(trip.read(path, dir.get("a.fbx")));
    trip.file.document.name = path; // as the importer leaves it
    std::string error;
    EXPECT_FALSE(formats::can_write(trip.file, dir.root() + "/./a.fbx", {}, error));
    EXPECT_EQ(dir.root() + "/./a.fbx: binary FBX files cannot be written, only text ones (-o "
                           "OTHER.fbx); for programs that read no text (Blender), write OBJ or GLB",
              error);
    EXPECT_TRUE(formats::can_write(trip.file, other, {}, error)) << error;
    EXPECT_EQ(other +
                  ": text, not binary FBX; programs that read no text FBX (Blender) take OBJ or "
                  "GLB (--format glb)",
              formats::warning_about_result(trip.file, other, {}));
    EXPECT_EQ("", formats::warning_about_result(trip.file, "b.glb", {}));
    ASSERT_TRUE(trip.read("t.fbx", "; FBX 7.4.0"));
    EXPECT_EQ("", formats::warning_about_result(trip.file, "b.fbx", {}));
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
