#include "host/graph/standard_types.h"

namespace host::graph {

void add_standard_types(Scene& scene) {
    add_dag_types(scene);
    add_mesh_types(scene);
    add_primitive_types(scene);
    add_uv_types(scene);
}

void add_dag_types(Scene& scene) {
    const DagAttributes& a = dag_attributes();
    NodeTypeRef transform = make_node_type("transform", 0x5846524D, MFn::kTransform); // "XFRM"
    transform->dag = true;
    for (const auto& attribute :
         {a.visibility, a.intermediate, a.translate, a.rotate, a.rotate_order, a.scale, a.shear,
          a.rotate_pivot, a.scale_pivot, a.rotate_pivot_translate, a.scale_pivot_translate})
        transform->add(attribute);
    scene.add_type(transform);

    NodeTypeRef camera = make_node_type("camera", 0x4443414D, MFn::kCamera); // "DCAM"
    camera->dag = camera->shape = true;
    camera->base_name = "cameraShape";
    camera->add(a.visibility);
    camera->add(a.intermediate);
    const auto number = [&](const char* long_name, const char* short_name, double value) {
        Ref<Attribute> attribute = new Attribute(long_name, short_name, AttributeKind::real64);
        attribute->set_default(PlugValue::of_double(value));
        camera->add(attribute);
    };
    number("focalLength", "fl", 35.0);
    number("horizontalFilmAperture", "hfa", 1.41732);
    number("verticalFilmAperture", "vfa", 0.94488);
    number("nearClipPlane", "ncp", 0.1);
    number("farClipPlane", "fcp", 10000.0);
    number("centerOfInterest", "coi", 5.0);
    number("orthographicWidth", "ow", 30.0);
    camera->add(new Attribute("orthographic", "o", AttributeKind::boolean));
    scene.add_type(camera);
}

} // namespace host::graph
