/// The command `tessora`: unwraps the first selected mesh, through a node in its history or
/// directly.
///
/// The command's result: doIt sets none, redoIt a boolean, undoIt a sentence.
#pragma once

#include "plugin/polyModifier.h"
#include "plugin/tmod_fty.h"
#include "plugin/unwrap_settings.h"

#include <maya/MArgList.h>
#include <maya/MSyntax.h>

class tmod_cmd : public polyModifierCmd {
public:
    ~tmod_cmd() override;

    MStatus doIt(const MArgList& arguments) override;
    MStatus undoIt() override;
    MStatus redoIt() override;
    bool isUndoable() const override;
    MStatus initModifierNode(MObject modifierNode) override;
    MStatus directModifier(MObject mesh) override;

    /// A new instance, owned by the host; null if memory runs out.
    static void* creator();
    /// The fourteen flags. No positional arguments: the mesh is the first one selected.
    static MSyntax create_syntax();

private:
    MStatus unwrap_selected(const MArgList& arguments);
    void reset_settings();
    bool parse_flags(const MArgList& arguments);
    MStatus show_seams_again();

    tmod_fty fty_;
    UnwrapSettings settings_;
    MObject modifier_node_; ///< null on the direct path
};
