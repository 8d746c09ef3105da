#include "app/mesh_conversion.h"

#include "app/atomic_file.h"
#include "app/file_formats.h"
#include "app/mesh_reader.h"

namespace app {
namespace {

host::ObjUvs uvs_of(const host::ObjDocument& document) {
    host::ObjUvs uvs;
    for (size_t i = 0; i < document.texture_count(); ++i) {
        uvs.u.push_back(document.texture_coords[2 * i]);
        uvs.v.push_back(document.texture_coords[2 * i + 1]);
    }
    for (const uint32_t id : document.corner_texture)
        uvs.corner_uv.push_back(id == host::k_obj_none ? -1 : static_cast<int32_t>(id));
    return uvs;
}

template <class Predicate>
std::vector<std::string> extensions_of(Predicate belongs) {
    std::vector<std::string> extensions;
    for (const formats::FormatFacts& facts : formats::all_formats())
        if (belongs(facts))
            extensions.emplace_back(facts.extension);
    return extensions;
}

} // namespace

std::vector<std::string> written_extensions() {
    return extensions_of([](const formats::FormatFacts& facts) { return facts.is_written; });
}

std::vector<std::string> read_extensions() {
    return extensions_of([](const formats::FormatFacts& facts) { return facts.is_read; });
}

std::string export_refusal(const std::string& path) {
    if (is_mesh_file(path))
        return output_refusal(path);
    return path + ": only " + written_format_names() + " files can be written";
}

bool convert_mesh(const std::string& from, const std::string& to, std::string& error) {
    formats::MeshFile file;
    host::IoError failure;
    std::string bytes;
    AtomicFile result;
    if (!read_mesh(from, {}, file, failure)) {
        error = failure.message;
        return false;
    }
    if (!formats::can_write(file, to, {}, error) || !result.open(to, error))
        return false;
    if (!formats::format_mesh(file, uvs_of(file.document), to, {}, bytes, error)) {
        error.insert(0, to + ": ");
        return false;
    }
    return result.write(bytes, error) && result.commit(error);
}

} // namespace app
