// Recursive descent over the lexer's two readings. A statement that starts with a name is a command
// (bare words and flags follow) unless it reads as a complete function call `name(...)`.

#include "host/script/ast.h"

#include <cstring>

namespace host::script {

namespace {

/// Deeper nesting than any person writes; the limit keeps hostile text from exhausting the stack.
constexpr int k_deepest = 200;

constexpr Reading k_expr = Reading::expression;
constexpr Reading k_arg = Reading::argument;

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

class Parser {
public:
    Parser(std::string_view text, const std::string& file) : lexer_(text, file) {}

    NodePtr parse_unit() {
        auto body = make(Kind::block, Position());
        while (lexer_.peek(k_expr).kind != TokenKind::end)
            body->kids.push_back(statement());
        return body;
    }

private:
    using Draft = std::shared_ptr<Node>;

    class Depth {
    public:
        Depth(Parser& parser) : parser_(parser) {
            if (++parser_.depth_ > k_deepest)
                parser_.fail(parser_.lexer_.peek(k_expr).at, "Nested too deeply.");
        }
        ~Depth() { --parser_.depth_; }
        Depth(const Depth&) = delete;
        Depth& operator=(const Depth&) = delete;

    private:
        Parser& parser_;
    };

    static Draft make(Kind kind, Position at) {
        auto node = std::make_shared<Node>();
        node->kind = kind;
        node->at = at;
        return node;
    }

    [[noreturn]] void fail(Position at, const std::string& text) const {
        throw ScriptError(lexer_.file(), at, text);
    }
    [[noreturn]] void unexpected(const Token& token) const {
        if (token.kind == TokenKind::end)
            fail(token.at, "Unexpected end of the script.");
        const char* mark = token.kind == TokenKind::variable ? "$"
                           : token.kind == TokenKind::flag   ? "-"
                                                             : "";
        fail(token.at, std::string("Syntax error at \"") + mark + token.text + "\".");
    }
    bool accept(const char* punctuation, Reading reading = k_expr) {
        if (!lexer_.peek(reading).is(punctuation))
            return false;
        lexer_.take(reading);
        return true;
    }
    Token expect(const char* punctuation) {
        if (lexer_.peek(k_expr).is(punctuation))
            return lexer_.take(k_expr);
        const Token& found = lexer_.peek(k_expr);
        if (found.kind == TokenKind::end)
            fail(found.at,
                 std::string("\"") + punctuation + "\" is missing at the end of the script.");
        fail(found.at,
             std::string("\"") + punctuation + "\" expected before \"" + found.text + "\".");
    }
    bool accept_name(const char* name) {
        const Token& token = lexer_.peek(k_expr);
        if (token.kind != TokenKind::name || token.text != name)
            return false;
        lexer_.take(k_expr);
        return true;
    }
    void end_statement() {
        const Token& token = lexer_.peek(k_expr);
        if (accept(";") || token.kind == TokenKind::end || token.is("}"))
            return;
        fail(token.at, "\";\" expected before \"" + token.text + "\".");
    }

    // --- statements ---------------------------------------------------------------------------

    NodePtr statement() {
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

    NodePtr keyword_statement(const Token& token) {
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

    NodePtr block() {
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

    NodePtr body() {
        ++loops_;
        NodePtr node = statement();
        --loops_;
        return node;
    }

    NodePtr parenthesised() {
        expect("(");
        NodePtr node = expression();
        expect(")");
        return node;
    }

    NodePtr branch() {
        auto node = make(Kind::branch, lexer_.take(k_expr).at);
        node->kids.push_back(parenthesised());
        node->kids.push_back(statement());
        node->kids.push_back(accept_name("else") ? statement() : nullptr);
        return node;
    }

    NodePtr for_loop() {
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

    /// Comma-separated expressions of a for head; the first list may declare a variable.
    NodePtr expression_list(const char* closing, bool may_declare) {
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

    NodePtr while_loop() {
        auto node = make(Kind::while_loop, lexer_.take(k_expr).at);
        node->kids.push_back(parenthesised());
        node->kids.push_back(body());
        return node;
    }

    NodePtr do_loop() {
        auto node = make(Kind::do_loop, lexer_.take(k_expr).at);
        node->kids.push_back(body());
        if (!accept_name("while"))
            fail(lexer_.peek(k_expr).at, "\"while\" is missing after the body of \"do\".");
        node->kids.push_back(parenthesised());
        end_statement();
        return node;
    }

    NodePtr choose() {
        auto node = make(Kind::choose, lexer_.take(k_expr).at);
        node->kids.push_back(parenthesised());
        expect("{");
        ++switches_;
        while (!accept("}")) {
            const Token token = lexer_.peek(k_expr);
            if (token.kind == TokenKind::name &&
                (token.text == "case" || token.text == "default")) {
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

    NodePtr give() {
        auto node = make(Kind::give, lexer_.take(k_expr).at);
        const Token& token = lexer_.peek(k_expr);
        const bool bare = token.is(";") || token.is("}") || token.kind == TokenKind::end;
        node->kids.push_back(bare ? nullptr : expression());
        end_statement();
        return node;
    }

    NodePtr procedure_or_global() {
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

    /// `int $a = 1;` declares, `int($a);` is a cast nobody uses.
    NodePtr declaration_or_cast(const Token& token) {
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

    NodePtr declarators(Basic basic, bool global, Position at) {
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

    /// `$name`, `$name[]`, `$name[size]`, for a matrix `$name[rows][columns]`.
    Draft declarator(Basic basic) {
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

    NodePtr procedure(Position at, bool global) {
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

    // --- commands -----------------------------------------------------------------------------

    /// At a name. Inside back-quotes a back-quote ends the command.
    NodePtr command_or_call(bool quoted) {
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

    bool ends_command(bool quoted) {
        const Token& token = lexer_.peek(k_arg);
        return token.kind == TokenKind::end || token.is(";") || token.is("}") ||
               (quoted && token.is("`"));
    }

    NodePtr argument() {
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

    /// `$a`, `$a[1]`, `$v.x`: subscripts join only without a space, as in `$a [0]` they would be
    /// the next argument.
    NodePtr argument_variable(const Token& token) {
        NodePtr node = variable(token);
        for (;;) {
            const Token next = lexer_.peek(k_expr);
            if (next.spaced || !(next.is("[") || next.is(".")))
                return node;
            node = subscript(node);
        }
    }

    NodePtr call_arguments(const Token& name) {
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

    NodePtr catcher(const Token& name) {
        auto node = make(Kind::catcher, name.at);
        node->flag = name.text == "catchQuiet";
        node->kids.push_back(parenthesised());
        return node;
    }

    // --- expressions --------------------------------------------------------------------------

    NodePtr expression() {
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

    void require_target(const Node& node) const {
        if (node.kind == Kind::variable)
            return;
        if ((node.kind == Kind::element || node.kind == Kind::component) &&
            node.kids[0]->kind == Kind::variable)
            return;
        fail(node.at, "Only a variable can be assigned to.");
    }

    NodePtr conditional() {
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

    NodePtr binary(size_t level) {
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

    NodePtr unary() {
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

    NodePtr increment(const Token& token, NodePtr target, bool after) {
        require_target(*target);
        auto node = make(Kind::increment, token.at);
        node->text = token.text;
        node->flag = after;
        node->kids.push_back(std::move(target));
        return node;
    }

    NodePtr postfix() {
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

    NodePtr subscript(NodePtr base) {
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

    static NodePtr variable(const Token& token) {
        auto node = make(Kind::variable, token.at);
        node->text = token.text;
        return node;
    }

    NodePtr primary() {
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

    NodePtr named(const Token& token) {
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

    /// `(expr)` or `(type)operand`.
    NodePtr group(const Token& token) {
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

    NodePtr quoted(const Token& token) {
        if (lexer_.peek(k_expr).kind != TokenKind::name)
            unexpected(lexer_.peek(k_expr));
        NodePtr node = command_or_call(true);
        if (!accept("`"))
            fail(token.at, "The back-quote that opens here is not closed.");
        return node;
    }

    NodePtr array_literal(const Token& token) {
        auto node = make(Kind::array, token.at);
        while (!lexer_.peek(k_expr).is("}")) {
            node->kids.push_back(expression());
            if (!accept(","))
                break;
        }
        expect("}");
        return node;
    }

    NodePtr vector_literal(const Token& token) {
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

    /// `>` would be read as a comparison; vectors hold sums, not comparisons.
    NodePtr expression_in_vector() { return binary(4); }

    void check_shape(const Node& node) const {
        if (node.kind == Kind::vector && node.kids.size() != 3)
            fail(node.at, "A vector has three components.");
        if (node.kind == Kind::matrix && node.kids.size() % node.count != 0)
            fail(node.at, "The rows of a matrix have the same length.");
    }

    Lexer lexer_;
    int depth_ = 0;
    int loops_ = 0;
    int switches_ = 0;
    int procedures_ = 0;
};

} // namespace

std::shared_ptr<const Unit> parse(std::string_view text, const std::string& file) {
    auto unit = std::make_shared<Unit>();
    unit->file = file;
    unit->body = Parser(text, file).parse_unit();
    return unit;
}

} // namespace host::script
