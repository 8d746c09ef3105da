/// Function sets for attributes.
#include "host/base/fault.h"
#include "host/graph/data.h"
#include "host/graph/node.h"
#include "host/graph/numeric_types.h"

#include <maya/MFnAttribute.h>
#include <maya/MFnCompoundAttribute.h>
#include <maya/MFnEnumAttribute.h>
#include <maya/MFnMessageAttribute.h>
#include <maya/MFnNumericAttribute.h>
#include <maya/MFnTypedAttribute.h>

using host::pass_fault;
using host::Ref;
using host::report;
using host::graph::Attribute;
using host::graph::AttributeKind;
using host::graph::PlugValue;
using host::graph::Tuple;

namespace {

Attribute* attached(const MObject& object) { return host::graph::attribute_of(object); }

MStatus named(const MString& long_name, const MString& short_name) {
    return long_name.length() == 0 || short_name.length() == 0 ? MS::kInvalidParameter
                                                               : MS::kSuccess;
}

/// Passes the fault point and creates an attribute if both names are valid.
MObject make(const char* point, const MString& long_name, const MString& short_name,
             AttributeKind kind, MStatus* out) {
    MStatus status = pass_fault(point);
    if (status)
        status = named(long_name, short_name);
    if (!report(out, status))
        return MObject();
    return MObject(new Attribute(long_name.asChar(), short_name.asChar(), kind));
}

/// Creates an attribute of three floats; checks the fault point and the names as make() does.
MObject make_triple(const char* point, const MString& long_name, const MString& short_name,
                    const char* const (&suffixes)[3], MStatus* out) {
    if (make(point, long_name, short_name, AttributeKind::real32, out).isNull())
        return MObject();
    return MObject(Attribute::make_tuple(long_name.asChar(), short_name.asChar(), Tuple::float3,
                                         host::graph::Unit::none, suffixes)
                       .get());
}

template <class T>
T read(const MObject& object, T Attribute::*member, MStatus* out) {
    const Attribute* const attribute = attached(object);
    report(out, attribute == nullptr ? MS::kFailure : MS::kSuccess);
    return attribute == nullptr ? T() : attribute->*member;
}

bool flag(const MObject& object, bool host::graph::AttributeFlags::*member, MStatus* out) {
    const Attribute* const attribute = attached(object);
    report(out, attribute == nullptr ? MS::kFailure : MS::kSuccess);
    return attribute != nullptr && attribute->flags.*member;
}

MStatus set_flag(const char* point, const MObject& object,
                 bool host::graph::AttributeFlags::*member, bool state) {
    const MStatus status = pass_fault(point);
    if (!status)
        return status;
    Attribute* const attribute = attached(object);
    if (attribute == nullptr)
        return MS::kFailure;
    attribute->flags.*member = state;
    return status;
}

} // namespace

// === MFnAttribute ============================================================================

#define ATTRIBUTE_SET(CLASS, TYPE)                                                                 \
    CLASS::CLASS() = default;                                                                      \
    CLASS::CLASS(MObject& object, MStatus* ReturnStatus) {                                         \
        report(ReturnStatus, attach(object, #CLASS "::setObject"));                                \
    }                                                                                              \
    CLASS::CLASS(const MObject& object, MStatus* ReturnStatus) {                                   \
        report(ReturnStatus, attach(object, #CLASS "::setObject"));                                \
    }                                                                                              \
    CLASS::~CLASS() = default;                                                                     \
    MFn::Type CLASS::type() const { return MFn::TYPE; }

ATTRIBUTE_SET(MFnAttribute, kAttribute)
ATTRIBUTE_SET(MFnNumericAttribute, kNumericAttribute)
ATTRIBUTE_SET(MFnTypedAttribute, kTypedAttribute)
ATTRIBUTE_SET(MFnEnumAttribute, kEnumAttribute)
ATTRIBUTE_SET(MFnMessageAttribute, kMessageAttribute)
ATTRIBUTE_SET(MFnCompoundAttribute, kCompoundAttribute)

#undef ATTRIBUTE_SET

MString MFnAttribute::name(MStatus* ReturnStatus) const {
    const Attribute* const attribute = attached(object_);
    report(ReturnStatus, attribute == nullptr ? MS::kFailure : MS::kSuccess);
    return attribute == nullptr ? MString() : MString(attribute->long_name().c_str());
}

MString MFnAttribute::shortName(MStatus* ReturnStatus) const {
    const Attribute* const attribute = attached(object_);
    report(ReturnStatus, attribute == nullptr ? MS::kFailure : MS::kSuccess);
    return attribute == nullptr ? MString() : MString(attribute->short_name().c_str());
}

MObject MFnAttribute::parent(MStatus* ReturnStatus) const {
    const Attribute* const attribute = attached(object_);
    report(ReturnStatus, attribute == nullptr ? MS::kFailure : MS::kSuccess);
    return attribute == nullptr ? MObject() : MObject(attribute->parent());
}

#define ATTRIBUTE_FLAG(NAME, MEMBER)                                                               \
    bool MFnAttribute::is##NAME(MStatus* ReturnStatus) const {                                     \
        return flag(object_, &host::graph::AttributeFlags::MEMBER, ReturnStatus);                  \
    }
ATTRIBUTE_FLAG(Readable, readable)
ATTRIBUTE_FLAG(Writable, writable)
ATTRIBUTE_FLAG(Connectable, connectable)
ATTRIBUTE_FLAG(Storable, storable)
ATTRIBUTE_FLAG(Cached, cached)
ATTRIBUTE_FLAG(Array, array)
ATTRIBUTE_FLAG(Keyable, keyable)
ATTRIBUTE_FLAG(Hidden, hidden)
#undef ATTRIBUTE_FLAG

bool MFnAttribute::isDynamic(MStatus* ReturnStatus) const {
    return read(object_, &Attribute::dynamic, ReturnStatus);
}

#define ATTRIBUTE_SETTER(NAME, MEMBER)                                                             \
    MStatus MFnAttribute::set##NAME(bool state) {                                                  \
        return set_flag("MFnAttribute::set" #NAME, object_, &host::graph::AttributeFlags::MEMBER,  \
                        state);                                                                    \
    }
ATTRIBUTE_SETTER(Readable, readable)
ATTRIBUTE_SETTER(Writable, writable)
ATTRIBUTE_SETTER(Connectable, connectable)
ATTRIBUTE_SETTER(Storable, storable)
ATTRIBUTE_SETTER(Cached, cached)
ATTRIBUTE_SETTER(Array, array)
ATTRIBUTE_SETTER(Keyable, keyable)
ATTRIBUTE_SETTER(ChannelBox, channel_box)
ATTRIBUTE_SETTER(Hidden, hidden)
ATTRIBUTE_SETTER(Internal, internal)
ATTRIBUTE_SETTER(UsesArrayDataBuilder, uses_array_builder)
ATTRIBUTE_SETTER(IndexMatters, index_matters)
ATTRIBUTE_SETTER(UsedAsColor, used_as_color)
#undef ATTRIBUTE_SETTER

MStatus MFnAttribute::setNiceNameOverride(const MString& localizedName) {
    Attribute* const attribute = attached(object_);
    if (attribute == nullptr)
        return MS::kFailure;
    attribute->nice_name = localizedName.asChar();
    return MS::kSuccess;
}

// === MFnNumericAttribute =====================================================================

MObject MFnNumericAttribute::create(const MString& fullName, const MString& briefName,
                                    MFnNumericData::Type unitType, double defaultValue,
                                    MStatus* ReturnStatus) {
    static const char* const k_suffixes[] = {"0", "1", "2", "3"};
    MStatus status = pass_fault("MFnNumericAttribute::create");
    if (status)
        status = named(fullName, briefName);
    const Tuple tuple = host::graph::tuple_of(unitType);
    AttributeKind kind = AttributeKind::compound;
    if (status && tuple == Tuple::none && !host::graph::number_kind_of(unitType, kind))
        status = MS::kInvalidParameter;
    if (!report(ReturnStatus, status))
        return MObject();
    if (tuple != Tuple::none) {
        object_ = MObject(Attribute::make_tuple(fullName.asChar(), briefName.asChar(), tuple,
                                                host::graph::Unit::none, k_suffixes, defaultValue)
                              .get());
        return object_;
    }
    object_ = MObject(new Attribute(fullName.asChar(), briefName.asChar(), kind));
    setDefault(defaultValue);
    return object_;
}

MObject MFnNumericAttribute::create(const MString& fullName, const MString& briefName,
                                    const MObject& child1, const MObject& child2,
                                    const MObject& child3, MStatus* ReturnStatus) {
    MStatus status = pass_fault("MFnNumericAttribute::create");
    if (status)
        status = named(fullName, briefName);
    const MObject* const children[] = {&child1, &child2, &child3};
    const unsigned int count = child3.isNull() ? 2 : 3;
    for (unsigned int i = 0; i < count && status; ++i) {
        const Attribute* const child = attached(*children[i]);
        if (child == nullptr || !child->is_number() || child->parent() != nullptr ||
            child->kind() != attached(child1)->kind())
            status = MS::kInvalidParameter;
    }
    if (!report(ReturnStatus, status))
        return MObject();
    Ref<Attribute> vector =
        new Attribute(fullName.asChar(), briefName.asChar(), AttributeKind::compound);
    vector->tuple = host::graph::tuple_of(attached(child1)->kind(), count);
    for (unsigned int i = 0; i < count; ++i)
        vector->add_child(attached(*children[i]));
    object_ = MObject(vector.get());
    return object_;
}

MObject MFnNumericAttribute::createColor(const MString& fullName, const MString& briefName,
                                         MStatus* ReturnStatus) {
    const MObject made = make_triple("MFnNumericAttribute::createColor", fullName, briefName,
                                     {"R", "G", "B"}, ReturnStatus);
    if (made.isNull())
        return made;
    object_ = made;
    setUsedAsColor(true);
    return object_;
}

MObject MFnNumericAttribute::createPoint(const MString& fullName, const MString& briefName,
                                         MStatus* ReturnStatus) {
    const MObject made = make_triple("MFnNumericAttribute::createPoint", fullName, briefName,
                                     {"X", "Y", "Z"}, ReturnStatus);
    if (!made.isNull())
        object_ = made;
    return made;
}

MFnNumericData::Type MFnNumericAttribute::unitType(MStatus* ReturnStatus) const {
    const Attribute* const attribute = attached(object_);
    report(ReturnStatus, attribute == nullptr ? MS::kFailure : MS::kSuccess);
    return attribute == nullptr ? MFnNumericData::kInvalid
                                : host::graph::numeric_type_of(*attribute);
}

MStatus MFnNumericAttribute::setDefault(double value) {
    Attribute* const attribute = attached(object_);
    if (attribute == nullptr || !attribute->is_number())
        return MS::kFailure;
    PlugValue converted = attribute->default_value();
    converted.assign_number(value);
    attribute->set_default(converted);
    return MS::kSuccess;
}

MStatus MFnNumericAttribute::getDefault(double& value) const {
    const Attribute* const attribute = attached(object_);
    if (attribute == nullptr || !attribute->is_number())
        return MS::kFailure;
    value = attribute->default_value().number();
    return MS::kSuccess;
}

MStatus MFnNumericAttribute::setMin(double value) {
    Attribute* const attribute = attached(object_);
    if (attribute == nullptr)
        return MS::kFailure;
    attribute->minimum = value;
    return MS::kSuccess;
}

MStatus MFnNumericAttribute::setMax(double value) {
    Attribute* const attribute = attached(object_);
    if (attribute == nullptr)
        return MS::kFailure;
    attribute->maximum = value;
    return MS::kSuccess;
}

// Soft limits affect slider ranges only, and this host shows no sliders.
MStatus MFnNumericAttribute::setSoftMin(double) {
    return attached(object_) == nullptr ? MS::kFailure : MS::kSuccess;
}
MStatus MFnNumericAttribute::setSoftMax(double) {
    return attached(object_) == nullptr ? MS::kFailure : MS::kSuccess;
}

bool MFnNumericAttribute::hasMin(MStatus* ReturnStatus) const {
    return read(object_, &Attribute::minimum, ReturnStatus).has_value();
}
bool MFnNumericAttribute::hasMax(MStatus* ReturnStatus) const {
    return read(object_, &Attribute::maximum, ReturnStatus).has_value();
}

MStatus MFnNumericAttribute::getMin(double& value) const {
    if (!hasMin())
        return MS::kFailure;
    value = *attached(object_)->minimum;
    return MS::kSuccess;
}

MStatus MFnNumericAttribute::getMax(double& value) const {
    if (!hasMax())
        return MS::kFailure;
    value = *attached(object_)->maximum;
    return MS::kSuccess;
}

// === MFnTypedAttribute =======================================================================

MObject MFnTypedAttribute::create(const MString& fullName, const MString& briefName,
                                  MFnData::Type type, MObject defaultData, MStatus* ReturnStatus) {
    MStatus status;
    AttributeKind kind = AttributeKind::text;
    if (type == MFnData::kMesh)
        kind = AttributeKind::mesh;
    else if (type == MFnData::kMatrix)
        kind = AttributeKind::matrix;
    else if (type != MFnData::kString)
        status = MS::kNotImplemented;
    if (!status) {
        report(ReturnStatus, status);
        return MObject();
    }
    const MObject made = make("MFnTypedAttribute::create", fullName, briefName, kind, ReturnStatus);
    if (made.isNull())
        return made;
    if (host::Object* data = defaultData.host_object()) {
        if (kind == AttributeKind::text && data->type() == MFn::kStringData)
            attached(made)->set_default(
                PlugValue::of_text(static_cast<host::graph::StringData*>(data)->text));
        else if (kind != AttributeKind::text)
            attached(made)->set_default(PlugValue::of_data(data).deep_copy());
    }
    object_ = made;
    return object_;
}

MFnData::Type MFnTypedAttribute::attrType(MStatus* ReturnStatus) const {
    const Attribute* const attribute = attached(object_);
    report(ReturnStatus, attribute == nullptr ? MS::kFailure : MS::kSuccess);
    if (attribute == nullptr)
        return MFnData::kInvalid;
    switch (attribute->kind()) {
    case AttributeKind::text:
        return MFnData::kString;
    case AttributeKind::component_list:
        return MFnData::kComponentList;
    case AttributeKind::mesh:
        return MFnData::kMesh;
    case AttributeKind::matrix:
        return MFnData::kMatrix;
    default:
        return MFnData::kInvalid;
    }
}

// === Other attribute types ===================================================================

MObject MFnEnumAttribute::create(const MString& fullName, const MString& briefName,
                                 short defaultValue, MStatus* ReturnStatus) {
    const MObject made = make("MFnEnumAttribute::create", fullName, briefName,
                              AttributeKind::enumeration, ReturnStatus);
    if (made.isNull())
        return made;
    object_ = made;
    setDefault(defaultValue);
    return object_;
}

MStatus MFnEnumAttribute::addField(const MString& fieldString, short index) {
    Attribute* const attribute = attached(object_);
    if (attribute == nullptr)
        return MS::kFailure;
    attribute->fields.emplace_back(fieldString.asChar(), index);
    return MS::kSuccess;
}

short MFnEnumAttribute::fieldIndex(const MString& field, MStatus* ReturnStatus) const {
    if (const Attribute* attribute = attached(object_))
        for (const auto& one : attribute->fields)
            if (field == one.first.c_str()) {
                report(ReturnStatus, MS::kSuccess);
                return one.second;
            }
    report(ReturnStatus, MS::kInvalidParameter);
    return 0;
}

MString MFnEnumAttribute::fieldName(short index, MStatus* ReturnStatus) const {
    if (const Attribute* attribute = attached(object_))
        for (const auto& one : attribute->fields)
            if (one.second == index) {
                report(ReturnStatus, MS::kSuccess);
                return one.first.c_str();
            }
    report(ReturnStatus, MS::kInvalidParameter);
    return MString();
}

MStatus MFnEnumAttribute::setDefault(short value) {
    Attribute* const attribute = attached(object_);
    if (attribute == nullptr)
        return MS::kFailure;
    attribute->set_default(PlugValue::of_short(value));
    return MS::kSuccess;
}

MObject MFnMessageAttribute::create(const MString& fullName, const MString& briefName,
                                    MStatus* ReturnStatus) {
    const MObject made = make("MFnMessageAttribute::create", fullName, briefName,
                              AttributeKind::message, ReturnStatus);
    if (!made.isNull())
        object_ = made;
    return made;
}

MObject MFnCompoundAttribute::create(const MString& fullName, const MString& briefName,
                                     MStatus* ReturnStatus) {
    const MObject made = make("MFnCompoundAttribute::create", fullName, briefName,
                              AttributeKind::compound, ReturnStatus);
    if (!made.isNull())
        object_ = made;
    return made;
}

MStatus MFnCompoundAttribute::addChild(const MObject& child) {
    Attribute* const attribute = attached(object_);
    Attribute* const part = attached(child);
    if (attribute == nullptr || part == nullptr || part->parent() != nullptr || part == attribute)
        return MS::kInvalidParameter;
    attribute->add_child(part);
    return MS::kSuccess;
}

unsigned int MFnCompoundAttribute::numChildren(MStatus* ReturnStatus) const {
    const Attribute* const attribute = attached(object_);
    report(ReturnStatus, attribute == nullptr ? MS::kFailure : MS::kSuccess);
    return attribute == nullptr ? 0 : static_cast<unsigned int>(attribute->children().size());
}

MObject MFnCompoundAttribute::child(unsigned int index, MStatus* ReturnStatus) const {
    const Attribute* const attribute = attached(object_);
    const bool is_there = attribute != nullptr && index < attribute->children().size();
    report(ReturnStatus, is_there ? MS::kSuccess : MS::kInvalidParameter);
    return is_there ? MObject(attribute->children()[index].get()) : MObject();
}
