#include "host/graph/numeric_types.h"

namespace host::graph {

namespace {

struct NumericTypeRow {
    MFnNumericData::Type type;
    Tuple tuple;
};
constexpr NumericTypeRow k_tuples[] = {
    {MFnNumericData::k2Short, Tuple::short2},   {MFnNumericData::k3Short, Tuple::short3},
    {MFnNumericData::k2Long, Tuple::int2},      {MFnNumericData::k3Long, Tuple::int3},
    {MFnNumericData::k2Float, Tuple::float2},   {MFnNumericData::k3Float, Tuple::float3},
    {MFnNumericData::k2Double, Tuple::double2}, {MFnNumericData::k3Double, Tuple::double3},
    {MFnNumericData::k4Double, Tuple::double4},
};

struct KindRow {
    MFnNumericData::Type type;
    AttributeKind kind;
};
constexpr KindRow k_kinds[] = {
    {MFnNumericData::kBoolean, AttributeKind::boolean},
    {MFnNumericData::kByte, AttributeKind::byte},
    {MFnNumericData::kChar, AttributeKind::byte},
    {MFnNumericData::kShort, AttributeKind::short_},
    {MFnNumericData::kLong, AttributeKind::integer},
    {MFnNumericData::kFloat, AttributeKind::real32},
    {MFnNumericData::kDouble, AttributeKind::real64},
};

} // namespace

Tuple tuple_of(MFnNumericData::Type type) {
    for (const NumericTypeRow& row : k_tuples)
        if (row.type == type)
            return row.tuple;
    return Tuple::none;
}

Tuple tuple_of(AttributeKind kind, unsigned int count) {
    for (const NumericTypeRow& row : k_tuples)
        if (tuple_component(row.tuple) == kind && tuple_size(row.tuple) == count)
            return row.tuple;
    return Tuple::none;
}

bool number_kind_of(MFnNumericData::Type type, AttributeKind& kind) {
    for (const KindRow& row : k_kinds)
        if (row.type == type) {
            kind = row.kind;
            return true;
        }
    return false;
}

MFnNumericData::Type numeric_type_of(Tuple tuple) {
    for (const NumericTypeRow& row : k_tuples)
        if (row.tuple == tuple)
            return row.type;
    return MFnNumericData::kInvalid;
}

MFnNumericData::Type numeric_type_of(const Attribute& attribute) {
    if (attribute.tuple != Tuple::none)
        return numeric_type_of(attribute.tuple);
    for (const KindRow& row : k_kinds)
        if (row.kind == attribute.kind())
            return row.type;
    return MFnNumericData::kInvalid;
}

} // namespace host::graph
