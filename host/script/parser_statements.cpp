#include "host/script/parser.h"

namespace host::script {

SyntaxNodePtr Parser::parse_unit() {
    auto body = make(SyntaxKind::block, Position());
    while (lexer_.peek(k_expr).kind != TokenKind::end)
        body->items.push_back(statement());
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

SyntaxNodePtr Parser::statement() {
    Depth depth(*this);
    const Token token = lexer_.peek(k_expr);
    if (token.is("{"))
        return block();
    if (accept(";"))
        return make(SyntaxKind::block, token.at);
    if (token.kind == TokenKind::name)
        if (SyntaxNodePtr node = keyword_statement(token))
            return node;
    auto node = make(SyntaxKind::expression, token.at);
    node->set(part::operand, token.kind == TokenKind::name ? command_or_call(false) : expression());
    end_statement();
    return node;
}

SyntaxNodePtr Parser::keyword_statement(const Token& token) {
    Basic basic;
    const std::string& word = token.text;
    if (word == "global" || word == "proc")
        return procedure_or_global();
    if (type_named(word, basic))
        return declaration_or_cast(token);
    if (word == "if")
        return if_statement();
    if (word == "for")
        return for_loop();
    if (word == "while")
        return while_loop();
    if (word == "do")
        return do_loop();
    if (word == "switch")
        return switch_statement();
    if (word == "break" || word == "continue") {
        lexer_.take(k_expr);
        if (loops_ == 0 && !(word == "break" && switches_ > 0))
            fail(token.at, "\"" + word + "\" stands outside of a loop.");
        end_statement();
        return make(word == "break" ? SyntaxKind::break_ : SyntaxKind::continue_, token.at);
    }
    if (word == "return")
        return return_statement();
    if (word == "case" || word == "default" || word == "else")
        unexpected(token);
    return nullptr;
}

SyntaxNodePtr Parser::block() {
    auto node = make(SyntaxKind::block, expect("{").at);
    node->flag = true;
    while (!lexer_.peek(k_expr).is("}")) {
        if (lexer_.peek(k_expr).kind == TokenKind::end)
            fail(node->at, "The block that opens here is not closed.");
        node->items.push_back(statement());
    }
    expect("}");
    return node;
}

SyntaxNodePtr Parser::body() {
    ++loops_;
    SyntaxNodePtr node = statement();
    --loops_;
    return node;
}

SyntaxNodePtr Parser::parenthesised() {
    expect("(");
    SyntaxNodePtr node = expression();
    expect(")");
    return node;
}

SyntaxNodePtr Parser::if_statement() {
    auto node = make(SyntaxKind::if_, lexer_.take(k_expr).at);
    node->set(part::condition, parenthesised());
    node->set(part::then, statement());
    if (accept_name("else"))
        node->set(part::otherwise, statement());
    return node;
}

SyntaxNodePtr Parser::for_loop() {
    const Position at = lexer_.take(k_expr).at;
    expect("(");
    const size_t mark = lexer_.mark();
    if (lexer_.peek(k_expr).kind == TokenKind::variable) {
        const Token variable = lexer_.take(k_expr);
        if (accept_name("in")) {
            auto node = make(SyntaxKind::for_in, at);
            node->text = variable.text;
            node->set(part::array, expression());
            expect(")");
            node->set(part::body, body());
            return node;
        }
        lexer_.rewind(mark);
    }
    auto node = make(SyntaxKind::for_, at);
    node->set(part::init, expression_list(";", true));
    expect(";");
    if (!lexer_.peek(k_expr).is(";"))
        node->set(part::condition, expression());
    expect(";");
    node->set(part::step, expression_list(")", false));
    expect(")");
    node->set(part::body, body());
    return node;
}

SyntaxNodePtr Parser::expression_list(const char* closing, bool may_declare) {
    auto list = make(SyntaxKind::block, lexer_.peek(k_expr).at);
    Basic basic;
    const Token& first = lexer_.peek(k_expr);
    if (may_declare && first.kind == TokenKind::name && type_named(first.text, basic)) {
        lexer_.take(k_expr);
        list->items.push_back(declarators(basic, false, list->at));
        return list;
    }
    while (!lexer_.peek(k_expr).is(closing)) {
        auto item = make(SyntaxKind::expression, lexer_.peek(k_expr).at);
        item->set(part::operand, expression());
        list->items.push_back(item);
        if (!accept(","))
            break;
    }
    return list;
}

SyntaxNodePtr Parser::while_loop() {
    auto node = make(SyntaxKind::while_, lexer_.take(k_expr).at);
    node->set(part::condition, parenthesised());
    node->set(part::body, body());
    return node;
}

SyntaxNodePtr Parser::do_loop() {
    auto node = make(SyntaxKind::do_while, lexer_.take(k_expr).at);
    node->set(part::body, body());
    if (!accept_name("while"))
        fail(lexer_.peek(k_expr).at, "\"while\" is missing after the body of \"do\".");
    node->set(part::condition, parenthesised());
    end_statement();
    return node;
}

SyntaxNodePtr Parser::switch_statement() {
    auto node = make(SyntaxKind::switch_, lexer_.take(k_expr).at);
    node->set(part::value, parenthesised());
    expect("{");
    ++switches_;
    while (!accept("}")) {
        const Token token = lexer_.peek(k_expr);
        if (token.kind == TokenKind::name && (token.text == "case" || token.text == "default")) {
            lexer_.take(k_expr);
            auto label = make(SyntaxKind::case_label, token.at);
            if (token.text == "case")
                label->set(part::value, expression());
            expect(":");
            node->items.push_back(label);
            continue;
        }
        if (token.kind == TokenKind::end)
            fail(node->at, "The switch that opens here is not closed.");
        node->items.push_back(statement());
    }
    --switches_;
    return node;
}

SyntaxNodePtr Parser::return_statement() {
    auto node = make(SyntaxKind::return_, lexer_.take(k_expr).at);
    const Token& token = lexer_.peek(k_expr);
    if (!token.is(";") && !token.is("}") && token.kind != TokenKind::end)
        node->set(part::value, expression());
    end_statement();
    return node;
}

SyntaxNodePtr Parser::procedure_or_global() {
    const Token first = lexer_.take(k_expr);
    Basic basic;
    if (first.text == "proc")
        return procedure(first.at, false);
    if (accept_name("proc"))
        return procedure(first.at, true);
    const Token type = lexer_.take(k_expr);
    if (type.kind != TokenKind::name || !type_named(type.text, basic))
        unexpected(type);
    SyntaxNodePtr node = declarators(basic, true, first.at);
    end_statement();
    return node;
}

SyntaxNodePtr Parser::declaration_or_cast(const Token& token) {
    Basic basic = Basic::none;
    type_named(token.text, basic);
    const size_t mark = lexer_.mark();
    lexer_.take(k_expr);
    SyntaxNodePtr node;
    if (lexer_.peek(k_expr).is("(")) {
        lexer_.rewind(mark);
        auto wrapped = make(SyntaxKind::expression, token.at);
        wrapped->set(part::operand, expression());
        node = wrapped;
    } else {
        node = declarators(basic, false, token.at);
    }
    end_statement();
    return node;
}

SyntaxNodePtr Parser::declarators(Basic basic, bool global, Position at) {
    auto node = make(SyntaxKind::declaration, at);
    node->flag = global;
    do {
        auto item = declarator(basic);
        if (accept("="))
            item->set(part::initial, expression());
        node->items.push_back(item);
    } while (accept(","));
    return node;
}

Parser::NewNode Parser::declarator(Basic basic) {
    const Token name = lexer_.take(k_expr);
    if (name.kind != TokenKind::variable)
        unexpected(name);
    auto item = make(SyntaxKind::declarator, name.at);
    item->text = name.text;
    item->type = {basic, false};
    int sizes = 0;
    while (accept("[")) {
        if (!lexer_.peek(k_expr).is("]")) {
            item->set(sizes == 0 ? part::size : part::columns, expression());
            ++sizes;
        }
        expect("]");
        if (basic == Basic::matrix)
            continue;
        if (item->type.array)
            fail(item->at, "Arrays have one dimension.");
        item->type.array = true;
    }
    if (basic == Basic::matrix && sizes != 2)
        fail(item->at, "A matrix needs its number of rows and columns.");
    return item;
}

SyntaxNodePtr Parser::procedure(Position at, bool global) {
    if (procedures_ > 0)
        fail(at, "A procedure cannot be declared inside another.");
    auto node = make(SyntaxKind::procedure, at);
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
    expect("(");
    while (!lexer_.peek(k_expr).is(")")) {
        const Token type = lexer_.take(k_expr);
        Basic basic;
        if (type.kind != TokenKind::name || !type_named(type.text, basic))
            unexpected(type);
        node->items.push_back(declarator(basic));
        if (!accept(","))
            break;
    }
    expect(")");
    const int loops = loops_;
    loops_ = 0;
    ++procedures_;
    node->set(part::procedure_body, block());
    --procedures_;
    loops_ = loops;
    return node;
}

SyntaxNodePtr Parser::command_or_call(bool quoted) {
    const Token name = lexer_.take(k_expr);
    if (name.text == "catch" || name.text == "catchQuiet")
        return catch_expression(name);
    if (lexer_.peek(k_expr).is("(")) {
        const size_t mark = lexer_.mark();
        SyntaxNodePtr call = call_arguments(name);
        const Token& after = lexer_.peek(k_expr);
        if (after.is(";") || after.is("}") || after.kind == TokenKind::end ||
            (quoted && after.is("`")))
            return call;
        lexer_.rewind(mark);
    }
    auto node = make(SyntaxKind::call, name.at);
    node->text = name.text;
    while (!ends_command(quoted))
        node->items.push_back(argument());
    return node;
}

bool Parser::ends_command(bool quoted) {
    const Token& token = lexer_.peek(k_arg);
    return token.kind == TokenKind::end || token.is(";") || token.is("}") ||
           (quoted && token.is("`"));
}

SyntaxNodePtr Parser::argument() {
    Depth depth(*this);
    const Token& next = lexer_.peek(k_arg);
    if (next.is("(") || next.is("{") || next.is("<<") || next.is("`"))
        return primary();
    const Token token = lexer_.take(k_arg);
    auto node = make(SyntaxKind::literal, token.at);
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

SyntaxNodePtr Parser::argument_variable(const Token& token) {
    SyntaxNodePtr node = variable(token);
    for (;;) {
        const Token next = lexer_.peek(k_expr);
        if (next.spaced || !(next.is("[") || next.is(".")))
            return node;
        node = subscript(node);
    }
}

SyntaxNodePtr Parser::call_arguments(const Token& name) {
    auto node = make(SyntaxKind::call, name.at);
    node->text = name.text;
    node->flag = true;
    expect("(");
    while (!lexer_.peek(k_expr).is(")")) {
        node->items.push_back(expression());
        if (!accept(","))
            break;
    }
    expect(")");
    return node;
}

SyntaxNodePtr Parser::catch_expression(const Token& name) {
    auto node = make(SyntaxKind::catch_, name.at);
    node->flag = name.text == "catchQuiet";
    node->set(part::operand, parenthesised());
    return node;
}

std::shared_ptr<const Unit> parse(std::string_view text, const std::string& file) {
    auto unit = std::make_shared<Unit>();
    unit->file = file;
    unit->body = Parser(text, file).parse_unit();
    return unit;
}

} // namespace host::script
