#include "app/inline_mesh.h"

#include "host/io/obj_scale.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace app {
namespace {

using Json = nlohmann::ordered_json;

class MeshReader {
public:
    MeshReader(const Json& json, host::ObjDocument& document, std::string& error)
        : json_(json), document_(document), error_(error) {}

    bool read() {
        document_.name = "mesh";
        return check_members() && read_numbers("positions", 3, document_.positions) &&
               read_polygons() && read_coordinates();
    }

private:
    bool fail(const std::string& reason) {
        error_ = "mesh: " + reason;
        return false;
    }

    bool check_members() {
        if (!json_.is_object())
            return fail("it must be an object");
        for (const auto& [name, value] : json_.items()) {
            if (name != "positions" && name != "polygons" && name != "uvs" && name != "corner_uvs")
                return fail("there is no '" + name + "' in a mesh");
            if (!value.is_array())
                return fail("'" + name + "' must be an array");
        }
        if (!json_.contains("positions") || !json_.contains("polygons") ||
            json_["polygons"].empty())
            return fail("it needs positions and polygons");
        if (json_.contains("uvs") != json_.contains("corner_uvs"))
            return fail("'uvs' and 'corner_uvs' go together");
        return true;
    }

    bool read_numbers(const char* name, size_t group, std::vector<float>& numbers) {
        const Json& list = json_[name];
        if (list.size() % group != 0)
            return fail(std::string(name) + " come " + std::to_string(group) + " by " +
                        std::to_string(group));
        numbers.reserve(list.size());
        for (const Json& value : list) {
            const float number = value.is_number() ? value.get<float>() : NAN;
            if (!std::isfinite(number))
                return fail(std::string(name) + "[" + std::to_string(numbers.size()) +
                            "] is not a finite number in single precision");
            numbers.push_back(number);
        }
        return true;
    }

    /// An index below `count`; `place` is that of the polygon.
    bool read_index(const Json& value, const char* name, size_t place, size_t count,
                    uint32_t& index) {
        if (!value.is_number_unsigned() || value.get<uint64_t>() >= count)
            return fail(std::string(name) + "[" + std::to_string(place) +
                        "]: " + value.dump(-1, ' ', false, Json::error_handler_t::replace) +
                        " is not an index from 0 to " + std::to_string(int64_t(count) - 1));
        index = value.get<uint32_t>();
        return true;
    }

    bool read_polygons() {
        document_.corner_begin.push_back(0);
        for (const Json& polygon : json_["polygons"]) {
            const size_t place = document_.polygon_count();
            if (!polygon.is_array() || polygon.size() < 3)
                return fail("polygons[" + std::to_string(place) +
                            "] is not a list of three vertices or more");
            for (const Json& value : polygon) {
                uint32_t vertex = 0;
                if (!read_index(value, "polygons", place, document_.vertex_count(), vertex))
                    return false;
                document_.corner_vertex.push_back(vertex);
            }
            document_.corner_begin.push_back(uint32_t(document_.corner_vertex.size()));
        }
        std::vector<double> exact(document_.positions.begin(), document_.positions.end());
        host::fit_to_single_precision(exact, document_);
        return true;
    }

    bool read_coordinates() {
        document_.corner_texture.assign(document_.corner_vertex.size(), host::k_obj_none);
        if (!json_.contains("uvs"))
            return true;
        if (!read_numbers("uvs", 2, document_.texture_coords))
            return false;
        const Json& lists = json_["corner_uvs"];
        if (lists.size() != document_.polygon_count())
            return fail("'corner_uvs' has " + std::to_string(lists.size()) + " lists for " +
                        std::to_string(document_.polygon_count()) + " polygons");
        for (size_t p = 0; p < lists.size(); ++p) {
            const uint32_t begin = document_.corner_begin[p], end = document_.corner_begin[p + 1];
            if (!lists[p].is_array() || lists[p].size() != end - begin)
                return fail("corner_uvs[" + std::to_string(p) + "] does not fit its polygon");
            for (uint32_t corner = begin; corner < end; ++corner)
                if (const Json& value = lists[p][corner - begin];
                    !value.is_null() &&
                    !read_index(value, "corner_uvs", p, document_.texture_count(),
                                document_.corner_texture[corner]))
                    return false;
        }
        return true;
    }

    const Json& json_;
    host::ObjDocument& document_;
    std::string& error_;
};

template <class Number>
void append_number(Number value, std::string& out) {
    char digits[32];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

} // namespace

bool mesh_from_json(const Json& json, host::ObjDocument& document, std::string& error) {
    return MeshReader(json, document, error).read();
}

std::string uvs_to_json(const host::ObjUvs& uvs) {
    std::string out = "{\"uvs\":[";
    for (size_t i = 0; i < uvs.u.size(); ++i) {
        out += i ? "," : "";
        append_number(uvs.u[i], out);
        out += ',';
        append_number(uvs.v[i], out);
    }
    out += "],\"corner_uvs\":[";
    for (size_t c = 0; c < uvs.corner_uv.size(); ++c) {
        out += c ? "," : "";
        append_number(uvs.corner_uv[c], out);
    }
    return out + "]}";
}

} // namespace app
