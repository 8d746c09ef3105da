// The node's identity and its attributes.
#include "plugin/guarded.h"
#include "plugin/tmod_node.h"

#include <maya/MFnNumericAttribute.h>
#include <maya/MFnNumericData.h>
#include <maya/MFnTypedAttribute.h>

#include <iostream>

MTypeId tmod_node::id(0x113C40);
MObject tmod_node::in_mesh;
MObject tmod_node::out_mesh;
MObject tmod_node::attributes[k_attribute_count];

namespace {

MStatus fail(const MStatus& status, const char* text) {
    std::cerr << text << std::endl;
    return status;
}

MObject create_attribute(const AttributeRow& row) {
    if (row.kind == AttributeKind::string) {
        MFnTypedAttribute typed;
        return typed.create(row.long_name, row.short_name, MFnData::kString);
    }
    MFnNumericData::Type type = MFnNumericData::kLong;
    if (row.kind == AttributeKind::real)
        type = MFnNumericData::kFloat;
    else if (row.kind == AttributeKind::boolean)
        type = MFnNumericData::kBoolean;
    MFnNumericAttribute numeric;
    return numeric.create(row.long_name, row.short_name, type, 0.0);
}

} // namespace

void* tmod_node::creator() {
    tmod_node* node = nullptr;
    guarded([&] {
        node = new tmod_node;
        return MStatus(MS::kSuccess);
    });
    return node;
}

MStatus tmod_node::initialize() { return guarded(declare_attributes); }

MStatus tmod_node::declare_attributes() {
    MFnTypedAttribute typed;
    in_mesh = typed.create("inMesh", "im", MFnData::kMesh);
    typed.setStorable(true);
    out_mesh = typed.create("outMesh", "om", MFnData::kMesh);
    typed.setStorable(false);
    typed.setWritable(false);
    for (MObject* mesh : {&in_mesh, &out_mesh}) {
        const MStatus status = addAttribute(*mesh);
        if (!status)
            return fail(status, "addAttribute");
    }
    MStatus status = attributeAffects(in_mesh, out_mesh);
    if (!status)
        return fail(status, "attributeAffects");

    for (int i = 0; i < k_attribute_count; ++i) {
        attributes[i] = create_attribute(k_attributes[i]);
        status = addAttribute(attributes[i]);
        if (!status)
            return fail(status, k_attributes[i].add_text);
    }
    // Results and the mesh path affect nothing: setting the results during compute must not make
    // the output dirty again.
    for (int i = 0; i < k_attribute_count; ++i) {
        if (k_attributes[i].affects_text == nullptr)
            continue;
        status = attributeAffects(attributes[i], out_mesh);
        if (!status)
            return fail(status, k_attributes[i].affects_text);
    }
    return MS::kSuccess;
}
