#include "host/graph/attribute.h"

namespace host::graph {

namespace {

MFn::Type function_set_of(AttributeKind kind) {
    switch (kind) {
    case AttributeKind::enumeration:
        return MFn::kEnumAttribute;
    case AttributeKind::text:
    case AttributeKind::component_list:
    case AttributeKind::mesh:
        return MFn::kTypedAttribute;
    case AttributeKind::matrix:
        return MFn::kMatrixAttribute;
    case AttributeKind::message:
        return MFn::kMessageAttribute;
    case AttributeKind::compound:
        return MFn::kCompoundAttribute;
    default:
        return MFn::kNumericAttribute;
    }
}

} // namespace

Attribute::Attribute(const std::string& long_name, const std::string& short_name,
                     AttributeKind kind)
    : Object(function_set_of(kind)), long_name_(long_name), short_name_(short_name), kind_(kind),
      default_(PlugValue::zero(value_kind())) {}

Attribute::~Attribute() {
    for (const Ref<Attribute>& child : children_)
        child->parent_ = nullptr;
}

ValueKind Attribute::value_kind() const {
    switch (kind_) {
    case AttributeKind::boolean:
        return ValueKind::boolean;
    case AttributeKind::byte:
        return ValueKind::byte;
    case AttributeKind::short_:
    case AttributeKind::enumeration:
        return ValueKind::short_;
    case AttributeKind::integer:
        return ValueKind::integer;
    case AttributeKind::real32:
        return ValueKind::real32;
    case AttributeKind::real64:
        return ValueKind::real64;
    case AttributeKind::text:
    case AttributeKind::component_list:
        return ValueKind::text;
    case AttributeKind::mesh:
    case AttributeKind::matrix:
        return ValueKind::data;
    case AttributeKind::message:
    case AttributeKind::compound:
        break;
    }
    return ValueKind::none;
}

const char* Attribute::type_text() const {
    static const char* const k_tuples[] = {"TdataCompound", "short2", "short3", "long2",
                                           "long3",         "float2", "float3", "double2",
                                           "double3",       "double4"};
    switch (kind_) {
    case AttributeKind::boolean:
        return "bool";
    case AttributeKind::byte:
        return "byte";
    case AttributeKind::short_:
        return "short";
    case AttributeKind::enumeration:
        return "enum";
    case AttributeKind::integer:
        return "long";
    case AttributeKind::real32:
        return "float";
    case AttributeKind::real64:
        return unit == Unit::length  ? "doubleLinear"
               : unit == Unit::angle ? "doubleAngle"
               : unit == Unit::time  ? "time"
                                     : "double";
    case AttributeKind::text:
        return "string";
    case AttributeKind::component_list:
        return "componentList";
    case AttributeKind::mesh:
        return "mesh";
    case AttributeKind::matrix:
        return "matrix";
    case AttributeKind::message:
        return "message";
    case AttributeKind::compound:
        break;
    }
    return k_tuples[static_cast<unsigned int>(tuple)];
}

void Attribute::add_child(const Ref<Attribute>& child) {
    child->parent_ = this;
    child->index_in_parent_ = static_cast<unsigned int>(children_.size());
    children_.push_back(child);
}

Ref<Attribute> Attribute::make_tuple(const std::string& long_name, const std::string& short_name,
                                     Tuple tuple, Unit unit, const char* const suffixes[],
                                     double default_value) {
    Ref<Attribute> vector = new Attribute(long_name, short_name, AttributeKind::compound);
    vector->tuple = tuple;
    vector->unit = unit;
    for (unsigned int i = 0; i < tuple_size(tuple); ++i) {
        Ref<Attribute> component = new Attribute(long_name + suffixes[i], short_name + suffixes[i],
                                                 tuple_component(tuple));
        component->unit = unit;
        PlugValue value = component->default_value();
        value.assign_number(default_value);
        component->set_default(value);
        vector->add_child(component);
    }
    return vector;
}

unsigned int tuple_size(Tuple tuple) {
    switch (tuple) {
    case Tuple::none:
        return 0;
    case Tuple::short2:
    case Tuple::int2:
    case Tuple::float2:
    case Tuple::double2:
        return 2;
    case Tuple::double4:
        return 4;
    default:
        return 3;
    }
}

AttributeKind tuple_component(Tuple tuple) {
    switch (tuple) {
    case Tuple::short2:
    case Tuple::short3:
        return AttributeKind::short_;
    case Tuple::int2:
    case Tuple::int3:
        return AttributeKind::integer;
    case Tuple::float2:
    case Tuple::float3:
        return AttributeKind::real32;
    default:
        return AttributeKind::real64;
    }
}

} // namespace host::graph
