#include "formats/gltf_accessor.h"

#include <algorithm>
#include <cstring>

namespace formats {
namespace {

size_t component_size(int type) {
    switch (type) {
    case 5120: // BYTE
    case 5121: // UNSIGNED_BYTE
        return 1;
    case 5122: // SHORT
    case 5123: // UNSIGNED_SHORT
        return 2;
    case 5125: // UNSIGNED_INT
    case 5126: // FLOAT
        return 4;
    default:
        return 0;
    }
}

struct Shape {
    const char* name;
    int rows, columns;
};
constexpr Shape k_shapes[] = {{"SCALAR", 1, 1}, {"VEC2", 2, 1}, {"VEC3", 3, 1}, {"VEC4", 4, 1},
                              {"MAT2", 2, 2},   {"MAT3", 3, 3}, {"MAT4", 4, 4}};

bool fail(const std::string& reason, std::string& error) {
    error = reason;
    return false;
}

/// A member that is a number of at least 0; `missing` if there is none. Errors: UINT64_MAX.
uint64_t number_in(const Json& object, const char* key, uint64_t missing) {
    const auto found = object.find(key);
    if (found == object.end())
        return missing;
    return found->is_number_unsigned() ? found->get<uint64_t>() : UINT64_MAX;
}

template <class T>
T read(const char* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

class Reader {
public:
    Reader(const GltfFile& file, const Json& accessor, GltfElements& elements, std::string& error)
        : file_(file), accessor_(accessor), elements_(elements), error_(error) {}

    bool run() {
        return read_shape() && (accessor_.contains("bufferView") ? read_data() : fill_zeros()) &&
               (!accessor_.contains("sparse") || read_sparse(accessor_["sparse"]));
    }

private:
    bool read_shape();
    bool read_data();
    bool fill_zeros();
    bool read_sparse(const Json& sparse);
    /// Copies `count` elements of `size` bytes from a view; `stride` 0 means one after the other.
    bool copy(const Json& owner, uint64_t count, size_t size, bool is_strided, std::string& bytes);

    const GltfFile& file_;
    const Json& accessor_;
    GltfElements& elements_;
    std::string& error_;
};

bool Reader::read_shape() {
    const uint64_t count = number_in(accessor_, "count", UINT64_MAX);
    const uint64_t type = number_in(accessor_, "componentType", 0);
    const size_t one = type < 10000 ? component_size(int(type)) : 0;
    if (count == 0 || count > UINT32_MAX - 1)
        return fail("its count is not 1 to 4294967294", error_);
    if (one == 0)
        return fail("its componentType is not known", error_);
    const Json name = accessor_.value("type", Json());
    for (const Shape& shape : k_shapes)
        if (name == shape.name) {
            const size_t column = size_t(shape.rows) * one;
            elements_.components = shape.rows * shape.columns;
            elements_.size =
                shape.columns == 1 ? column : (column + 3) / 4 * 4 * size_t(shape.columns);
        }
    if (elements_.components == 0)
        return fail("its type is not known", error_);
    elements_.count = size_t(count);
    elements_.component_type = int(type);
    elements_.is_normalized = accessor_.value("normalized", Json(false)) == true;
    return true;
}

bool Reader::copy(const Json& owner, uint64_t count, size_t size, bool is_strided,
                  std::string& bytes) {
    const auto& views = file_.json.find("bufferViews");
    const uint64_t index = number_in(owner, "bufferView", UINT64_MAX);
    if (views == file_.json.end() || index >= views->size())
        return fail("it has no bufferView that exists", error_);
    const Json& view = (*views)[index];
    const uint64_t first = number_in(owner, "byteOffset", 0);
    const uint64_t length = number_in(view, "byteLength", 0);
    const uint64_t stride = is_strided ? number_in(view, "byteStride", size) : size;
    // Counts and strides are small enough for the product.
    if (first > length || stride < size || (count - 1) * stride + size > length - first)
        return fail("it reaches beyond bufferView " + std::to_string(index), error_);
    const char* from = file_.buffers[number_in(view, "buffer", 0)].data() +
                       number_in(view, "byteOffset", 0) + first;
    bytes.resize(count * size);
    for (uint64_t i = 0; i < count; ++i)
        std::memcpy(bytes.data() + i * size, from + i * stride, size);
    return true;
}

bool Reader::read_data() {
    return copy(accessor_, elements_.count, elements_.size, true, elements_.bytes);
}

bool Reader::fill_zeros() {
    // A few bytes of text must not ask for gigabytes.
    uint64_t in_file = 1u << 16;
    for (const std::string& buffer : file_.buffers)
        in_file += buffer.size();
    if (elements_.count > in_file)
        return fail("it has no data for its " + std::to_string(elements_.count) + " elements",
                    error_);
    elements_.bytes.assign(elements_.count * elements_.size, '\0');
    return true;
}

bool Reader::read_sparse(const Json& sparse) {
    const uint64_t count = sparse.is_object() ? number_in(sparse, "count", 0) : 0;
    const Json indices = sparse.is_object() ? sparse.value("indices", Json()) : Json();
    const Json values = sparse.is_object() ? sparse.value("values", Json()) : Json();
    if (count == 0 || count > elements_.count || !indices.is_object() || !values.is_object())
        return fail("its sparse part is incomplete", error_);
    GltfElements places;
    const uint64_t type = number_in(indices, "componentType", 0);
    places.component_type = type < 10000 ? int(type) : 0;
    places.components = 1;
    places.size = component_size(places.component_type);
    places.count = size_t(count);
    if (type != 5121 && type != 5123 && type != 5125)
        return fail("its sparse indices have an unknown componentType", error_);
    std::string bytes;
    if (!copy(indices, count, places.size, false, places.bytes) ||
        !copy(values, count, elements_.size, false, bytes))
        return false;
    for (size_t i = 0; i < count; ++i) {
        const uint32_t place = places.index(i);
        if (place >= elements_.count)
            return fail("its sparse index " + std::to_string(place) + " is not below its count",
                        error_);
        std::memcpy(elements_.bytes.data() + place * elements_.size,
                    bytes.data() + i * elements_.size, elements_.size);
    }
    return true;
}

} // namespace

double GltfElements::number(size_t element, size_t component) const {
    const char* at = bytes.data() + element * size + component * component_size(component_type);
    const auto scaled = [&](double value, double max) {
        return is_normalized ? std::max(value / max, -1.0) : value;
    };
    switch (component_type) {
    case 5120:
        return scaled(read<int8_t>(at), 127.0);
    case 5121:
        return scaled(read<uint8_t>(at), 255.0);
    case 5122:
        return scaled(read<int16_t>(at), 32767.0);
    case 5123:
        return scaled(read<uint16_t>(at), 65535.0);
    case 5125:
        return read<uint32_t>(at);
    default:
        return double(read<float>(at));
    }
}

uint32_t GltfElements::index(size_t element) const {
    const char* at = bytes.data() + element * size;
    return component_type == 5121   ? read<uint8_t>(at)
           : component_type == 5123 ? read<uint16_t>(at)
                                    : read<uint32_t>(at);
}

bool read_accessor(const GltfFile& file, const Json& index, GltfElements& elements,
                   std::string& error) {
    elements = GltfElements();
    const auto accessors = file.json.find("accessors");
    if (!index.is_number_unsigned() || accessors == file.json.end() ||
        index.get<uint64_t>() >= accessors->size())
        return fail("accessor " + index.dump() + ": there is none of this number", error);
    const Json& accessor = (*accessors)[index.get<size_t>()];
    const std::string where = "accessor " + index.dump() + ": ";
    if (!accessor.is_object())
        return fail(where + "it is not an object", error);
    return Reader(file, accessor, elements, error).run() || fail(where + error, error);
}

} // namespace formats
