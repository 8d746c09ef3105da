#include "host/script/parser.h"

namespace host::script {

namespace {

struct Level {
    const char* operators[5];
    SyntaxKind kind;
};

constexpr Level k_levels[] = {
    {{"||"}, SyntaxKind::logical},      {{"&&"}, SyntaxKind::logical},
    {{"==", "!="}, SyntaxKind::binary}, {{"<", ">", "<=", ">="}, SyntaxKind::binary},
    {{"+", "-"}, SyntaxKind::binary},   {{"*", "/", "%", "^"}, SyntaxKind::binary},
};
constexpr size_t k_level_count = sizeof k_levels / sizeof k_levels[0];

} // namespace

bool type_named(const std::string& text, Basic& basic) {
    static const std::pair<const char*, Basic> types[] = {{"int", Basic::integer},
                                                          {"float", Basic::real},
                                                          {"string", Basic::string},
                                                          {"vector", Basic::vector},
                                                          {"matrix", Basic::matrix}};
    for (const auto& type : types)
        if (text == type.first) {
            basic = type.second;
            return true;
        }
    return false;
}

bool constant_named(const std::string& text, Value& value) {
    if (text == "true" || text == "on" || text == "yes")
        value = Value(int32_t(1));
    else if (text == "false" || text == "off" || text == "no")
        value = Value(int32_t(0));
    else
        return false;
    return true;
}

SyntaxNodePtr Parser::expression() {
    Depth depth(*this);
    SyntaxNodePtr left = conditional();
    const Token token = lexer_.peek(k_expr);
    for (const char* op : {"=", "+=", "-=", "*=", "/=", "%=", "^="}) {
        if (!token.is(op))
            continue;
        lexer_.take(k_expr);
        require_target(*left);
        auto node = make(SyntaxKind::assign, token.at);
        node->text = op;
        node->set(part::target, left);
        node->set(part::assigned, expression());
        return node;
    }
    return left;
}

void Parser::require_target(const SyntaxNode& node) const {
    if (node.kind == SyntaxKind::variable)
        return;
    if ((node.kind == SyntaxKind::element || node.kind == SyntaxKind::component) &&
        node[part::base].kind == SyntaxKind::variable)
        return;
    fail(node.at, "Only a variable can be assigned to.");
}

SyntaxNodePtr Parser::conditional() {
    SyntaxNodePtr condition = binary(0);
    if (!lexer_.peek(k_expr).is("?"))
        return condition;
    auto node = make(SyntaxKind::conditional, lexer_.take(k_expr).at);
    node->set(part::condition, condition);
    node->set(part::then, expression());
    expect(":");
    node->set(part::otherwise, expression());
    return node;
}

SyntaxNodePtr Parser::binary(size_t level) {
    if (level == k_level_count)
        return unary();
    SyntaxNodePtr left = binary(level + 1);
    for (;;) {
        const Token token = lexer_.peek(k_expr);
        const char* found = nullptr;
        for (const char* op : k_levels[level].operators)
            if (op && token.is(op))
                found = op;
        if (!found)
            return left;
        lexer_.take(k_expr);
        auto node = make(k_levels[level].kind, token.at);
        node->text = found;
        node->set(part::left, left);
        node->set(part::right, binary(level + 1));
        left = node;
    }
}

SyntaxNodePtr Parser::unary() {
    Depth depth(*this);
    const Token token = lexer_.peek(k_expr);
    if (token.is("!") || token.is("-") || token.is("+")) {
        lexer_.take(k_expr);
        SyntaxNodePtr operand = unary();
        if (token.is("+"))
            return operand;
        auto node = make(SyntaxKind::unary, token.at);
        node->text = token.text;
        node->set(part::operand, operand);
        return node;
    }
    if (token.is("++") || token.is("--")) {
        lexer_.take(k_expr);
        return increment(token, unary(), false);
    }
    return postfix();
}

SyntaxNodePtr Parser::increment(const Token& token, SyntaxNodePtr target, bool after) {
    require_target(*target);
    auto node = make(SyntaxKind::increment, token.at);
    node->text = token.text;
    node->flag = after;
    node->set(part::target, std::move(target));
    return node;
}

SyntaxNodePtr Parser::postfix() {
    SyntaxNodePtr node = primary();
    for (;;) {
        const Token token = lexer_.peek(k_expr);
        if (token.is("[") || token.is(".")) {
            node = subscript(node);
        } else if (token.is("++") || token.is("--")) {
            lexer_.take(k_expr);
            node = increment(token, node, true);
        } else {
            return node;
        }
    }
}

SyntaxNodePtr Parser::subscript(SyntaxNodePtr base) {
    const Token token = lexer_.take(k_expr);
    if (token.is(".")) {
        const Token name = lexer_.take(k_expr);
        if (name.text != "x" && name.text != "y" && name.text != "z")
            fail(name.at, "A vector has the components x, y and z.");
        auto node = make(SyntaxKind::component, token.at);
        node->text = name.text;
        node->set(part::base, std::move(base));
        return node;
    }
    auto node = make(SyntaxKind::element, token.at);
    node->set(part::base, std::move(base));
    node->set(part::index, expression());
    expect("]");
    if (accept("[")) {
        node->set(part::column, expression());
        expect("]");
    }
    return node;
}

SyntaxNodePtr Parser::primary() {
    const Token token = lexer_.take(k_expr);
    if (token.kind == TokenKind::variable)
        return variable(token);
    if (token.kind == TokenKind::name)
        return name_expression(token);
    if (token.is("("))
        return cast_or_group(token);
    if (token.is("`"))
        return back_quoted(token);
    if (token.is("{"))
        return array_literal(token);
    if (token.is("<<"))
        return vector_literal(token);
    auto node = make(SyntaxKind::literal, token.at);
    if (token.kind == TokenKind::string)
        node->value = Value(token.text);
    else if (token.kind == TokenKind::integer || token.kind == TokenKind::real)
        node->value = token.number;
    else
        unexpected(token);
    return node;
}

SyntaxNodePtr Parser::name_expression(const Token& token) {
    auto node = make(SyntaxKind::literal, token.at);
    Basic basic;
    if (type_named(token.text, basic)) {
        node->kind = SyntaxKind::cast;
        node->type = {basic, false};
        node->set(part::operand, parenthesised());
        return node;
    }
    if (constant_named(token.text, node->value))
        return node;
    if (!lexer_.peek(k_expr).is("("))
        unexpected(token);
    if (token.text == "catch" || token.text == "catchQuiet")
        return catch_expression(token);
    return call_arguments(token);
}

SyntaxNodePtr Parser::cast_or_group(const Token& token) {
    const size_t mark = lexer_.mark();
    const Token name = lexer_.take(k_expr);
    Basic basic;
    if (name.kind == TokenKind::name && type_named(name.text, basic) && accept(")")) {
        auto node = make(SyntaxKind::cast, token.at);
        node->type = {basic, false};
        node->set(part::operand, unary());
        return node;
    }
    lexer_.rewind(mark);
    SyntaxNodePtr inner = expression();
    expect(")");
    return inner;
}

SyntaxNodePtr Parser::back_quoted(const Token& token) {
    if (lexer_.peek(k_expr).kind != TokenKind::name)
        unexpected(lexer_.peek(k_expr));
    SyntaxNodePtr node = command_or_call(true);
    if (!accept("`"))
        fail(token.at, "The back-quote that opens here is not closed.");
    return node;
}

SyntaxNodePtr Parser::array_literal(const Token& token) {
    auto node = make(SyntaxKind::array, token.at);
    while (!lexer_.peek(k_expr).is("}")) {
        node->items.push_back(expression());
        if (!accept(","))
            break;
    }
    expect("}");
    return node;
}

SyntaxNodePtr Parser::vector_literal(const Token& token) {
    auto node = make(SyntaxKind::vector, token.at);
    do {
        node->items.push_back(expression_in_vector());
        if (accept(";")) {
            if (node->kind == SyntaxKind::vector)
                node->count = uint32_t(node->items.size());
            node->kind = SyntaxKind::matrix;
        } else if (!accept(",")) {
            break;
        }
    } while (true);
    expect(">>");
    check_shape(*node);
    return node;
}

void Parser::check_shape(const SyntaxNode& node) const {
    if (node.kind == SyntaxKind::vector && node.items.size() != 3)
        fail(node.at, "A vector has three components.");
    if (node.kind == SyntaxKind::matrix && node.items.size() % node.count != 0)
        fail(node.at, "The rows of a matrix have the same length.");
}

} // namespace host::script
