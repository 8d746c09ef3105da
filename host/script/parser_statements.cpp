#include "host/script/parser.h"

namespace host::script {

NodePtr Parser::parse_unit() {
    auto body = make(Kind::block, Position());
    while (lexer_.peek(k_expr).kind != TokenKind::end)
        body->kids.push_back(statement());
    return body;
}

void Parser::fail(Position at, const std::string& text) const {
    throw ScriptError(lexer_.file(), at, text);
}

void Parser::unexpected(const Token& token) const {
    if (token.kind == TokenKind::end)
        fail(token.at, "Unexpected end of the script.");
    const char* mark = token.kind == TokenKind::variable ? "$"
                       : token.kind == TokenKind::flag   ? "-"
                                                         : "";
    fail(token.at, std::string("Syntax error at \"") + mark + token.text + "\".");
}

Token Parser::expect(const char* punctuation) {
    if (lexer_.peek(k_expr).is(punctuation))
        return lexer_.take(k_expr);
    const Token& found = lexer_.peek(k_expr);
    if (found.kind == TokenKind::end)
        fail(found.at, std::string("\"") + punctuation + "\" is missing at the end of the script.");
    fail(found.at, std::string("\"") + punctuation + "\" expected before \"" + found.text + "\".");
}

void Parser::end_statement() {
    const Token& token = lexer_.peek(k_expr);
    if (accept(";") || token.kind == TokenKind::end || token.is("}"))
        return;
    fail(token.at, "\";\" expected before \"" + token.text + "\".");
}

NodePtr Parser::statement() {
    Depth depth(*this);
    const Token token = lexer_.peek(k_expr);
    if (token.is("{"))
        return block();
    if (accept(";"))
        return make(Kind::block, token.at);
    if (token.kind == TokenKind::name)
        if (NodePtr node = keyword_statement(token))
            return node;
    auto node = make(Kind::expression, token.at);
    node->kids.push_back(token.kind == TokenKind::name ? command_or_call(false) : expression());
    end_statement();
    return node;
}

NodePtr Parser::keyword_statement(const Token& token) {
    Basic basic;
    const std::string& word = token.text;
    if (word == "global" || word == "proc")
        return procedure_or_global();
    if (type_named(word, basic))
        return declaration_or_cast(token);
    if (word == "if")
        return branch();
    if (word == "for")
        return for_loop();
    if (word == "while")
        return while_loop();
    if (word == "do")
        return do_loop();
    if (word == "switch")
        return choose();
    if (word == "break" || word == "continue") {
        lexer_.take(k_expr);
        if (loops_ == 0 && !(word == "break" && switches_ > 0))
            fail(token.at, "\"" + word + "\" stands outside of a loop.");
        end_statement();
        return make(word == "break" ? Kind::leave : Kind::next, token.at);
    }
    if (word == "return")
        return give();
    if (word == "case" || word == "default" || word == "else")
        unexpected(token);
    return nullptr;
}

NodePtr Parser::block() {
    auto node = make(Kind::block, expect("{").at);
    node->flag = true;
    while (!lexer_.peek(k_expr).is("}")) {
        if (lexer_.peek(k_expr).kind == TokenKind::end)
            fail(node->at, "The block that opens here is not closed.");
        node->kids.push_back(statement());
    }
    expect("}");
    return node;
}

NodePtr Parser::body() {
    ++loops_;
    NodePtr node = statement();
    --loops_;
    return node;
}

NodePtr Parser::parenthesised() {
    expect("(");
    NodePtr node = expression();
    expect(")");
    return node;
}

NodePtr Parser::branch() {
    auto node = make(Kind::branch, lexer_.take(k_expr).at);
    node->kids.push_back(parenthesised());
    node->kids.push_back(statement());
    node->kids.push_back(accept_name("else") ? statement() : nullptr);
    return node;
}

NodePtr Parser::for_loop() {
    const Position at = lexer_.take(k_expr).at;
    expect("(");
    const size_t mark = lexer_.mark();
    if (lexer_.peek(k_expr).kind == TokenKind::variable) {
        const Token variable = lexer_.take(k_expr);
        if (accept_name("in")) {
            auto node = make(Kind::for_each, at);
            node->text = variable.text;
            node->kids.push_back(expression());
            expect(")");
            node->kids.push_back(body());
            return node;
        }
        lexer_.rewind(mark);
    }
    auto node = make(Kind::loop, at);
    node->kids.push_back(expression_list(";", true));
    expect(";");
    node->kids.push_back(lexer_.peek(k_expr).is(";") ? nullptr : expression());
    expect(";");
    node->kids.push_back(expression_list(")", false));
    expect(")");
    node->kids.push_back(body());
    return node;
}

NodePtr Parser::expression_list(const char* closing, bool may_declare) {
    auto list = make(Kind::block, lexer_.peek(k_expr).at);
    Basic basic;
    const Token& first = lexer_.peek(k_expr);
    if (may_declare && first.kind == TokenKind::name && type_named(first.text, basic)) {
        lexer_.take(k_expr);
        list->kids.push_back(declarators(basic, false, list->at));
        return list;
    }
    while (!lexer_.peek(k_expr).is(closing)) {
        auto item = make(Kind::expression, lexer_.peek(k_expr).at);
        item->kids.push_back(expression());
        list->kids.push_back(item);
        if (!accept(","))
            break;
    }
    return list;
}

NodePtr Parser::while_loop() {
    auto node = make(Kind::while_loop, lexer_.take(k_expr).at);
    node->kids.push_back(parenthesised());
    node->kids.push_back(body());
    return node;
}

NodePtr Parser::do_loop() {
    auto node = make(Kind::do_loop, lexer_.take(k_expr).at);
    node->kids.push_back(body());
    if (!accept_name("while"))
        fail(lexer_.peek(k_expr).at, "\"while\" is missing after the body of \"do\".");
    node->kids.push_back(parenthesised());
    end_statement();
    return node;
}

NodePtr Parser::choose() {
    auto node = make(Kind::choose, lexer_.take(k_expr).at);
    node->kids.push_back(parenthesised());
    expect("{");
    ++switches_;
    while (!accept("}")) {
        const Token token = lexer_.peek(k_expr);
        if (token.kind == TokenKind::name && (token.text == "case" || token.text == "default")) {
            lexer_.take(k_expr);
            auto label = make(Kind::label, token.at);
            label->kids.push_back(token.text == "case" ? expression() : nullptr);
            expect(":");
            node->kids.push_back(label);
            continue;
        }
        if (token.kind == TokenKind::end)
            fail(node->at, "The switch that opens here is not closed.");
        node->kids.push_back(statement());
    }
    --switches_;
    return node;
}

NodePtr Parser::give() {
    auto node = make(Kind::give, lexer_.take(k_expr).at);
    const Token& token = lexer_.peek(k_expr);
    const bool bare = token.is(";") || token.is("}") || token.kind == TokenKind::end;
    node->kids.push_back(bare ? nullptr : expression());
    end_statement();
    return node;
}

NodePtr Parser::procedure_or_global() {
    const Token first = lexer_.take(k_expr);
    Basic basic;
    if (first.text == "proc")
        return procedure(first.at, false);
    if (accept_name("proc"))
        return procedure(first.at, true);
    const Token type = lexer_.take(k_expr);
    if (type.kind != TokenKind::name || !type_named(type.text, basic))
        unexpected(type);
    NodePtr node = declarators(basic, true, first.at);
    end_statement();
    return node;
}

NodePtr Parser::declaration_or_cast(const Token& token) {
    Basic basic = Basic::none;
    type_named(token.text, basic);
    const size_t mark = lexer_.mark();
    lexer_.take(k_expr);
    NodePtr node;
    if (lexer_.peek(k_expr).is("(")) {
        lexer_.rewind(mark);
        auto wrapped = make(Kind::expression, token.at);
        wrapped->kids.push_back(expression());
        node = wrapped;
    } else {
        node = declarators(basic, false, token.at);
    }
    end_statement();
    return node;
}

NodePtr Parser::declarators(Basic basic, bool global, Position at) {
    auto node = make(Kind::declare, at);
    node->flag = global;
    do {
        auto item = declarator(basic);
        if (accept("="))
            item->kids[0] = expression();
        node->kids.push_back(item);
    } while (accept(","));
    return node;
}

Parser::Draft Parser::declarator(Basic basic) {
    const Token name = lexer_.take(k_expr);
    if (name.kind != TokenKind::variable)
        unexpected(name);
    auto item = make(Kind::declarator, name.at);
    item->text = name.text;
    item->type = {basic, false};
    item->kids = {nullptr, nullptr};
    while (accept("[")) {
        if (!lexer_.peek(k_expr).is("]")) {
            NodePtr size = expression();
            if (basic == Basic::matrix && item->kids[1])
                item->kids.push_back(size);
            else
                item->kids[1] = size;
        }
        expect("]");
        if (basic == Basic::matrix)
            continue;
        if (item->type.array)
            fail(item->at, "Arrays have one dimension.");
        item->type.array = true;
    }
    if (basic == Basic::matrix && item->kids.size() != 3)
        fail(item->at, "A matrix needs its number of rows and columns.");
    return item;
}

NodePtr Parser::procedure(Position at, bool global) {
    if (procedures_ > 0)
        fail(at, "A procedure cannot be declared inside another.");
    auto node = make(Kind::procedure, at);
    node->flag = global;
    Token name = lexer_.take(k_expr);
    if (name.kind == TokenKind::name && type_named(name.text, node->type.basic)) {
        if (accept("[")) {
            expect("]");
            node->type.array = true;
        }
        name = lexer_.take(k_expr);
    }
    if (name.kind != TokenKind::name)
        unexpected(name);
    node->text = name.text;
    node->kids.push_back(nullptr);
    expect("(");
    while (!lexer_.peek(k_expr).is(")")) {
        const Token type = lexer_.take(k_expr);
        Basic basic;
        if (type.kind != TokenKind::name || !type_named(type.text, basic))
            unexpected(type);
        node->kids.push_back(declarator(basic));
        if (!accept(","))
            break;
    }
    expect(")");
    const int loops = loops_;
    loops_ = 0;
    ++procedures_;
    node->kids[0] = block();
    --procedures_;
    loops_ = loops;
    return node;
}

NodePtr Parser::command_or_call(bool quoted) {
    const Token name = lexer_.take(k_expr);
    if (name.text == "catch" || name.text == "catchQuiet")
        return catcher(name);
    if (lexer_.peek(k_expr).is("(")) {
        const size_t mark = lexer_.mark();
        NodePtr call = call_arguments(name);
        const Token& after = lexer_.peek(k_expr);
        if (after.is(";") || after.is("}") || after.kind == TokenKind::end ||
            (quoted && after.is("`")))
            return call;
        lexer_.rewind(mark);
    }
    auto node = make(Kind::call, name.at);
    node->text = name.text;
    while (!ends_command(quoted))
        node->kids.push_back(argument());
    return node;
}

bool Parser::ends_command(bool quoted) {
    const Token& token = lexer_.peek(k_arg);
    return token.kind == TokenKind::end || token.is(";") || token.is("}") ||
           (quoted && token.is("`"));
}

NodePtr Parser::argument() {
    Depth depth(*this);
    const Token& next = lexer_.peek(k_arg);
    if (next.is("(") || next.is("{") || next.is("<<") || next.is("`"))
        return primary();
    const Token token = lexer_.take(k_arg);
    auto node = make(Kind::literal, token.at);
    switch (token.kind) {
    case TokenKind::string:
        node->value = Value(token.text);
        return node;
    case TokenKind::integer:
    case TokenKind::real:
        node->value = token.number;
        return node;
    case TokenKind::flag:
        node->value = Value("-" + token.text);
        node->flag = true;
        return node;
    case TokenKind::word:
        if (!constant_named(token.text, node->value))
            node->value = Value(token.text);
        return node;
    case TokenKind::variable:
        return argument_variable(token);
    default:
        unexpected(token);
    }
}

NodePtr Parser::argument_variable(const Token& token) {
    NodePtr node = variable(token);
    for (;;) {
        const Token next = lexer_.peek(k_expr);
        if (next.spaced || !(next.is("[") || next.is(".")))
            return node;
        node = subscript(node);
    }
}

NodePtr Parser::call_arguments(const Token& name) {
    auto node = make(Kind::call, name.at);
    node->text = name.text;
    node->flag = true;
    expect("(");
    while (!lexer_.peek(k_expr).is(")")) {
        node->kids.push_back(expression());
        if (!accept(","))
            break;
    }
    expect(")");
    return node;
}

NodePtr Parser::catcher(const Token& name) {
    auto node = make(Kind::catcher, name.at);
    node->flag = name.text == "catchQuiet";
    node->kids.push_back(parenthesised());
    return node;
}

std::shared_ptr<const Unit> parse(std::string_view text, const std::string& file) {
    auto unit = std::make_shared<Unit>();
    unit->file = file;
    unit->body = Parser(text, file).parse_unit();
    return unit;
}

} // namespace host::script
