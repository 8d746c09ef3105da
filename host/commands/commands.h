/// Registers the built-in commands that work on the scene, by topic.
#pragma once

#include "host/script/flags.h"

namespace host::script {

void add_attribute_commands(Interpreter& interpreter); ///< getAttr, setAttr, connectAttr, ...
void add_node_commands(Interpreter& interpreter);      ///< createNode, delete, rename, parent, ...
void add_list_commands(Interpreter& interpreter);      ///< ls, select, list..., objExists, ...
void add_mesh_commands(Interpreter& interpreter);      ///< polyCube, ..., polyEvaluate
void add_transform_commands(Interpreter& interpreter); ///< move, rotate, scale
void add_history_commands(Interpreter& interpreter);   ///< undo, redo, constructionHistory, dgeval
void add_menu_commands(Interpreter& interpreter);      ///< menu, uiOpenMenu
void add_plugin_commands(Interpreter& interpreter);    ///< loadPlugin, unloadPlugin, pluginInfo
void add_uv_commands(Interpreter& interpreter);        ///< polyMapCut, ..., polySelect
void add_uv_edit_commands(Interpreter& interpreter);   ///< polyEditUV, polyNormalizeUV, polyUVSet
void add_file_commands(Interpreter& interpreter);      ///< file

} // namespace host::script
