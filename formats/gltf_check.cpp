/// What glTF files say with values of the wrong type, or with numbers of items that they do not
/// have, is refused before anything relies on it.
/// Source: the glTF 2.0 specification, section "Properties Reference".
#include "formats/gltf_file.h"

namespace formats {
namespace {

class Check {
public:
    Check(const Json& json, std::string& error) : json_(json), error_(error) {}
    bool run();

private:
    bool check_nodes();
    bool check_node(const Json& node, const std::string& place);
    bool check_meshes();
    bool check_primitive(const Json& primitive, const std::string& place);
    bool check_numbers(const Json& object, const char* key, size_t count, const std::string& place);
    bool check_index(const Json& value, const char* list, const std::string& place);
    bool check_indices(const Json& values, const char* list, const std::string& place);
    bool check_array(const Json& parent, const char* key, const std::string& place);
    bool fail(const std::string& reason) {
        error_ = "JSON: " + reason;
        return false;
    }
    /// A member; null if there is none.
    static const Json* find(const Json& object, const char* key) {
        const auto found = object.find(key);
        return found == object.end() ? nullptr : &*found;
    }

    const Json& json_;
    std::string& error_;
};

std::string item(const std::string& list, size_t number) {
    return list + "[" + std::to_string(number) + "]";
}

/// A member that is an array or absent.
bool Check::check_array(const Json& parent, const char* key, const std::string& place) {
    const Json* list = find(parent, key);
    return !list || list->is_array() || fail(place + key + " is not an array");
}

/// The number of an item in one of the file's lists.
bool Check::check_index(const Json& value, const char* list, const std::string& place) {
    const Json* items = find(json_, list);
    const size_t count = items ? items->size() : 0;
    return (value.is_number_unsigned() && value.get<uint64_t>() < count) ||
           fail(place + " is not the number of one of the " + std::to_string(count) + " " + list);
}

/// An array or object of such numbers.
bool Check::check_indices(const Json& values, const char* list, const std::string& place) {
    for (const auto& [key, value] : values.items()) {
        const std::string quoted = values.is_array() ? key : Json(key).dump();
        if (!check_index(value, list, place + "[" + quoted + "]"))
            return false;
    }
    return true;
}

/// A member of so many numbers, or absent.
bool Check::check_numbers(const Json& object, const char* key, size_t count,
                          const std::string& place) {
    const Json* values = find(object, key);
    bool good = !values || (values->is_array() && values->size() == count);
    for (size_t i = 0; values && good && i < count; ++i)
        good = (*values)[i].is_number();
    return good || fail(place + "." + key + " is not " + std::to_string(count) + " numbers");
}

bool Check::check_node(const Json& node, const std::string& place) {
    if (!node.is_object())
        return fail(place + " is not an object");
    const Json *children = find(node, "children"), *mesh = find(node, "mesh");
    return check_array(node, "children", place + ".") &&
           (!children || check_indices(*children, "nodes", place + ".children")) &&
           (!mesh || check_index(*mesh, "meshes", place + ".mesh")) &&
           check_numbers(node, "matrix", 16, place) &&
           check_numbers(node, "translation", 3, place) &&
           check_numbers(node, "rotation", 4, place) && check_numbers(node, "scale", 3, place);
}

bool Check::check_nodes() {
    const Json* nodes = find(json_, "nodes");
    for (size_t i = 0; nodes && i < nodes->size(); ++i)
        if (!check_node((*nodes)[i], item("nodes", i)))
            return false;
    return true;
}

bool Check::check_primitive(const Json& primitive, const std::string& place) {
    if (!primitive.is_object())
        return fail(place + " is not an object");
    const Json *attributes = find(primitive, "attributes"), *targets = find(primitive, "targets"),
               *indices = find(primitive, "indices");
    if (!attributes || !attributes->is_object())
        return fail(place + ".attributes is not an object");
    if (!check_indices(*attributes, "accessors", place + ".attributes") ||
        !check_array(primitive, "targets", place + ".") ||
        (indices && !check_index(*indices, "accessors", place + ".indices")))
        return false;
    for (size_t i = 0; targets && i < targets->size(); ++i) {
        const std::string name = item(place + ".targets", i);
        if (!(*targets)[i].is_object())
            return fail(name + " is not an object");
        if (!check_indices((*targets)[i], "accessors", name))
            return false;
    }
    return true;
}

bool Check::check_meshes() {
    const Json* meshes = find(json_, "meshes");
    for (size_t m = 0; meshes && m < meshes->size(); ++m) {
        const Json& mesh = (*meshes)[m];
        const std::string place = item("meshes", m);
        if (!mesh.is_object())
            return fail(place + " is not an object");
        if (!check_array(mesh, "primitives", place + "."))
            return false;
        const Json* primitives = find(mesh, "primitives");
        for (size_t p = 0; primitives && p < primitives->size(); ++p)
            if (!check_primitive((*primitives)[p], item(place + ".primitives", p)))
                return false;
    }
    return true;
}

bool Check::run() {
    if (!json_.is_object() || !json_.value("asset", Json()).is_object())
        return fail("this is not a glTF file: it has no asset");
    for (const char* list : {"buffers", "bufferViews", "accessors", "meshes", "nodes", "materials",
                             "images", "extensionsUsed", "extensionsRequired"})
        if (!check_array(json_, list, ""))
            return false;
    return check_nodes() && check_meshes();
}

} // namespace

bool check_gltf(const Json& json, std::string& error) { return Check(json, error).run(); }

} // namespace formats
