/// Base of plug-in commands. `doIt` is called once per instance. If it succeeds and `isUndoable`
/// returns true, the instance goes to the undo queue, which calls `undoIt` and `redoIt`
/// alternately; otherwise it is deleted. Results belong to the running command.
#pragma once

#include <maya/MArgList.h>
#include <maya/MDoubleArray.h>
#include <maya/MIntArray.h>
#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MStringArray.h>
#include <maya/MSyntax.h>

namespace host {
namespace graph {
class Commands;
}
} // namespace host

class MHOST_EXPORT MPxCommand {
public:
    enum MResultType { kLong, kDouble, kString, kNoArg };

    MPxCommand();
    virtual ~MPxCommand();

    virtual MStatus doIt(const MArgList& args);
    virtual MStatus undoIt();
    virtual MStatus redoIt();
    virtual bool isUndoable() const;
    virtual bool hasSyntax() const;

    MSyntax syntax() const;
    MString commandString() const;
    bool isHistoryOn() const;

    static void displayInfo(const MString& theMessage);
    static void displayWarning(const MString& theWarning, bool showLineNumber = false);
    static void displayError(const MString& theError, bool showLineNumber = false);

    static void clearResult();
    static void setResult(unsigned int result);
    static void setResult(int result);
    static void setResult(double result);
    static void setResult(bool result); ///< stored as int
    static void setResult(const MString& result);
    static void setResult(const char* result);
    static void setResult(const MIntArray& result);
    static void setResult(const MDoubleArray& result);
    static void setResult(const MStringArray& result);
    static void appendToResult(int result);
    static void appendToResult(double result);
    static void appendToResult(bool result);
    static void appendToResult(const MString& result);
    static void appendToResult(const char* result);
    static void appendToResult(const MStringArray& result);
    static MResultType currentResultType();
    static bool isCurrentResultArray();
    static MStatus getCurrentResult(int& result);
    static MStatus getCurrentResult(double& result);
    static MStatus getCurrentResult(MString& result);
    static MStatus getCurrentResult(MIntArray& result);
    static MStatus getCurrentResult(MDoubleArray& result);
    static MStatus getCurrentResult(MStringArray& result);

private:
    MPxCommand(const MPxCommand&);
    MPxCommand& operator=(const MPxCommand&);
    friend class host::graph::Commands;
    MString name_;
    MString text_;
};
