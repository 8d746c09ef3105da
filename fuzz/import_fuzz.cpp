/// Fuzz target: what the program makes of the importer's answer, and the writers of other formats.
/// The input is an answer, or describes a model in range or not, from which one is made.
#include "formats/model_stream.h"
#include "formats/model_writers.h"
#include "fuzz/finding.h"
#include "fuzz/mesh_file_check.h"

#include <algorithm>
#include <fuzzer/FuzzedDataProvider.h>

namespace {

using formats::Model;
using formats::ModelLayer;

/// Mostly below `count`; at times none, or any number.
uint32_t random_id(FuzzedDataProvider& input, size_t count) {
    const uint8_t kind = input.ConsumeIntegral<uint8_t>();
    if (kind == 255)
        return host::k_obj_none;
    return kind == 254 || count == 0 ? input.ConsumeIntegral<uint32_t>() : uint32_t(kind % count);
}

std::vector<float> random_numbers(FuzzedDataProvider& input, size_t count) {
    std::vector<float> numbers(count);
    for (float& number : numbers)
        number = input.ConsumeIntegral<uint8_t>() > 250
                     ? input.ConsumeFloatingPoint<float>()
                     : float(input.ConsumeIntegral<int8_t>()) / 4;
    return numbers;
}

std::vector<std::string> random_names(FuzzedDataProvider& input) {
    std::vector<std::string> names(input.ConsumeIntegralInRange<size_t>(0, 3));
    for (std::string& name : names)
        name = input.ConsumeRandomLengthString(6);
    return names;
}

ModelLayer random_layer(FuzzedDataProvider& input, const Model& model) {
    ModelLayer layer;
    layer.name = input.ConsumeRandomLengthString(4);
    layer.components = input.ConsumeIntegralInRange<size_t>(0, 5);
    if (input.ConsumeBool())
        return layer;
    const size_t count = input.ConsumeIntegralInRange<size_t>(0, 5);
    layer.values = random_numbers(input, count * layer.components);
    for (size_t c = 0; c < model.corner_vertex.size(); ++c)
        layer.corner.push_back(random_id(input, count));
    return layer;
}

Model random_model(FuzzedDataProvider& input) {
    Model model;
    const size_t vertices = input.ConsumeIntegralInRange<size_t>(0, 8);
    model.positions = random_numbers(input, 3 * vertices);
    model.materials = random_names(input);
    model.parts = random_names(input);
    model.left_out = random_names(input);
    model.metres = input.ConsumeBool() ? input.ConsumeFloatingPoint<double>() : 0.01;
    for (size_t p = input.ConsumeIntegralInRange<size_t>(0, 5); p > 0; --p) {
        for (size_t c = input.ConsumeIntegralInRange<size_t>(2, 6); c > 0; --c)
            model.corner_vertex.push_back(random_id(input, vertices));
        model.corner_begin.push_back(uint32_t(model.corner_vertex.size()));
        model.polygon_material.push_back(random_id(input, model.materials.size()));
        model.polygon_part.push_back(random_id(input, model.parts.size()));
    }
    model.uvs = random_layer(input, model);
    model.normals = random_layer(input, model);
    model.colors = random_layer(input, model);
    for (size_t i = input.ConsumeIntegralInRange<size_t>(0, 2); i > 0; --i)
        model.other_uvs.push_back(random_layer(input, model));
    for (size_t i = input.ConsumeIntegralInRange<size_t>(0, 4); i > 0; --i) {
        formats::ModelNode node;
        node.name = input.ConsumeRandomLengthString(4);
        node.parent = int32_t(random_id(input, model.nodes.size()));
        node.part = int32_t(random_id(input, model.parts.size()));
        const std::vector<float> numbers = random_numbers(input, input.ConsumeBool() ? 16 : 0);
        std::copy(numbers.begin(), numbers.end(), node.matrix.begin());
        model.nodes.push_back(node);
    }
    return model;
}

/// A result of unwrapping, as glTF, OBJ, PLY or FBX, is read again with as many polygons.
std::string check_written(Model model, const std::string& output) {
    formats::MeshFile file, again;
    file.format = formats::Format::fbx;
    file.document = formats::document_of(model, "in.fbx");
    file.model = std::move(model);
    if (const std::string broken = broken_invariant(file.document); !broken.empty())
        return broken;
    std::string written, reason;
    if (!formats::format_mesh(file, split_everywhere(file.document), output,
                              formats::WriteOptions(), written, reason))
        return reason.empty() ? "not written without a reason" : "";
    host::IoError error;
    if (!formats::parse_mesh(output, written, formats::ReadOptions(), again, error))
        return output + " is refused: " + error.message;
    return "";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const std::string bytes = input.ConsumeBool() ? formats::write_model_stream(random_model(input))
                                                  : input.ConsumeRemainingBytesAsString();
    Model model, again;
    std::string error;
    if (!formats::read_model_stream(bytes, model, error)) {
        report_finding(error.empty() ? "refused without a reason" : "");
        return 0;
    }
    const std::string written = formats::write_model_stream(model);
    if (!formats::read_model_stream(written, again, error))
        report_finding("what was written is refused: " + error);
    if (formats::write_model_stream(again) != written)
        report_finding("another model is read back");
    for (const char* output : {"out.obj", "out.ply", "out.glb", "out.fbx"})
        report_finding(check_written(model, output));
    return 0;
}
