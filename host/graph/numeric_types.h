/// Conversion between the public numeric types (MFnNumericData) and the graph's own.
#pragma once

#include "host/graph/attribute.h"

#include <maya/MFnNumericData.h>

namespace host::graph {

/// Tuple::none if the type is not a pair or triple.
Tuple tuple_of(MFnNumericData::Type type);
/// The tuple of `count` components of a type; Tuple::none if there is none.
Tuple tuple_of(AttributeKind kind, unsigned int count);
/// Returns false if the type is not a single number.
bool number_kind_of(MFnNumericData::Type type, AttributeKind& kind);
MFnNumericData::Type numeric_type_of(Tuple tuple);
/// The public type of a number or tuple; kInvalid for other attributes.
MFnNumericData::Type numeric_type_of(const Attribute& attribute);

} // namespace host::graph
