// Node types that create primitives: size and subdivision attributes and an output mesh.
#include "host/graph/data.h"
#include "host/graph/primitives.h"
#include "host/graph/standard_types.h"

#include <algorithm>

namespace host::graph {

namespace {

double number(Node& node, const char* name) {
    Slot& slot = *node.slot(name);
    evaluate(slot);
    return slot.value.number();
}

int count(Node& node, const char* name) { return static_cast<int>(number(node, name)); }

/// A number of subdivisions as it counts for the number of polygons.
double parts(Node& node, const char* name) { return std::max(number(node, name), 1.0); }

/// Larger primitives are refused before memory is used up; nobody models with one, but a damaged
/// scene may ask for it.
constexpr double k_max_polygons = 1 << 25;

Mesh cube(Node& n) {
    return make_cube(number(n, "w"), number(n, "h"), number(n, "d"), count(n, "sw"), count(n, "sh"),
                     count(n, "sd"));
}
Mesh plane(Node& n) {
    return make_plane(number(n, "w"), number(n, "h"), count(n, "sw"), count(n, "sh"));
}
Mesh sphere(Node& n) { return make_sphere(number(n, "r"), count(n, "sa"), count(n, "sh")); }
Mesh cylinder(Node& n) {
    return make_cylinder(number(n, "r"), number(n, "h"), count(n, "sa"), count(n, "sh"),
                         count(n, "sc"));
}
Mesh torus(Node& n) {
    return make_torus(number(n, "r"), number(n, "sr"), count(n, "sa"), count(n, "sh"));
}

double cube_polygons(Node& n) {
    const double w = parts(n, "sw"), h = parts(n, "sh"), d = parts(n, "sd");
    return 2.0 * (w * h + w * d + h * d);
}
double plane_polygons(Node& n) { return parts(n, "sw") * parts(n, "sh"); }
double turned_polygons(Node& n) { return parts(n, "sa") * parts(n, "sh"); }
double cylinder_polygons(Node& n) {
    return parts(n, "sa") * (parts(n, "sh") + 2.0 * parts(n, "sc"));
}

const Ref<Attribute>& output_attribute() {
    static const Ref<Attribute>* const attribute = [] {
        auto* made = new Ref<Attribute>(new Attribute("output", "out", AttributeKind::mesh));
        (*made)->flags.writable = false;
        (*made)->flags.storable = false;
        return made;
    }();
    return *attribute;
}

template <Mesh (*Make)(Node&), double (*Polygons)(Node&)>
MStatus compute(Node& node, Slot& output) {
    if (Polygons(node) > k_max_polygons)
        return MS::kInsufficientMemory;
    const Mesh mesh = Make(node);
    output.value = PlugValue::of_data(mesh_data(&mesh).get());
    set_clean(output);
    return MS::kSuccess;
}

struct Parameter {
    const char* long_name;
    const char* short_name;
    double value;
    bool is_count;
};

void add_creator(Scene& scene, const char* name, unsigned int id, MStatus (*compute)(Node&, Slot&),
                 const std::vector<Parameter>& parameters) {
    NodeTypeRef type = make_node_type(name, id, MFn::kPolyPrimitive);
    type->add(output_attribute());
    for (const Parameter& parameter : parameters) {
        Ref<Attribute> attribute =
            new Attribute(parameter.long_name, parameter.short_name,
                          parameter.is_count ? AttributeKind::integer : AttributeKind::real64);
        PlugValue value = attribute->default_value();
        value.assign_number(parameter.value);
        attribute->set_default(value);
        attribute->flags.keyable = true;
        type->add(attribute);
        type->affects(*attribute, *output_attribute());
    }
    type->compute = compute;
    scene.add_type(type);
}

} // namespace

void add_primitive_types(Scene& scene) {
    add_creator(scene, "polyCube", 0x50435542, compute<cube, cube_polygons>,
                {{"width", "w", 1, false},
                 {"height", "h", 1, false},
                 {"depth", "d", 1, false},
                 {"subdivisionsWidth", "sw", 1, true},
                 {"subdivisionsHeight", "sh", 1, true},
                 {"subdivisionsDepth", "sd", 1, true}});
    add_creator(scene, "polyPlane", 0x504D4553, compute<plane, plane_polygons>,
                {{"width", "w", 1, false},
                 {"height", "h", 1, false},
                 {"subdivisionsWidth", "sw", 10, true},
                 {"subdivisionsHeight", "sh", 10, true}});
    add_creator(scene, "polySphere", 0x50535048, compute<sphere, turned_polygons>,
                {{"radius", "r", 1, false},
                 {"subdivisionsAxis", "sa", 20, true},
                 {"subdivisionsHeight", "sh", 20, true}});
    add_creator(scene, "polyCylinder", 0x5043594C, compute<cylinder, cylinder_polygons>,
                {{"radius", "r", 1, false},
                 {"height", "h", 2, false},
                 {"subdivisionsAxis", "sa", 20, true},
                 {"subdivisionsHeight", "sh", 1, true},
                 {"subdivisionsCaps", "sc", 1, true}});
    add_creator(scene, "polyTorus", 0x50544F52, compute<torus, turned_polygons>,
                {{"radius", "r", 1, false},
                 {"sectionRadius", "sr", 0.5, false},
                 {"subdivisionsAxis", "sa", 20, true},
                 {"subdivisionsHeight", "sh", 20, true}});
}

} // namespace host::graph
