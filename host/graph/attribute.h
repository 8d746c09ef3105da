/// The declaration of a named, typed value: by a node type, for all nodes of that type, or for a
/// single node (a dynamic attribute).
///
/// Attributes form trees: a compound has child attributes; any attribute may be an array, whose
/// elements exist per node. An attribute holds no per-node state: each node stores its value and
/// connections in a Slot.
#pragma once

#include "host/graph/plug_value.h"

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
    component_list, ///< text that names components: "e[3] e[5:8]"
    mesh,
    matrix,
    message, ///< carries no value, only connections
    compound ///< has child attributes and no value of its own; see `tuple`
};

/// The physical quantity of a number. Lengths are stored in centimetres, angles in radians; the
/// script language shows angles in degrees.
enum class Unit : uint8_t { none, length, angle, time };

/// Compounds of equal numbers that are set, read and connected as one vector.
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
    /// The type name in the script language: "float", "long", "bool", "string", "mesh", "double3".
    const char* type_text() const;

    bool is_compound() const { return kind_ == AttributeKind::compound; }
    bool is_array() const { return flags.array; }
    bool is_number() const { return kind_ <= AttributeKind::enumeration; }

    /// Child attributes of a compound, in order of addition. Adding one sets its parent.
    void add_child(const Ref<Attribute>& child);
    const std::vector<Ref<Attribute>>& children() const { return children_; }
    Attribute* parent() const { return parent_; }
    unsigned int index_in_parent() const { return index_in_parent_; }

    /// The value of a slot that was never set.
    const PlugValue& default_value() const { return default_; }
    void set_default(const PlugValue& value) { default_ = value; }

    /// Creates a vector attribute: a compound of numbers, one child per component, named by
    /// appending the suffixes.
    static Ref<Attribute> make_tuple(const std::string& long_name, const std::string& short_name,
                                     Tuple tuple, Unit unit, const char* const suffixes[],
                                     double default_value = 0.0);

    AttributeFlags flags;
    Tuple tuple = Tuple::none;
    Unit unit = Unit::none;
    std::optional<double> minimum;
    std::optional<double> maximum;
    std::vector<std::pair<std::string, short>> fields; ///< name and value pairs, of an enumeration
    bool dynamic = false; ///< belongs to a single node instead of a node type
    std::string nice_name;

private:
    ~Attribute() override;
    std::string long_name_;
    std::string short_name_;
    AttributeKind kind_;
    PlugValue default_;
    std::vector<Ref<Attribute>> children_;
    Attribute* parent_ = nullptr; ///< not owned: the parent owns this attribute
    unsigned int index_in_parent_ = 0;
};

/// The number of components of a tuple, and the type of each component.
unsigned int tuple_size(Tuple tuple);
AttributeKind tuple_component(Tuple tuple);

} // namespace host::graph
