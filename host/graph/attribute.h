/// An attribute: the declaration of a named value on nodes of a type (or, added later, on one
/// node).
///
/// Attributes form trees: a compound has children, an array of anything has elements on each node.
/// An attribute knows nothing of nodes; what a node holds for it is a Slot.
#pragma once

#include "host/graph/value.h"

#include <optional>
#include <string>
#include <vector>

namespace host::graph {

enum class AttributeKind : uint8_t {
    boolean,
    byte,
    short_,
    integer,
    real32,
    real64,
    enumeration, ///< stored as a short
    text,
    mesh,
    matrix,
    message, ///< carries no value, only connections
    compound ///< children only; `tuple` says whether they are one vector of numbers
};

/// What a number measures. Lengths are stored in centimetres, angles in radians; scripts see
/// degrees.
enum class Unit : uint8_t { none, length, angle, time };

/// Vectors of numbers that travel as one value.
enum class Tuple : uint8_t {
    none,
    short2,
    short3,
    int2,
    int3,
    float2,
    float3,
    double2,
    double3,
    double4
};

struct AttributeFlags {
    bool readable = true;
    bool writable = true;
    bool connectable = true;
    bool storable = true;
    bool cached = true;
    bool keyable = false;
    bool channel_box = false;
    bool hidden = false;
    bool array = false;
    bool internal = false;
    bool uses_array_builder = false;
    bool index_matters = true;
    bool used_as_color = false;
};

class MHOST_EXPORT Attribute : public Object {
public:
    Attribute(const std::string& long_name, const std::string& short_name, AttributeKind kind);

    const std::string& long_name() const { return long_name_; }
    const std::string& short_name() const { return short_name_; }
    AttributeKind kind() const { return kind_; }
    ValueKind value_kind() const;
    /// "float", "long", "bool", "string", "mesh", "double3": as scripts spell it.
    const char* type_text() const;

    bool is_compound() const { return kind_ == AttributeKind::compound; }
    bool is_array() const { return flags.array; }
    bool is_number() const { return kind_ <= AttributeKind::enumeration; }

    /// Children of a compound, in order; a child's parent is the compound.
    void add_child(const Ref<Attribute>& child);
    const std::vector<Ref<Attribute>>& children() const { return children_; }
    Attribute* parent() const { return parent_; }
    unsigned int index_in_parent() const { return index_in_parent_; }

    /// The value a slot holds before anybody set one.
    const Value& default_value() const { return default_; }
    void set_default(const Value& value) { default_ = value; }

    /// A vector attribute: a compound of numbers with the suffixes given, one per component.
    static Ref<Attribute> make_tuple(const std::string& long_name, const std::string& short_name,
                                     Tuple tuple, Unit unit, const char* const suffixes[],
                                     double default_value = 0.0);

    AttributeFlags flags;
    Tuple tuple = Tuple::none;
    Unit unit = Unit::none;
    std::optional<double> minimum;
    std::optional<double> maximum;
    std::vector<std::pair<std::string, short>> fields; ///< of an enumeration
    bool dynamic = false;                              ///< added to one node, not by its type
    std::string nice_name;

private:
    ~Attribute() override;
    std::string long_name_;
    std::string short_name_;
    AttributeKind kind_;
    Value default_;
    std::vector<Ref<Attribute>> children_;
    Attribute* parent_ = nullptr; ///< owns this attribute through its list of children
    unsigned int index_in_parent_ = 0;
};

/// How many components a vector has, and what each of them is.
unsigned int tuple_size(Tuple tuple);
AttributeKind tuple_component(Tuple tuple);

} // namespace host::graph
