/// The attributes of `tessora_node` that hold settings and results: one table for the node, which
/// declares and reads them, and for the command, which writes them.
///
/// "inMesh" and "outMesh" are not in the table; the node creates them itself.
#pragma once

enum class AttributeKind { string, integer, real, boolean };

/// Order of creation; also the order in which the command writes the attributes.
enum AttributeId {
    k_uv_set,
    k_charts,
    k_stretch,
    k_padding,
    k_texture_width,
    k_texture_height,
    k_high_quality,
    k_keep_borders,
    k_cut_grooves,
    k_groove_angle,
    k_cut_ridges,
    k_ridge_angle,
    k_adjacency_method,
    k_epsilon,
    k_skip_compute,
    k_stretch_result,
    k_charts_result,
    k_mesh_path,
    k_visualization,
    k_attribute_count
};

struct AttributeRow {
    const char* long_name;
    const char* short_name;
    AttributeKind kind;
    const char* add_text;     ///< written when the attribute cannot be added
    const char* affects_text; ///< written when the dependency fails; null: affects nothing
    const char* read_tag;     ///< "Retrieving settings failed (...)"; null: compute never reads it
    const char* write_tag;    ///< "Failed to connect node attribute: ..."
};

/// The texts are irregular on purpose: scripts of studios search for them as they are.
inline constexpr AttributeRow k_attributes[k_attribute_count] = {
    {"UV_Set", "p_uv", AttributeKind::string, "addAttribute uv_set failed",
     "attributeAffects (uv_set)", "uv_set", "uv set"},
    {"Charts", "p_ch", AttributeKind::integer, "addAttribute charts failed",
     "attributeAffects (charts)", "charts", "charts"},
    {"Stretch", "p_st", AttributeKind::real, "addAttribute stretch failed",
     "attributeAffects (stretch)", "stretch", "stretch"},
    {"Padding", "p_pa", AttributeKind::integer, "addAttribute padding failed",
     "attributeAffects (padding)", "padding", "padding"},
    {"Texture_Width", "p_wi", AttributeKind::integer, "addAttribute width failed",
     "attributeAffects (tex_width)", "tex_width", "tex_width"},
    {"Texture_Height", "p_he", AttributeKind::integer, "addAttribute height failed",
     "attributeAffects (tex_height)", "tex_height", "tex_height"},
    {"High_Quality", "p_hq", AttributeKind::boolean, "addAttribute quality failed",
     "attributeAffects (high_quality)", "high_quality", "high_quality"},
    {"Keep_Borders", "p_ks", AttributeKind::boolean, "addAttribute seams failed",
     "attributeAffects (keep_seams)", "keep_seams", "keep_seams"},
    {"Cut_Grooves", "p_ug", AttributeKind::boolean, "addAttribute use_grooves failed",
     "attributeAffects (use_grooves)", "use_grooves", "use_grooves"},
    {"Groove_Angle", "p_ga", AttributeKind::real, "addAttribute groove_angle failed",
     "attributeAffects (groove_angle)", "groove_angle", "groove_angle"},
    {"Cut_Ridges", "p_ur", AttributeKind::boolean, "addAttribute use_ridges failed",
     "attributeAffects (use_ridges)", "use_ridges", "use_ridges"},
    {"Ridge_Angle", "p_ra", AttributeKind::real, "addAttribute ridge_angle failed",
     "attributeAffects (ridge_angle)", "ridge_angle", "ridge_angle"},
    {"Adjacency_Method", "p_am", AttributeKind::integer, "addAttribute amethod failed",
     "attributeAffects (adjacency_method)", "adjacency_method", "adjacency_method"},
    {"Epsilon", "p_ep", AttributeKind::real, "addAttribute epsilon failed",
     "attributeAffects (epsilon)", "epsilon", "epsilon"},
    {"Skip_compute", "p_sc", AttributeKind::integer, "addAttribute skip_compute failed",
     "attributeAffects (skip_compute)", "skip_compute", "skip_compute"},
    {"Stretch_result", "res_s", AttributeKind::real, "addAttribute res_stretch failed", nullptr,
     nullptr, "res_stretch"},
    {"Charts_result", "res_c", AttributeKind::integer, "addAttribute res_charts failed", nullptr,
     nullptr, "res_charts"},
    {"Mesh_path", "p_path", AttributeKind::string, "addAttribute mesh_path failed", nullptr,
     "str_mesh_path", "mesh_path"},
    {"Visualization", "p_vis", AttributeKind::boolean, "addAttribute visualize failed",
     "attributeAffects (visualize)", "visualization", "visualization"},
};
