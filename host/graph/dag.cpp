#include "host/graph/dag.h"

#include "host/graph/evaluate.h"

#include <algorithm>
#include <cmath>

namespace host::graph {

namespace {

const char* const k_axes[] = {"X", "Y", "Z"};

Ref<Attribute> make_vector(const char* long_name, const char* short_name, Unit unit,
                           double default_value) {
    // Suffixes are capitals in long names and small letters in short names: "translateX", "tx".
    static const char* const k_letters[] = {"x", "y", "z"};
    Ref<Attribute> vector = new Attribute(long_name, short_name, AttributeKind::compound);
    vector->tuple = Tuple::double3;
    vector->unit = unit;
    for (int i = 0; i < 3; ++i) {
        Ref<Attribute> part =
            new Attribute(std::string(long_name) + k_axes[i],
                          std::string(short_name) + k_letters[i], AttributeKind::real64);
        part->unit = unit;
        part->set_default(PlugValue::of_double(default_value));
        vector->add_child(part);
    }
    return vector;
}

Ref<Attribute> keyable(Ref<Attribute> attribute) {
    attribute->flags.keyable = true;
    for (const Ref<Attribute>& child : attribute->children())
        child->flags.keyable = true;
    return attribute;
}

Ref<Attribute> make_shear() {
    static const char* const k_long[] = {"XY", "XZ", "YZ"};
    static const char* const k_short[] = {"xy", "xz", "yz"};
    Ref<Attribute> vector = new Attribute("shear", "sh", AttributeKind::compound);
    vector->tuple = Tuple::double3;
    for (int i = 0; i < 3; ++i)
        vector->add_child(new Attribute(std::string("shear") + k_long[i],
                                        std::string("sh") + k_short[i], AttributeKind::real64));
    return vector;
}

/// Reads the three components of a vector attribute; the defaults if the slot does not exist.
void read_vector(const Node& node, const Attribute& attribute, double out[3]) {
    const Slot* slot = node.existing_slot(attribute);
    for (unsigned int i = 0; i < 3; ++i) {
        out[i] = attribute.children()[i]->default_value().number();
        if (slot != nullptr && !slot->below().empty())
            out[i] = slot->below()[i]->value.number();
    }
}

MMatrix translation(double x, double y, double z) {
    MMatrix m;
    m[3][0] = x;
    m[3][1] = y;
    m[3][2] = z;
    return m;
}

MMatrix axis_rotation(int axis, double angle) {
    MMatrix m;
    if (angle == 0.0)
        return m;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const unsigned int a = static_cast<unsigned int>((axis + 1) % 3);
    const unsigned int b = static_cast<unsigned int>((axis + 2) % 3);
    m[a][a] = c;
    m[a][b] = s;
    m[b][a] = -s;
    m[b][b] = c;
    return m;
}

} // namespace

const DagAttributes& dag_attributes() {
    static const DagAttributes* const attributes = [] {
        auto* a = new DagAttributes;
        a->visibility = keyable(new Attribute("visibility", "v", AttributeKind::boolean));
        a->visibility->set_default(PlugValue::of_bool(true));
        a->intermediate = new Attribute("intermediateObject", "io", AttributeKind::boolean);
        a->translate = keyable(make_vector("translate", "t", Unit::length, 0.0));
        a->rotate = keyable(make_vector("rotate", "r", Unit::angle, 0.0));
        a->rotate_order = new Attribute("rotateOrder", "ro", AttributeKind::enumeration);
        a->rotate_order->fields = {{"xyz", 0}, {"yzx", 1}, {"zxy", 2},
                                   {"xzy", 3}, {"yxz", 4}, {"zyx", 5}};
        a->scale = keyable(make_vector("scale", "s", Unit::none, 1.0));
        a->shear = make_shear();
        a->rotate_pivot = make_vector("rotatePivot", "rp", Unit::length, 0.0);
        a->scale_pivot = make_vector("scalePivot", "sp", Unit::length, 0.0);
        a->rotate_pivot_translate = make_vector("rotatePivotTranslate", "rpt", Unit::length, 0.0);
        a->scale_pivot_translate = make_vector("scalePivotTranslate", "spt", Unit::length, 0.0);
        return a;
    }();
    return *attributes;
}

DagNode::DagNode(const NodeTypeRef& type) : Node(type) {}
DagNode::~DagNode() = default;

unsigned int DagNode::parent_count() const { return static_cast<unsigned int>(parents_.size()); }

MObject DagNode::parent(unsigned int index) const {
    return index < parents_.size() ? MObject(parents_[index]) : MObject();
}

unsigned int DagNode::child_count() const { return static_cast<unsigned int>(children_.size()); }

MObject DagNode::child(unsigned int index) const {
    return index < children_.size() ? MObject(children_[index]) : MObject();
}

MMatrix DagNode::local_matrix() const {
    const DagAttributes& a = dag_attributes();
    if (is_shape() || !owns(*a.translate))
        return MMatrix();
    // Evaluates the transform attributes that are driven by connections.
    for (const auto& attribute : {a.translate, a.rotate, a.scale})
        if (Slot* slot = existing_slot(*attribute))
            evaluate(*slot);
    double t[3], r[3], s[3], sh[3], rp[3], sp[3], rpt[3], spt[3];
    read_vector(*this, *a.translate, t);
    read_vector(*this, *a.rotate, r);
    read_vector(*this, *a.scale, s);
    read_vector(*this, *a.shear, sh);
    read_vector(*this, *a.rotate_pivot, rp);
    read_vector(*this, *a.scale_pivot, sp);
    read_vector(*this, *a.rotate_pivot_translate, rpt);
    read_vector(*this, *a.scale_pivot_translate, spt);

    static const int k_orders[6][3] = {{0, 1, 2}, {1, 2, 0}, {2, 0, 1},
                                       {0, 2, 1}, {1, 0, 2}, {2, 1, 0}};
    const Slot* order_slot = existing_slot(*a.rotate_order);
    const int order = order_slot == nullptr ? 0 : static_cast<int>(order_slot->value.number());
    MMatrix rotation;
    for (const int axis : k_orders[order < 0 || order > 5 ? 0 : order])
        rotation *= axis_rotation(axis, r[axis]);
    MMatrix scale;
    for (unsigned int i = 0; i < 3; ++i)
        scale[i][i] = s[i];
    MMatrix shear;
    shear[1][0] = sh[0];
    shear[2][0] = sh[1];
    shear[2][1] = sh[2];
    MMatrix m = translation(-sp[0], -sp[1], -sp[2]) * scale * shear;
    m *= translation(sp[0] + spt[0] - rp[0], sp[1] + spt[1] - rp[1], sp[2] + spt[2] - rp[2]);
    m *= rotation;
    return m * translation(rp[0] + rpt[0] + t[0], rp[1] + rpt[1] + t[1], rp[2] + rpt[2] + t[2]);
}

bool DagNode::is_ancestor_of(const DagNode& other) const {
    const DagNode* node = &other;
    while (node->parents_.size() == 1) {
        node = node->parents_.front();
        if (node == this)
            return true;
    }
    return std::any_of(node->parents_.begin(), node->parents_.end(), [this](const DagNode* parent) {
        return parent == this || is_ancestor_of(*parent);
    });
}

bool DagNode::is_intermediate() {
    const Slot* slot = existing_slot(*dag_attributes().intermediate);
    return slot != nullptr && slot->value.number() != 0.0;
}

DagPath DagNode::path() const {
    DagPath path;
    for (const DagNode* node = this; node != nullptr;
         node = node->parents_.empty() ? nullptr : node->parents_.front())
        path.push_back(const_cast<DagNode*>(node));
    std::reverse(path.begin(), path.end());
    return path;
}

std::vector<DagPath> DagNode::all_paths() const {
    // Climbs in a loop to a node with no or several parents: recursion is only as deep as instances
    // are nested.
    DagPath lower; // from this node up
    const DagNode* node = this;
    for (; node->parents_.size() == 1; node = node->parents_.front())
        lower.push_back(const_cast<DagNode*>(node));
    lower.push_back(const_cast<DagNode*>(node));
    std::reverse(lower.begin(), lower.end());
    if (node->parents_.empty())
        return {lower};
    std::vector<DagPath> paths;
    for (const DagNode* parent : node->parents_)
        for (DagPath& path : parent->all_paths()) {
            path.insert(path.end(), lower.begin(), lower.end());
            paths.push_back(std::move(path));
        }
    return paths;
}

size_t DagNode::path_count() const {
    const DagNode* node = this;
    while (node->parents_.size() == 1)
        node = node->parents_.front();
    size_t count = node->parents_.empty() ? 1 : 0;
    for (const DagNode* parent : node->parents_)
        count += parent->path_count();
    return count;
}

void walk_down(DagNode& top, const std::function<bool(DagNode&)>& visit) {
    std::vector<DagNode*> pending = {&top}; // the next node last
    while (!pending.empty()) {
        DagNode& node = *pending.back();
        pending.pop_back();
        if (visit(node))
            pending.insert(pending.end(), node.children().rbegin(), node.children().rend());
    }
}

std::string full_name(const DagPath& path) {
    std::string text;
    for (const Ref<DagNode>& node : path)
        text += "|" + node->name_text();
    return text;
}

MMatrix world_matrix(const DagNode* node) {
    MMatrix matrix;
    for (; node; node = node->parents().empty() ? nullptr : node->parents()[0])
        matrix = matrix * node->local_matrix();
    return matrix;
}

MDagPath to_interface(const DagPath& path) {
    std::vector<MObject> nodes;
    for (const Ref<DagNode>& node : path)
        nodes.emplace_back(node.get());
    return MDagPath(nodes);
}

DagPath to_graph(const MDagPath& path) {
    DagPath nodes;
    for (const MObject& object : path.host_nodes()) {
        Node* const node = node_of(object);
        if (node == nullptr || node->as_dag_node() == nullptr)
            return {};
        nodes.push_back(node->as_dag_node());
    }
    return nodes;
}

} // namespace host::graph
