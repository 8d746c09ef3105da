/// The syntax tree that the parser makes and the interpreter walks.
///
/// One node type serves all constructs. A tree is immutable once parsed; procedures share ownership
/// of theirs.
#pragma once

#include "host/script/lexer.h"

#include <memory>
#include <string>
#include <vector>

namespace host::script {

/// The comment beside a kind lists its parts and items, then the other members in use.
enum class SyntaxKind {
    // expressions
    literal,     ///< value
    variable,    ///< text: name without the dollar sign
    element,     ///< base (an array or matrix), index (of a matrix also column)
    component,   ///< base (a vector); text: x, y or z
    unary,       ///< operand; text: ! or -
    binary,      ///< left, right; text: the operator
    logical,     ///< left, right; text: && or ||
    conditional, ///< condition, then, otherwise
    assign,      ///< target, assigned; text: = += -= *= /= %= or ^=
    increment,   ///< target; text: ++ or --; flag: postfix: the result is the value before the
                 ///< increment
    cast,        ///< operand; type
    array,       ///< items: elements
    vector,      ///< items: three components
    matrix,      ///< items: cells, row by row; count: columns
    call,        ///< items: arguments; text: name; flag: written as a function call, `name(...)`
    catch_,      ///< operand; flag: catchQuiet
    // statements
    block,       ///< items: statements; flag: has a scope of its own
    expression,  ///< operand
    declaration, ///< items: declarators; flag: global
    declarator, ///< initial (optional), size (optional; of a matrix also columns); text: name; type
    if_,        ///< condition, then, otherwise (optional)
    for_,       ///< init (block), condition (optional), step (block), body
    for_in,     ///< array, body; text: name of the loop variable
    while_,     ///< condition, body
    do_while,   ///< condition, body
    switch_,    ///< value; items: case labels and statements in order
    case_label, ///< value (optional; absent: default)
    break_,
    continue_,
    return_,   ///< value (optional)
    procedure, ///< procedure_body; items: declarators of the parameters; text: name; type of the
               ///< result; flag: global
};

/// Positions in SyntaxNode::parts.
namespace part {
enum : size_t {
    operand = 0,
    base = 0,
    value = 0,
    left = 0,
    right = 1,
    array = 0,
    index = 1,
    column = 2,
    target = 0,
    assigned = 1,
    condition = 0,
    then = 1,
    otherwise = 2,
    body = 1,
    init = 2,
    step = 3,
    initial = 0,
    size = 1,
    columns = 2,
    procedure_body = 0,
};
} // namespace part

struct SyntaxNode;
using SyntaxNodePtr = std::shared_ptr<const SyntaxNode>;

struct SyntaxNode {
    SyntaxNode() = default;
    ~SyntaxNode();
    SyntaxNode(const SyntaxNode&) = delete;
    SyntaxNode& operator=(const SyntaxNode&) = delete;

    SyntaxKind kind = SyntaxKind::block;
    Position at;
    std::string text;
    Value value;
    Type type;
    bool flag = false;
    uint32_t count = 0;
    std::vector<SyntaxNodePtr>
        parts; ///< by position; an absent optional part is null or past the end
    std::vector<SyntaxNodePtr> items; ///< lists of any length

    bool has(size_t position) const { return position < parts.size() && parts[position]; }
    /// The part at a position, which must be present (see `has`).
    const SyntaxNode& operator[](size_t position) const { return *parts[position]; }
    void set(size_t position, SyntaxNodePtr node) {
        if (position >= parts.size())
            parts.resize(position + 1);
        parts[position] = std::move(node);
    }
};

/// Chains such as 1 + 1 + ... nest to the left without limit, so their nodes are released in a
/// loop: one destructor within the other would overflow the stack.
inline SyntaxNode::~SyntaxNode() {
    SyntaxNodePtr chain = parts.empty() ? nullptr : std::move(parts.front());
    while (chain && chain.use_count() == 1) {
        auto& inner = const_cast<SyntaxNode&>(*chain).parts; // the last owner may change it
        chain = inner.empty() ? nullptr : std::move(inner.front());
    }
}

/// A parsed text.
struct Unit {
    std::string file;
    SyntaxNodePtr body;
};

/// Parses a whole text. Throws ScriptError at the first syntax error.
MHOST_EXPORT std::shared_ptr<const Unit> parse(std::string_view text, const std::string& file);

} // namespace host::script
