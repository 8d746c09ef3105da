/// MPlug: reading, writing and navigating slots.
#include "host/base/fault.h"
#include "host/graph/data.h"
#include "host/graph/evaluate.h"

#include <maya/MDataHandle.h>
#include <maya/MPlug.h>
#include <maya/MPlugArray.h>

using host::pass_fault;
using host::report;
using host::graph::Attribute;
using host::graph::AttributeKind;
using host::graph::Node;
using host::graph::PlugValue;
using host::graph::Slot;
using host::graph::ValueKind;

namespace {

/// Passes the fault point and checks that the plug is not null.
MStatus enter(const char* point, const Slot* slot) {
    const MStatus status = pass_fault(point);
    return status && slot == nullptr ? MStatus(MS::kInvalidParameter) : status;
}

/// Also checks that the slot has the required kind.
MStatus enter(const char* point, const Slot* slot, bool (Slot::*is_kind)() const) {
    const MStatus status = enter(point, slot);
    return status && !(slot->*is_kind)() ? MStatus(MS::kFailure) : status;
}

/// Number of child slots for which `fits` is true; 0 if `status` is a failure.
unsigned int count_below(const Slot* slot, bool (Slot::*fits)() const, const MStatus& status,
                         MStatus* result) {
    unsigned int count = 0;
    if (report(result, status))
        for (const auto& below : slot->below())
            count += (below.get()->*fits)() ? 1 : 0;
    return count;
}

MString text_of(const Slot& slot, bool long_names) { return slot.path(long_names).c_str(); }

} // namespace

MPlug::MPlug() : slot_(NULL) {}

MPlug::MPlug(Slot* slot) : slot_(slot) {
    if (slot_ == NULL)
        return;
    node_ = MObject(&slot_->node());
    attribute_ = MObject(&slot_->attribute());
}

MPlug::MPlug(const MObject& node, const MObject& attribute) : slot_(NULL) {
    Node* const owner = host::graph::node_of(node);
    const Attribute* const wanted = host::graph::attribute_of(attribute);
    if (owner == NULL || wanted == NULL || !owner->owns(*wanted))
        return;
    slot_ = owner->slot(*wanted);
    node_ = node;
    attribute_ = attribute;
}

MPlug::MPlug(const MPlug& other) = default;
MPlug& MPlug::operator=(const MPlug& other) = default;
MPlug::~MPlug() = default;

MObject MPlug::node(MStatus* ReturnStatus) const {
    MStatus status = pass_fault("MPlug::node");
    if (status && node_.isNull())
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? node_ : MObject();
}

MObject MPlug::attribute(MStatus* ReturnStatus) const {
    MStatus status = pass_fault("MPlug::attribute");
    if (status && attribute_.isNull())
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? attribute_ : MObject();
}

MString MPlug::name(MStatus* ReturnStatus) const {
    if (!report(ReturnStatus, enter("MPlug::name", slot_)))
        return MString();
    return slot_->node().name() + "." + text_of(*slot_, true);
}

MString MPlug::partialName(bool includeNodeName, bool, bool, bool, bool, bool useLongNames,
                           MStatus* ReturnStatus) const {
    if (!report(ReturnStatus, enter("MPlug::partialName", slot_)))
        return MString();
    const MString text = text_of(*slot_, useLongNames);
    return includeNodeName ? slot_->node().name() + "." + text : text;
}

// === Kind of plug ============================================================================

bool MPlug::isNull(MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return attribute_.isNull();
}

bool MPlug::isArray(MStatus* ReturnStatus) const {
    return report(ReturnStatus, enter("MPlug::isArray", slot_)) && slot_->is_array();
}

bool MPlug::isElement(MStatus* ReturnStatus) const {
    return report(ReturnStatus, enter("MPlug::isElement", slot_)) && slot_->is_element();
}

bool MPlug::isCompound(MStatus* ReturnStatus) const {
    return report(ReturnStatus, enter("MPlug::isCompound", slot_)) &&
           slot_->attribute().is_compound();
}

bool MPlug::isChild(MStatus* ReturnStatus) const {
    return report(ReturnStatus, enter("MPlug::isChild", slot_)) &&
           slot_->attribute().parent() != nullptr;
}

bool MPlug::isNetworked(MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return slot_ != NULL;
}

bool MPlug::isKeyable(MStatus* ReturnStatus) const {
    return report(ReturnStatus, enter("MPlug::isKeyable", slot_)) && slot_->keyable;
}

bool MPlug::isLocked(MStatus* ReturnStatus) const {
    if (!report(ReturnStatus, enter("MPlug::isLocked", slot_)))
        return false;
    for (const Slot* at = slot_; at != NULL; at = at->parent())
        if (at->locked)
            return true;
    return false;
}

// === Connections =============================================================================

bool MPlug::isConnected(MStatus* ReturnStatus) const {
    return report(ReturnStatus, enter("MPlug::isConnected", slot_)) && slot_->is_connected();
}

bool MPlug::connectedTo(MPlugArray& array, bool asDst, bool asSrc, MStatus* ReturnStatus) const {
    const MStatus status = report(ReturnStatus, enter("MPlug::connectedTo", slot_));
    if (!status)
        return false;
    array.clear();
    if (asDst && slot_->source() != nullptr)
        array.append(MPlug(slot_->source()));
    if (asSrc)
        for (Slot* destination : slot_->destinations())
            array.append(MPlug(destination));
    return slot_->is_connected();
}

// === Elements ================================================================================

unsigned int MPlug::numElements(MStatus* ReturnStatus) const {
    return count_below(slot_, &Slot::is_in_block,
                       enter("MPlug::numElements", slot_, &Slot::is_array), ReturnStatus);
}

unsigned int MPlug::evaluateNumElements(MStatus* ReturnStatus) {
    MStatus status = enter("MPlug::evaluateNumElements", slot_, &Slot::is_array);
    if (!report(ReturnStatus, status))
        return 0;
    host::graph::evaluate(*slot_);
    return numElements();
}

unsigned int MPlug::numConnectedElements(MStatus* ReturnStatus) const {
    return count_below(slot_, &Slot::is_connected,
                       enter("MPlug::numConnectedElements", slot_, &Slot::is_array), ReturnStatus);
}

MPlug MPlug::elementByPhysicalIndex(unsigned int index, MStatus* ReturnStatus) const {
    MStatus status = enter("MPlug::elementByPhysicalIndex", slot_, &Slot::is_array);
    if (status)
        for (const auto& element : slot_->below()) {
            if (!element->is_in_block())
                continue;
            if (index == 0) {
                report(ReturnStatus, status);
                return MPlug(element.get());
            }
            index -= 1;
        }
    report(ReturnStatus, status ? MStatus(MS::kInvalidParameter) : status);
    return MPlug();
}

MPlug MPlug::elementByLogicalIndex(unsigned int index, MStatus* ReturnStatus) const {
    MStatus status = enter("MPlug::elementByLogicalIndex", slot_, &Slot::is_array);
    if (status && index > 0x7FFFFFFFu)
        status = MS::kInvalidParameter;
    if (!report(ReturnStatus, status))
        return MPlug();
    Slot* const element = slot_->element(index);
    element->enter_block();
    return MPlug(element);
}

unsigned int MPlug::logicalIndex(MStatus* ReturnStatus) const {
    MStatus status = enter("MPlug::logicalIndex", slot_, &Slot::is_element);
    return report(ReturnStatus, status) ? static_cast<unsigned int>(slot_->index()) : 0;
}

MPlug MPlug::array(MStatus* ReturnStatus) const {
    MStatus status = enter("MPlug::array", slot_, &Slot::is_element);
    return report(ReturnStatus, status) ? MPlug(slot_->parent()) : MPlug();
}

// === Components ==============================================================================

unsigned int MPlug::numChildren(MStatus* ReturnStatus) const {
    MStatus status = enter("MPlug::numChildren", slot_, &Slot::is_compound);
    return report(ReturnStatus, status)
               ? static_cast<unsigned int>(slot_->attribute().children().size())
               : 0;
}

unsigned int MPlug::numConnectedChildren(MStatus* ReturnStatus) const {
    return count_below(slot_, &Slot::is_connected,
                       enter("MPlug::numConnectedChildren", slot_, &Slot::is_compound),
                       ReturnStatus);
}

MPlug MPlug::child(unsigned int index, MStatus* ReturnStatus) const {
    MStatus status = enter("MPlug::child", slot_, &Slot::is_compound);
    if (status && index >= slot_->attribute().children().size())
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? MPlug(slot_->child(index)) : MPlug();
}

MPlug MPlug::child(const MObject& attribute, MStatus* ReturnStatus) const {
    MStatus status = enter("MPlug::child", slot_);
    const Attribute* const wanted = host::graph::attribute_of(attribute);
    if (status && !slot_->is_compound())
        status = MS::kFailure;
    if (status && (wanted == NULL || wanted->parent() != &slot_->attribute()))
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? MPlug(slot_->child(wanted->index_in_parent())) : MPlug();
}

MPlug MPlug::parent(MStatus* ReturnStatus) const {
    MStatus status = enter("MPlug::parent", slot_);
    if (status && slot_->attribute().parent() == nullptr)
        status = MS::kFailure;
    if (!report(ReturnStatus, status))
        return MPlug();
    return MPlug(slot_->is_element() ? slot_->parent()->parent() : slot_->parent());
}

// === Reading =================================================================================

namespace {

/// Evaluates the plug and checks that it holds a single number.
MStatus read_number(const char* point, Slot* slot, double& number) {
    MStatus status = enter(point, slot);
    if (!status)
        return status;
    status = host::graph::evaluate(*slot);
    if (status && !(slot->is_leaf() && slot->attribute().is_number()))
        status = MS::kInvalidParameter;
    if (status)
        number = slot->value.number();
    return status;
}

template <class T>
MStatus read_as(const char* point, Slot* slot, ValueKind kind, T& value,
                T& (PlugValue::*access)()) {
    double number = 0.0;
    const MStatus status = read_number(point, slot, number);
    if (!status)
        return status;
    PlugValue converted = PlugValue::zero(kind);
    converted.assign_number(number);
    value = (converted.*access)();
    return status;
}

/// The value as an independent data object.
host::Ref<host::Object> read_object(Slot& slot) {
    if (slot.is_compound()) {
        const Attribute& attribute = slot.attribute();
        if (attribute.tuple == host::graph::Tuple::none)
            return {};
        host::Ref<host::graph::NumericData> data = new host::graph::NumericData(attribute.tuple);
        for (unsigned int i = 0; i < data->size(); ++i)
            data->component(i).assign_number(slot.child(i)->value.number());
        return data.get();
    }
    if (!slot.is_leaf())
        return {};
    if (slot.attribute().kind() == AttributeKind::text)
        return new host::graph::StringData(
            slot.value.kind() == ValueKind::text ? slot.value.as_text() : MString());
    host::Object* const held = slot.value.as_data();
    return held == nullptr ? host::Ref<host::Object>() : host::graph::copy_of_data(*held);
}

} // namespace

MStatus MPlug::getValue(MObject& value) const {
    MStatus status = enter("MPlug::getValue", slot_);
    if (status)
        status = host::graph::evaluate(*slot_);
    if (!status)
        return status;
    const host::Ref<host::Object> object = read_object(*slot_);
    if (!object)
        return MS::kFailure;
    value = MObject(object.get());
    return status;
}

MStatus MPlug::getValue(double& value) const {
    return read_number("MPlug::getValue", slot_, value);
}
MStatus MPlug::getValue(float& value) const {
    return read_as("MPlug::getValue", slot_, ValueKind::real32, value, &PlugValue::as_float);
}
MStatus MPlug::getValue(int& value) const {
    return read_as("MPlug::getValue", slot_, ValueKind::integer, value, &PlugValue::as_int);
}
MStatus MPlug::getValue(short& value) const {
    return read_as("MPlug::getValue", slot_, ValueKind::short_, value, &PlugValue::as_short);
}
MStatus MPlug::getValue(bool& value) const {
    return read_as("MPlug::getValue", slot_, ValueKind::boolean, value, &PlugValue::as_bool);
}
MStatus MPlug::getValue(char& value) const {
    return read_as("MPlug::getValue", slot_, ValueKind::byte, value, &PlugValue::as_byte);
}

MStatus MPlug::getValue(MString& value) const {
    MStatus status = enter("MPlug::getValue", slot_);
    if (status)
        status = host::graph::evaluate(*slot_);
    if (status && !(slot_->is_leaf() && slot_->attribute().kind() == AttributeKind::text))
        status = MS::kInvalidParameter;
    if (status)
        value = slot_->value.kind() == ValueKind::text ? slot_->value.as_text() : MString();
    return status;
}

MObject MPlug::asMObject(MStatus* ReturnStatus) const {
    MObject value;
    report(ReturnStatus, getValue(value));
    return value;
}
double MPlug::asDouble(MStatus* ReturnStatus) const {
    double value = 0.0;
    report(ReturnStatus, getValue(value));
    return value;
}
float MPlug::asFloat(MStatus* ReturnStatus) const {
    float value = 0.0f;
    report(ReturnStatus, getValue(value));
    return value;
}
int MPlug::asInt(MStatus* ReturnStatus) const {
    int value = 0;
    report(ReturnStatus, getValue(value));
    return value;
}
short MPlug::asShort(MStatus* ReturnStatus) const {
    short value = 0;
    report(ReturnStatus, getValue(value));
    return value;
}
bool MPlug::asBool(MStatus* ReturnStatus) const {
    bool value = false;
    report(ReturnStatus, getValue(value));
    return value;
}
MString MPlug::asString(MStatus* ReturnStatus) const {
    MString value;
    report(ReturnStatus, getValue(value));
    return value;
}

// === Writing =================================================================================

namespace {

MStatus write(Slot* slot, const PlugValue& value) {
    const MStatus status = enter("MPlug::setValue", slot);
    return status ? host::graph::set_value(*slot, value) : status;
}

} // namespace

MStatus MPlug::setValue(const MObject& value) {
    return write(slot_, PlugValue::of_data(value.host_object()));
}
MStatus MPlug::setValue(double value) { return write(slot_, PlugValue::of_double(value)); }
MStatus MPlug::setValue(float value) { return write(slot_, PlugValue::of_float(value)); }
MStatus MPlug::setValue(int value) { return write(slot_, PlugValue::of_int(value)); }
MStatus MPlug::setValue(short value) { return write(slot_, PlugValue::of_short(value)); }
MStatus MPlug::setValue(bool value) { return write(slot_, PlugValue::of_bool(value)); }
MStatus MPlug::setValue(char value) { return write(slot_, PlugValue::of_byte(value)); }
MStatus MPlug::setValue(const MString& value) { return write(slot_, PlugValue::of_text(value)); }
MStatus MPlug::setValue(const char* value) { return write(slot_, PlugValue::of_text(value)); }

MStatus MPlug::setValue(MDataHandle& value) {
    if (value.host_slot() == NULL)
        return MS::kInvalidParameter;
    if (value.host_slot()->is_leaf())
        return write(slot_, value.host_slot()->value);
    const host::Ref<host::Object> object = read_object(*value.host_slot());
    return write(slot_, PlugValue::of_data(object.get()));
}

MStatus MPlug::setLocked(bool locked) {
    const MStatus status = enter("MPlug::setLocked", slot_);
    if (status)
        slot_->locked = locked;
    return status;
}

MStatus MPlug::setKeyable(bool keyable) {
    const MStatus status = enter("MPlug::setKeyable", slot_);
    if (status)
        slot_->keyable = keyable;
    return status;
}

bool MPlug::operator==(const MPlug& other) const {
    return slot_ == other.slot_ && attribute_ == other.attribute_ && node_ == other.node_;
}
bool MPlug::operator!=(const MPlug& other) const { return !(*this == other); }
bool MPlug::operator==(const MObject& attribute) const { return attribute_ == attribute; }
bool MPlug::operator!=(const MObject& attribute) const { return !(*this == attribute); }
