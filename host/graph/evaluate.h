/// Dirty marks travel downstream at once; values are pulled upstream on demand.
///
/// A change marks stale what it affects on its node and everything that connections lead to from
/// there. Nothing is computed until somebody asks. A node's compute is called only for a stale
/// output, and the output stays stale unless the compute says it is clean; what is fed by it then
/// stays stale too and asks again on the next pull.
#pragma once

#include "host/graph/node.h"

#include <maya/MStatus.h>

namespace host::graph {

/// Announces that a slot's value changed (or will): everything downstream becomes stale.
MHOST_EXPORT void announce_change(Slot& slot);
/// Marks a slot and all below it as not stale.
MHOST_EXPORT void set_clean(Slot& slot);
/// True when a pull would not compute or fetch anything.
MHOST_EXPORT bool is_clean(const Slot& slot);

/// Brings a slot, its elements and its components up to date as far as its node and what feeds it
/// allow. A failure of a compute is returned; the slot then keeps what it held.
MHOST_EXPORT MStatus evaluate(Slot& slot);

/// Gives a slot a value of another kind as far as numbers convert; false when they do not fit.
MHOST_EXPORT bool assign(Slot& slot, const Value& value);
/// Copies values from slot to slot, components included; false when the shapes differ.
MHOST_EXPORT bool copy_values(Slot& from, Slot& to);
/// Whether values of one attribute may travel to another along a connection.
MHOST_EXPORT bool can_connect(const Slot& from, const Slot& to);

/// Sets a plug as a user or a plug-in does: kFailure when it is locked, not writable or fed by a
/// connection, kInvalidParameter when the value does not fit. A vector whose components are fed by
/// connections takes the value all the same; the fed components hold it once the connection goes.
/// (docs/decisions/setting-a-connected-plug.md)
MHOST_EXPORT MStatus set_value(Slot& slot, const Value& value);
/// The slot that keeps what is written to a plug: the plug's own, except that an output may pass it
/// on (a mesh shape's outMesh is written through to its inMesh).
MHOST_EXPORT Slot& value_target(Slot& slot);
/// Whether a plug may be set at all; `set_value` begins with this.
MHOST_EXPORT MStatus may_set(Slot& slot);

} // namespace host::graph
