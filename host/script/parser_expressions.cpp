#include "host/script/parser.h"

namespace host::script {

namespace {

struct Level {
    const char* operators[5];
    Kind kind;
};

constexpr Level k_levels[] = {
    {{"||"}, Kind::logical},      {{"&&"}, Kind::logical},
    {{"==", "!="}, Kind::binary}, {{"<", ">", "<=", ">="}, Kind::binary},
    {{"+", "-"}, Kind::binary},   {{"*", "/", "%", "^"}, Kind::binary},
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

NodePtr Parser::expression() {
    Depth depth(*this);
    NodePtr left = conditional();
    const Token token = lexer_.peek(k_expr);
    for (const char* op : {"=", "+=", "-=", "*=", "/=", "%=", "^="}) {
        if (!token.is(op))
            continue;
        lexer_.take(k_expr);
        require_target(*left);
        auto node = make(Kind::assign, token.at);
        node->text = op;
        node->kids = {left, expression()};
        return node;
    }
    return left;
}

void Parser::require_target(const Node& node) const {
    if (node.kind == Kind::variable)
        return;
    if ((node.kind == Kind::element || node.kind == Kind::component) &&
        node.kids[0]->kind == Kind::variable)
        return;
    fail(node.at, "Only a variable can be assigned to.");
}

NodePtr Parser::conditional() {
    NodePtr condition = binary(0);
    if (!lexer_.peek(k_expr).is("?"))
        return condition;
    auto node = make(Kind::conditional, lexer_.take(k_expr).at);
    node->kids.push_back(condition);
    node->kids.push_back(expression());
    expect(":");
    node->kids.push_back(expression());
    return node;
}

NodePtr Parser::binary(size_t level) {
    if (level == k_level_count)
        return unary();
    NodePtr left = binary(level + 1);
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
        node->kids = {left, binary(level + 1)};
        left = node;
    }
}

NodePtr Parser::unary() {
    Depth depth(*this);
    const Token token = lexer_.peek(k_expr);
    if (token.is("!") || token.is("-") || token.is("+")) {
        lexer_.take(k_expr);
        NodePtr operand = unary();
        if (token.is("+"))
            return operand;
        auto node = make(Kind::unary, token.at);
        node->text = token.text;
        node->kids.push_back(operand);
        return node;
    }
    if (token.is("++") || token.is("--")) {
        lexer_.take(k_expr);
        return increment(token, unary(), false);
    }
    return postfix();
}

NodePtr Parser::increment(const Token& token, NodePtr target, bool after) {
    require_target(*target);
    auto node = make(Kind::increment, token.at);
    node->text = token.text;
    node->flag = after;
    node->kids.push_back(std::move(target));
    return node;
}

NodePtr Parser::postfix() {
    NodePtr node = primary();
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

NodePtr Parser::subscript(NodePtr base) {
    const Token token = lexer_.take(k_expr);
    if (token.is(".")) {
        const Token name = lexer_.take(k_expr);
        if (name.text != "x" && name.text != "y" && name.text != "z")
            fail(name.at, "A vector has the components x, y and z.");
        auto node = make(Kind::component, token.at);
        node->text = name.text;
        node->kids.push_back(std::move(base));
        return node;
    }
    auto node = make(Kind::element, token.at);
    node->kids.push_back(std::move(base));
    node->kids.push_back(expression());
    expect("]");
    if (lexer_.peek(k_expr).is("[")) {
        lexer_.take(k_expr);
        node->kids.push_back(expression());
        expect("]");
    }
    return node;
}

NodePtr Parser::primary() {
    const Token token = lexer_.take(k_expr);
    if (token.kind == TokenKind::variable)
        return variable(token);
    if (token.kind == TokenKind::name)
        return named(token);
    if (token.is("("))
        return group(token);
    if (token.is("`"))
        return quoted(token);
    if (token.is("{"))
        return array_literal(token);
    if (token.is("<<"))
        return vector_literal(token);
    auto node = make(Kind::literal, token.at);
    if (token.kind == TokenKind::string)
        node->value = Value(token.text);
    else if (token.kind == TokenKind::integer || token.kind == TokenKind::real)
        node->value = token.number;
    else
        unexpected(token);
    return node;
}

NodePtr Parser::named(const Token& token) {
    auto node = make(Kind::literal, token.at);
    Basic basic;
    if (type_named(token.text, basic)) {
        node->kind = Kind::cast;
        node->type = {basic, false};
        node->kids.push_back(parenthesised());
        return node;
    }
    if (constant_named(token.text, node->value))
        return node;
    if (!lexer_.peek(k_expr).is("("))
        unexpected(token);
    if (token.text == "catch" || token.text == "catchQuiet")
        return catcher(token);
    return call_arguments(token);
}

NodePtr Parser::group(const Token& token) {
    const size_t mark = lexer_.mark();
    const Token name = lexer_.take(k_expr);
    Basic basic;
    if (name.kind == TokenKind::name && type_named(name.text, basic) && accept(")")) {
        auto node = make(Kind::cast, token.at);
        node->type = {basic, false};
        node->kids.push_back(unary());
        return node;
    }
    lexer_.rewind(mark);
    NodePtr inner = expression();
    expect(")");
    return inner;
}

NodePtr Parser::quoted(const Token& token) {
    if (lexer_.peek(k_expr).kind != TokenKind::name)
        unexpected(lexer_.peek(k_expr));
    NodePtr node = command_or_call(true);
    if (!accept("`"))
        fail(token.at, "The back-quote that opens here is not closed.");
    return node;
}

NodePtr Parser::array_literal(const Token& token) {
    auto node = make(Kind::array, token.at);
    while (!lexer_.peek(k_expr).is("}")) {
        node->kids.push_back(expression());
        if (!accept(","))
            break;
    }
    expect("}");
    return node;
}

NodePtr Parser::vector_literal(const Token& token) {
    auto node = make(Kind::vector, token.at);
    do {
        node->kids.push_back(expression_in_vector());
        if (accept(";")) {
            if (node->kind == Kind::vector)
                node->count = uint32_t(node->kids.size());
            node->kind = Kind::matrix;
        } else if (!accept(",")) {
            break;
        }
    } while (true);
    expect(">>");
    check_shape(*node);
    return node;
}

void Parser::check_shape(const Node& node) const {
    if (node.kind == Kind::vector && node.kids.size() != 3)
        fail(node.at, "A vector has three components.");
    if (node.kind == Kind::matrix && node.kids.size() % node.count != 0)
        fail(node.at, "The rows of a matrix have the same length.");
}

} // namespace host::script
