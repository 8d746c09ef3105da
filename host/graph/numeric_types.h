/// The interface's names for numeric types and what the graph calls them.
#pragma once

#include "host/graph/attribute.h"

#include <maya/MFnNumericData.h>

namespace host::graph {

/// Tuple::none for everything that is no pair or triple.
Tuple tuple_of(MFnNumericData::Type type);
/// The tuple of so many components of a kind; Tuple::none when there is no such thing.
Tuple tuple_of(AttributeKind kind, unsigned int count);
/// False for types that are no single number.
bool number_kind_of(MFnNumericData::Type type, AttributeKind& kind);
MFnNumericData::Type numeric_type_of(Tuple tuple);
/// Of a number or a tuple; kInvalid for other attributes.
MFnNumericData::Type numeric_type_of(const Attribute& attribute);

} // namespace host::graph
