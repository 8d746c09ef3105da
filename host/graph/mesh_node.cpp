#include "host/graph/mesh_node.h"

#include "host/graph/data.h"
#include "host/graph/standard_types.h"
#include "host/mesh/mesh.h"

namespace host::graph {

namespace {

Ref<Attribute> make_mesh(const char* long_name, const char* short_name) {
    return new Attribute(long_name, short_name, AttributeKind::mesh);
}

/// An array of float3 with the given component names.
Ref<Attribute> make_offsets(const char* long_name, const char* short_name,
                            const char* const longs[], const char* const shorts[]) {
    Ref<Attribute> offsets = new Attribute(long_name, short_name, AttributeKind::compound);
    offsets->tuple = Tuple::float3;
    offsets->flags.array = true;
    for (int i = 0; i < 3; ++i)
        offsets->add_child(new Attribute(longs[i], shorts[i], AttributeKind::real32));
    return offsets;
}

const Mesh* mesh_in(const Slot* slot) {
    Object* data = slot == nullptr ? nullptr : slot->value.as_data();
    return data == nullptr ? nullptr : data->as_mesh()->mesh();
}

float component(const Slot& offset, size_t index) {
    return static_cast<float>(offset.below()[index]->value.number());
}

} // namespace

const MeshAttributes& mesh_attributes() {
    static const MeshAttributes* const attributes = [] {
        static const char* const k_longs[] = {"pntx", "pnty", "pntz"};
        static const char* const k_shorts[] = {"px", "py", "pz"};
        auto* a = new MeshAttributes;
        a->in_mesh = make_mesh("inMesh", "i");
        a->out_mesh = make_mesh("outMesh", "o");
        a->world_mesh = make_mesh("worldMesh", "w");
        a->world_mesh->flags.array = true;
        a->world_mesh->flags.writable = false;
        a->world_mesh->flags.storable = false;
        a->tweaks = make_offsets("pnts", "pt", k_longs, k_shorts);
        return a;
    }();
    return *attributes;
}

Ref<Object> tweaked(const Mesh& mesh, const Slot& offsets) {
    std::vector<Float3> points = mesh.points();
    for (const auto& offset : offsets.below()) {
        const size_t vertex = static_cast<size_t>(offset->index());
        if (vertex >= points.size() || offset->below().empty())
            continue;
        points[vertex].x += component(*offset, 0);
        points[vertex].y += component(*offset, 1);
        points[vertex].z += component(*offset, 2);
    }
    Ref<Object> data = mesh_data(&mesh);
    data->as_mesh()->edit()->set_points(std::move(points));
    return data;
}

MeshNode::MeshNode(const NodeTypeRef& type) : DagNode(type) {}
MeshNode::~MeshNode() = default;

bool MeshNode::has_tweaks() const {
    const Slot* tweaks = existing_slot(*mesh_attributes().tweaks);
    if (tweaks == nullptr)
        return false;
    for (const auto& offset : tweaks->below())
        for (size_t i = 0; i < offset->below().size(); ++i)
            if (component(*offset, i) != 0.0f)
                return true;
    return false;
}

/// Sets outMesh from the current values of inMesh and pnts, without evaluating them.
void MeshNode::combine() const {
    auto& self = const_cast<MeshNode&>(*this);
    Slot& in = *self.slot(*mesh_attributes().in_mesh);
    Slot& out = *self.slot(*mesh_attributes().out_mesh);
    const Mesh* mesh = mesh_in(&in);
    if (mesh == nullptr)
        out.value = PlugValue();
    else if (has_tweaks())
        out.value =
            PlugValue::of_data(tweaked(*mesh, *existing_slot(*mesh_attributes().tweaks)).get());
    else
        out.value = in.value; // same object: in-place edits of inMesh show up in outMesh
    edited_ = false;
}

MStatus MeshNode::compute_output(Slot& output) {
    Slot& in = *slot(*mesh_attributes().in_mesh);
    Slot& out = *slot(*mesh_attributes().out_mesh);
    Slot& tweaks = *slot(*mesh_attributes().tweaks);
    if (&output != &out) {
        MStatus status = evaluate(out);
        Slot& world = output.is_array() ? *output.element(0) : output;
        copy_values(out, world);
        if (status && is_clean(out))
            set_clean(output);
        return status;
    }
    MStatus status = evaluate(in);
    if (status)
        status = evaluate(tweaks);
    if (!status)
        return status;
    combine();
    if (is_clean(in) && is_clean(tweaks))
        set_clean(out);
    return status;
}

MStatus MeshNode::refresh() { return evaluate(*slot(*mesh_attributes().out_mesh)); }

const Mesh* MeshNode::mesh() const {
    if (edited_)
        combine();
    return mesh_in(existing_slot(*mesh_attributes().out_mesh));
}

Mesh* MeshNode::edit() {
    Slot& in = *slot(*mesh_attributes().in_mesh);
    Slot& out = *slot(*mesh_attributes().out_mesh);
    Object* data = in.value.as_data();
    if (data == nullptr)
        return nullptr;
    if (!edited_) {
        // A tweaked copy in outMesh would share storage with inMesh and make every edit copy it.
        out.value = PlugValue();
        edited_ = true;
        in.was_set = true;
        if (!out.dirty)
            announce_change(in);
    }
    return data->as_mesh()->edit();
}

MStatus MeshNode::set_mesh(const Mesh& mesh) {
    Slot& in = *slot(*mesh_attributes().in_mesh);
    in.value = PlugValue::of_data(mesh_data(&mesh).get());
    in.was_set = true;
    announce_change(in);
    return MS::kSuccess;
}

namespace {

MStatus compute_mesh(Node& node, Slot& output) {
    Slot* root = &output;
    while (root->parent() != nullptr)
        root = root->parent();
    return static_cast<MeshNode&>(node).compute_output(*root);
}

Slot& mesh_write_target(Node& node, Slot& output) {
    Slot& in = *node.slot(*mesh_attributes().in_mesh);
    const bool is_out = &output.attribute() == mesh_attributes().out_mesh.get();
    return is_out && in.source() == nullptr ? in : output;
}

struct TweakAttributes {
    Ref<Attribute> input, output, tweak;
};

const TweakAttributes& tweak_attributes() {
    static const TweakAttributes* const attributes = [] {
        static const char* const k_longs[] = {"tweakX", "tweakY", "tweakZ"};
        static const char* const k_shorts[] = {"tx", "ty", "tz"};
        auto* a = new TweakAttributes;
        a->input = make_mesh("inputPolymesh", "ip");
        a->output = make_mesh("output", "out");
        a->output->flags.writable = false;
        a->output->flags.storable = false;
        a->tweak = make_offsets("tweak", "tk", k_longs, k_shorts);
        return a;
    }();
    return *attributes;
}

MStatus compute_tweak(Node& node, Slot& output) {
    Slot& in = *node.slot(*tweak_attributes().input);
    Slot& offsets = *node.slot(*tweak_attributes().tweak);
    MStatus status = evaluate(in);
    if (status)
        status = evaluate(offsets);
    if (!status)
        return status;
    constexpr int k_has_no_effect = 1;
    const Mesh* mesh = mesh_in(&in);
    if (mesh == nullptr)
        output.value = PlugValue();
    else if (node.state() == k_has_no_effect)
        output.value = in.value.deep_copy();
    else
        output.value = PlugValue::of_data(tweaked(*mesh, offsets).get());
    if (is_clean(in) && is_clean(offsets))
        set_clean(output);
    return status;
}

} // namespace

void add_mesh_types(Scene& scene) {
    const MeshAttributes& m = mesh_attributes();
    NodeTypeRef mesh = make_node_type("mesh", 0x444D5348, MFn::kMesh); // "DMSH"
    mesh->dag = mesh->shape = true;
    mesh->base_name = "polySurfaceShape";
    mesh->make = [](const NodeTypeRef& type) -> Ref<Node> { return new MeshNode(type); };
    mesh->add(dag_attributes().visibility);
    mesh->add(dag_attributes().intermediate);
    for (const auto& attribute : {m.in_mesh, m.out_mesh, m.world_mesh, m.tweaks})
        mesh->add(attribute);
    for (const auto& output : {m.out_mesh, m.world_mesh}) {
        mesh->affects(*m.in_mesh, *output);
        mesh->affects(*m.tweaks, *output);
    }
    mesh->compute = compute_mesh;
    mesh->write_target = mesh_write_target;
    scene.add_type(mesh);

    const TweakAttributes& t = tweak_attributes();
    NodeTypeRef tweak = make_node_type("polyTweak", 0x5054574B, MFn::kPolyTweak); // "PTWK"
    tweak->add(t.input);
    tweak->add(t.output);
    tweak->add(t.tweak);
    tweak->affects(*t.input, *t.output);
    tweak->affects(*t.tweak, *t.output);
    tweak->compute = compute_tweak;
    scene.add_type(tweak);
}

} // namespace host::graph
