/// The tree that the parser makes and the interpreter walks.
///
/// One node type for all constructs: `kids` in the order named beside each kind, absent parts as
/// null pointers. A tree is immutable once parsed; procedures keep theirs alive by shared
/// ownership.
#pragma once

#include "host/script/export.h"
#include "host/script/lexer.h"

#include <memory>
#include <string>
#include <vector>

namespace host::script {

enum class Kind {
    // expressions
    literal,     ///< value
    variable,    ///< text
    element,     ///< array expression, index (matrix: array, row, column)
    component,   ///< vector expression; text x, y or z
    unary,       ///< operand; text ! -
    binary,      ///< left, right; text is the operator
    logical,     ///< left, right; text && ||
    conditional, ///< condition, then, else
    assign,      ///< target, value; text = += -= *= /= %= ^=
    increment,   ///< target; text ++ --; flag: the old value is the result (postfix)
    cast,        ///< operand; type
    array,       ///< elements
    vector,      ///< three components
    matrix,      ///< cells row by row; count: columns
    call,        ///< arguments; text name; flag: function form
    catcher,     ///< the expression; flag: quiet
    // statements
    block,      ///< statements
    expression, ///< the expression
    declare,    ///< per variable: its declarator; flag: global
    declarator, ///< initial value or null, size or null; text name; type
    branch,     ///< condition, then, else or null
    loop,       ///< init (block), condition or null, step (block), body
    for_each,   ///< array, body; text variable
    while_loop, ///< condition, body
    do_loop,    ///< body, condition
    choose,     ///< value, then choice labels and statements in order
    label,      ///< value, or null for default
    leave,      ///< break
    next,       ///< continue
    give,       ///< return: value or null
    procedure,  ///< body, then declarators of the parameters; text name; type; flag: global
};

struct Node {
    Kind kind = Kind::block;
    Position at;
    std::string text;
    Value value;
    Type type;
    bool flag = false;
    uint32_t count = 0;
    std::vector<std::shared_ptr<const Node>> kids;
};

using NodePtr = std::shared_ptr<const Node>;

/// A parsed text.
struct Unit {
    std::string file;
    NodePtr body;
};

/// Parses a whole text. Throws ScriptError with the place of the first fault.
TESSORA_SCRIPT_API std::shared_ptr<const Unit> parse(std::string_view text,
                                                     const std::string& file);

} // namespace host::script
