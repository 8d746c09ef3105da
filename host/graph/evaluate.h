/// Evaluation of the graph: dirty marks are pushed downstream at once, values are pulled on demand.
///
/// Changing a plug marks dirty the outputs that it affects on its node, and everything connected
/// downstream of them. Nothing is computed until a value is read. A node's compute is called only
/// for a dirty output. The output stays dirty unless compute marks it clean; plugs that it feeds
/// then stay dirty too, and the next read evaluates again.
#pragma once

#include "host/graph/node.h"

#include <maya/MStatus.h>

namespace host::graph {

/// Marks dirty everything downstream of a slot whose value changed or is about to change.
MHOST_EXPORT void announce_change(Slot& slot);
/// Marks a slot and everything below it clean.
MHOST_EXPORT void set_clean(Slot& slot);
/// True if evaluating the slot would neither compute nor copy anything.
MHOST_EXPORT bool is_clean(const Slot& slot);

/// Brings a slot with its elements and components up to date. Returns the status of a failed
/// compute; the slot then keeps its previous value.
MHOST_EXPORT MStatus evaluate(Slot& slot);

/// Stores a value, converting numbers to the slot's type. Returns false if the types are not
/// compatible.
MHOST_EXPORT bool assign(Slot& slot, const PlugValue& value);
/// Copies a value from slot to slot, including elements and components. Returns false if the
/// structures differ.
MHOST_EXPORT bool copy_values(Slot& from, Slot& to);
/// Whether the two attributes have compatible types for a connection.
MHOST_EXPORT bool can_connect(const Slot& from, const Slot& to);

/// Sets a plug on behalf of a user or a plug-in. A vector with connected components is refused by
/// a strict host; in a lenient one these components take the value once they are disconnected
/// (docs/decisions/setting-a-connected-plug.md).
/// Errors: kFailure if the plug is locked, not writable or fed by a connection; kInvalidParameter
///         if the value has an incompatible type.
MHOST_EXPORT MStatus set_value(Slot& slot, const PlugValue& value);
/// Stores the value of a computed plug on behalf of its node: the plug is clean until something
/// that it depends on changes, and what it feeds is dirty. For values that were computed elsewhere.
MHOST_EXPORT void set_computed(Slot& output, const PlugValue& value);
/// The slot that stores a value written to `slot`: usually the slot itself, but writing a mesh
/// shape's outMesh writes its inMesh.
MHOST_EXPORT Slot& value_target(Slot& slot);
/// Whether a plug may be set at all. `set_value` checks this first.
MHOST_EXPORT MStatus may_set(Slot& slot);

} // namespace host::graph
