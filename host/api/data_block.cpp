/// Data blocks and data handles.
#include "host/base/fault.h"
#include "host/graph/data.h"
#include "host/graph/evaluate.h"
#include "host/graph/numeric_types.h"

#include <maya/MArrayDataHandle.h>
#include <maya/MDataBlock.h>
#include <maya/MDataHandle.h>
#include <maya/MFloatVector.h>
#include <maya/MMatrix.h>
#include <maya/MVector.h>

using host::pass_fault;
using host::report;
using host::graph::Attribute;
using host::graph::AttributeKind;
using host::graph::PlugValue;
using host::graph::Slot;
using host::graph::ValueKind;

// === MDGContext ==============================================================================

MDGContext::MDGContext() {}
bool MDGContext::isNormal(MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return true;
}
const MDGContext MDGContext::fsNormal;

// === MDataHandle =============================================================================

namespace {

/// Returned by accessors that do not match the attribute's type: a zero that is not stored
/// anywhere.
template <class T>
T& nothing() {
    static T zero;
    zero = T();
    return zero;
}

template <class T>
T& access(Slot* slot, ValueKind kind, T& (PlugValue::*get)()) {
    if (slot == nullptr || slot->value.kind() != kind)
        return nothing<T>();
    return (slot->value.*get)();
}

void put(Slot* slot, const PlugValue& value) {
    if (slot != nullptr)
        host::graph::assign(*slot, value);
}

void put(Slot* slot, const double values[3]) {
    if (slot == nullptr || !slot->is_compound() || slot->attribute().children().size() != 3)
        return;
    for (unsigned int i = 0; i < 3; ++i)
        put(slot->child(i), PlugValue::of_double(values[i]));
}

} // namespace

MDataHandle::MDataHandle() : slot_(NULL) {}
MDataHandle::MDataHandle(Slot* slot) : slot_(slot) {}
MDataHandle::MDataHandle(const MDataHandle& other) = default;
MDataHandle& MDataHandle::operator=(const MDataHandle& other) = default;
MDataHandle::~MDataHandle() = default;

bool MDataHandle::isNumeric() const { return slot_ != NULL && slot_->attribute().is_number(); }
bool MDataHandle::isGeneric() const { return false; }

MFnData::Type MDataHandle::type() const {
    if (slot_ == NULL)
        return MFnData::kInvalid;
    switch (slot_->attribute().kind()) {
    case AttributeKind::text:
        return MFnData::kString;
    case AttributeKind::component_list:
        return MFnData::kComponentList;
    case AttributeKind::mesh:
        return MFnData::kMesh;
    case AttributeKind::matrix:
        return MFnData::kMatrix;
    case AttributeKind::message:
        return MFnData::kInvalid;
    default:
        return MFnData::kNumeric;
    }
}

MFnNumericData::Type MDataHandle::numericType() const {
    return slot_ == NULL ? MFnNumericData::kInvalid
                         : host::graph::numeric_type_of(slot_->attribute());
}

MObject MDataHandle::attribute() {
    return slot_ == NULL ? MObject() : MObject(&slot_->attribute());
}

bool& MDataHandle::asBool() const { return access(slot_, ValueKind::boolean, &PlugValue::as_bool); }
char& MDataHandle::asChar() const { return access(slot_, ValueKind::byte, &PlugValue::as_byte); }
short& MDataHandle::asShort() const {
    return access(slot_, ValueKind::short_, &PlugValue::as_short);
}
int& MDataHandle::asInt() const { return access(slot_, ValueKind::integer, &PlugValue::as_int); }
float& MDataHandle::asFloat() const {
    return access(slot_, ValueKind::real32, &PlugValue::as_float);
}
double& MDataHandle::asDouble() const {
    return access(slot_, ValueKind::real64, &PlugValue::as_double);
}

MString& MDataHandle::asString() const {
    if (slot_ == NULL || slot_->attribute().kind() != AttributeKind::text)
        return nothing<MString>();
    if (slot_->value.kind() != ValueKind::text)
        slot_->value = PlugValue::of_text(MString());
    return slot_->value.as_text();
}

MObject MDataHandle::asMesh() const {
    if (slot_ == NULL || slot_->attribute().kind() != AttributeKind::mesh || !slot_->is_leaf())
        return MObject();
    return MObject(slot_->value.as_data());
}

MMatrix& MDataHandle::asMatrix() const {
    host::Object* const data = slot_ == NULL ? NULL : slot_->value.as_data();
    if (data == NULL || data->type() != MFn::kMatrixData)
        return nothing<MMatrix>();
    return static_cast<host::graph::MatrixData*>(data)->matrix;
}

MObject MDataHandle::data() { return slot_ == NULL ? MObject() : MObject(slot_->value.as_data()); }

void MDataHandle::setBool(bool value) { put(slot_, PlugValue::of_bool(value)); }
void MDataHandle::setChar(char value) { put(slot_, PlugValue::of_byte(value)); }
void MDataHandle::setShort(short value) { put(slot_, PlugValue::of_short(value)); }
void MDataHandle::setInt(int value) { put(slot_, PlugValue::of_int(value)); }
void MDataHandle::setFloat(float value) { put(slot_, PlugValue::of_float(value)); }
void MDataHandle::setDouble(double value) { put(slot_, PlugValue::of_double(value)); }
void MDataHandle::setString(const MString& value) { put(slot_, PlugValue::of_text(value)); }

MStatus MDataHandle::setMObject(const MObject& value) {
    const MStatus status = pass_fault("MDataHandle::set");
    if (!status)
        return status;
    if (slot_ == NULL || !host::graph::assign(*slot_, PlugValue::of_data(value.host_object())))
        return MS::kInvalidParameter;
    return status;
}

void MDataHandle::set3Float(float x, float y, float z) { set(x, y, z); }
void MDataHandle::set3Double(double x, double y, double z) {
    const double values[3] = {x, y, z};
    put(slot_, values);
}
void MDataHandle::set(bool value) { setBool(value); }
void MDataHandle::set(char value) { setChar(value); }
void MDataHandle::set(short value) { setShort(value); }
void MDataHandle::set(int value) { setInt(value); }
void MDataHandle::set(float value) { setFloat(value); }
void MDataHandle::set(double value) { setDouble(value); }
void MDataHandle::set(const MString& value) { setString(value); }
MStatus MDataHandle::set(const MObject& value) { return setMObject(value); }
void MDataHandle::set(const MMatrix& value) {
    const host::Ref<host::Object> data = new host::graph::MatrixData(value);
    put(slot_, PlugValue::of_data(data.get()));
}
void MDataHandle::set(const MVector& value) { set3Double(value.x, value.y, value.z); }
void MDataHandle::set(const MFloatVector& value) { set(value.x, value.y, value.z); }
void MDataHandle::set(float x, float y, float z) {
    const double values[3] = {double(x), double(y), double(z)};
    put(slot_, values);
}

MStatus MDataHandle::copy(const MDataHandle& source) {
    const MStatus status = pass_fault("MDataHandle::copy");
    if (!status)
        return status;
    if (slot_ == NULL || source.slot_ == NULL || !host::graph::copy_values(*source.slot_, *slot_))
        return MS::kInvalidParameter;
    return status;
}

MDataHandle MDataHandle::child(const MObject& attribute) const {
    const Attribute* const wanted = host::graph::attribute_of(attribute);
    if (slot_ == NULL || wanted == NULL || wanted->parent() != &slot_->attribute() ||
        !slot_->is_compound())
        return MDataHandle();
    return MDataHandle(slot_->child(wanted->index_in_parent()));
}

void MDataHandle::setClean() {
    if (slot_ != NULL)
        host::graph::set_clean(*slot_);
}

// === MArrayDataHandle ========================================================================

MArrayDataHandle::MArrayDataHandle(const MDataHandle& handle, MStatus* ReturnStatus)
    : slot_(handle.host_slot()), position_(0) {
    if (slot_ != NULL && !slot_->is_array())
        slot_ = NULL;
    report(ReturnStatus, slot_ == NULL ? MS::kInvalidParameter : MS::kSuccess);
}

MArrayDataHandle::MArrayDataHandle(const MArrayDataHandle& other) = default;
MArrayDataHandle& MArrayDataHandle::operator=(const MArrayDataHandle& other) = default;
MArrayDataHandle::~MArrayDataHandle() = default;

MDataHandle MArrayDataHandle::inputValue(MStatus* ReturnStatus) {
    MStatus status = pass_fault("MArrayDataHandle::inputValue");
    if (status && (slot_ == NULL || position_ >= slot_->below().size()))
        status = MS::kInvalidParameter;
    if (!report(ReturnStatus, status))
        return MDataHandle();
    Slot& element = *slot_->below()[position_];
    report(ReturnStatus, host::graph::evaluate(element));
    return MDataHandle(&element);
}

MDataHandle MArrayDataHandle::outputValue(MStatus* ReturnStatus) {
    MStatus status = pass_fault("MArrayDataHandle::outputValue");
    if (status && (slot_ == NULL || position_ >= slot_->below().size()))
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? MDataHandle(slot_->below()[position_].get())
                                        : MDataHandle();
}

MStatus MArrayDataHandle::next() {
    if (slot_ == NULL || position_ + 1 >= slot_->below().size())
        return MS::kFailure;
    position_ += 1;
    return MS::kSuccess;
}

unsigned int MArrayDataHandle::elementCount(MStatus* ReturnStatus) {
    report(ReturnStatus, slot_ == NULL ? MS::kInvalidParameter : MS::kSuccess);
    return slot_ == NULL ? 0 : static_cast<unsigned int>(slot_->below().size());
}

unsigned int MArrayDataHandle::elementIndex(MStatus* ReturnStatus) {
    const bool is_there = slot_ != NULL && position_ < slot_->below().size();
    report(ReturnStatus, is_there ? MS::kSuccess : MS::kInvalidParameter);
    return is_there ? static_cast<unsigned int>(slot_->below()[position_]->index()) : 0;
}

MStatus MArrayDataHandle::jumpToElement(unsigned int index) {
    for (unsigned int i = 0; slot_ != NULL && i < slot_->below().size(); ++i)
        if (slot_->below()[i]->index() == static_cast<int>(index)) {
            position_ = i;
            return MS::kSuccess;
        }
    return MS::kInvalidParameter;
}

MStatus MArrayDataHandle::jumpToArrayElement(unsigned int position) {
    if (slot_ == NULL || position >= slot_->below().size())
        return MS::kInvalidParameter;
    position_ = position;
    return MS::kSuccess;
}

MStatus MArrayDataHandle::setClean() {
    if (slot_ == NULL || position_ >= slot_->below().size())
        return MS::kInvalidParameter;
    host::graph::set_clean(*slot_->below()[position_]);
    return MS::kSuccess;
}

MStatus MArrayDataHandle::setAllClean() {
    if (slot_ == NULL)
        return MS::kInvalidParameter;
    host::graph::set_clean(*slot_);
    return MS::kSuccess;
}

// === MDataBlock ==============================================================================

MDataBlock::MDataBlock(const MObject& node) : node_(node) {}
MDataBlock::MDataBlock(const MDataBlock& other) = default;
MDataBlock& MDataBlock::operator=(const MDataBlock& other) = default;
MDataBlock::~MDataBlock() = default;

Slot* MDataBlock::find(const MObject& attribute, const char* point, MStatus& status) const {
    status = pass_fault(point);
    const Attribute* const wanted = host::graph::attribute_of(attribute);
    host::graph::Node* const node = host::graph::node_of(node_);
    Slot* const slot = status && wanted != NULL && node != NULL ? node->slot(*wanted) : NULL;
    if (status && slot == NULL)
        status = MS::kInvalidParameter;
    return slot;
}

Slot* MDataBlock::find(const MPlug& plug, const char* point, MStatus& status) const {
    status = pass_fault(point);
    Slot* const slot = status ? plug.host_slot() : NULL;
    if (status && (slot == NULL || MObject(&slot->node()) != node_))
        status = MS::kInvalidParameter;
    return status ? slot : NULL;
}

namespace {

MDataHandle input(Slot* slot, MStatus status, MStatus* out) {
    if (status)
        status = host::graph::evaluate(*slot);
    report(out, status);
    return status ? MDataHandle(slot) : MDataHandle();
}

MDataHandle output(Slot* slot, const MStatus& status, MStatus* out) {
    report(out, status);
    return MDataHandle(slot);
}

MArrayDataHandle array_of(const MDataHandle& place, const MStatus& status, MStatus* out) {
    MStatus kind;
    MArrayDataHandle handle(place, &kind);
    report(out, status ? kind : status);
    return handle;
}

} // namespace

MDataHandle MDataBlock::inputValue(const MPlug& plug, MStatus* ReturnStatus) {
    MStatus status;
    Slot* const slot = find(plug, "MDataBlock::inputValue", status);
    return input(slot, status, ReturnStatus);
}

MDataHandle MDataBlock::inputValue(const MObject& attribute, MStatus* ReturnStatus) {
    MStatus status;
    Slot* const slot = find(attribute, "MDataBlock::inputValue", status);
    return input(slot, status, ReturnStatus);
}

MDataHandle MDataBlock::outputValue(const MPlug& plug, MStatus* ReturnStatus) {
    MStatus status;
    Slot* const slot = find(plug, "MDataBlock::outputValue", status);
    return output(slot, status, ReturnStatus);
}

MDataHandle MDataBlock::outputValue(const MObject& attribute, MStatus* ReturnStatus) {
    MStatus status;
    Slot* const slot = find(attribute, "MDataBlock::outputValue", status);
    return output(slot, status, ReturnStatus);
}

MArrayDataHandle MDataBlock::inputArrayValue(const MPlug& plug, MStatus* ReturnStatus) {
    MStatus status;
    Slot* const slot = find(plug, "MDataBlock::inputArrayValue", status);
    const MDataHandle place = input(slot, status, &status);
    return array_of(place, status, ReturnStatus);
}

MArrayDataHandle MDataBlock::inputArrayValue(const MObject& attribute, MStatus* ReturnStatus) {
    MStatus status;
    Slot* const slot = find(attribute, "MDataBlock::inputArrayValue", status);
    const MDataHandle place = input(slot, status, &status);
    return array_of(place, status, ReturnStatus);
}

MArrayDataHandle MDataBlock::outputArrayValue(const MPlug& plug, MStatus* ReturnStatus) {
    MStatus status;
    const MDataHandle place(find(plug, "MDataBlock::outputArrayValue", status));
    return array_of(place, status, ReturnStatus);
}

MArrayDataHandle MDataBlock::outputArrayValue(const MObject& attribute, MStatus* ReturnStatus) {
    MStatus status;
    const MDataHandle place(find(attribute, "MDataBlock::outputArrayValue", status));
    return array_of(place, status, ReturnStatus);
}

MStatus MDataBlock::setClean(const MPlug& plug) {
    MStatus status;
    if (Slot* slot = find(plug, "MDataBlock::setClean", status))
        host::graph::set_clean(*slot);
    return status;
}

MStatus MDataBlock::setClean(const MObject& attribute) {
    MStatus status;
    if (Slot* slot = find(attribute, "MDataBlock::setClean", status))
        host::graph::set_clean(*slot);
    return status;
}

bool MDataBlock::isClean(const MPlug& plug, MStatus* ReturnStatus) {
    MStatus status;
    const Slot* const slot = find(plug, "MDataBlock::isClean", status);
    report(ReturnStatus, status);
    return slot != NULL && host::graph::is_clean(*slot);
}

bool MDataBlock::isClean(const MObject& attribute, MStatus* ReturnStatus) {
    MStatus status;
    const Slot* const slot = find(attribute, "MDataBlock::isClean", status);
    report(ReturnStatus, status);
    return slot != NULL && host::graph::is_clean(*slot);
}

MDGContext MDataBlock::context(MStatus* ReturnStatus) {
    report(ReturnStatus, MS::kSuccess);
    return MDGContext();
}
