#include "host/graph/data.h"

#include "host/mesh/mesh_object.h"

namespace host::graph {

namespace {

ValueKind component_kind(Tuple tuple) {
    switch (tuple_component(tuple)) {
    case AttributeKind::short_:
        return ValueKind::short_;
    case AttributeKind::integer:
        return ValueKind::integer;
    case AttributeKind::real32:
        return ValueKind::real32;
    default:
        return ValueKind::real64;
    }
}

} // namespace

NumericData::NumericData(Tuple tuple) : Object(MFn::kNumericData), tuple_(tuple) {
    for (unsigned int i = 0; i < size(); ++i)
        components_[i] = PlugValue::zero(component_kind(tuple));
}
NumericData::~NumericData() = default;

StringData::StringData(const MString& t) : Object(MFn::kStringData), text(t) {}
StringData::~StringData() = default;

MatrixData::MatrixData(const MMatrix& m) : Object(MFn::kMatrixData), matrix(m) {}
MatrixData::~MatrixData() = default;

Ref<Object> mesh_data(const Mesh* mesh) {
    const MObject made = mesh == nullptr ? make_empty_mesh_data() : make_mesh_data(*mesh);
    return made.host_object();
}

Ref<Object> copy_of_data(Object& data) {
    switch (data.type()) {
    case MFn::kMeshData:
        return mesh_data(data.as_mesh()->mesh());
    case MFn::kNumericData: {
        const auto& source = static_cast<const NumericData&>(data);
        Ref<NumericData> copy = new NumericData(source.tuple());
        for (unsigned int i = 0; i < source.size(); ++i)
            copy->component(i) = source.component(i);
        return copy.get();
    }
    case MFn::kStringData:
        return new StringData(static_cast<const StringData&>(data).text);
    case MFn::kMatrixData:
        return new MatrixData(static_cast<const MatrixData&>(data).matrix);
    default:
        return &data;
    }
}

} // namespace host::graph
