/// Recursive descent parser. A statement that starts with a name is a command, followed by words
/// and flags, unless it is a complete function call `name(...)`. Included by the parser's two
/// source files only.
#pragma once

#include "host/script/ast.h"
#include "host/script/stack_limit.h"

namespace host::script {

/// Limit on nested blocks and expressions, so that malicious text cannot overflow the stack. With a
/// small stack the limit is lower (stack_limit.h).
inline constexpr int k_max_nesting = 200;

inline constexpr Reading k_expr = Reading::expression;
inline constexpr Reading k_arg = Reading::argument;

/// Parses a type name: int, float, string, vector or matrix. False for any other text.
bool type_named(const std::string& text, Basic& basic);
/// Parses true, on, yes as 1 and false, off, no as 0. False for any other text.
bool constant_named(const std::string& text, Value& value);

class Parser {
public:
    Parser(std::string_view text, const std::string& file) : lexer_(text, file) {}

    SyntaxNodePtr parse_unit();

private:
    using NewNode = std::shared_ptr<SyntaxNode>;

    class Depth {
    public:
        Depth(Parser& parser) : parser_(parser) {
            if (++parser_.depth_ > k_max_nesting || stack_is_low())
                parser_.fail(parser_.lexer_.peek(k_expr).at, "Nested too deeply.");
        }
        ~Depth() { --parser_.depth_; }
        Depth(const Depth&) = delete;
        Depth& operator=(const Depth&) = delete;

    private:
        Parser& parser_;
    };

    static NewNode make(SyntaxKind kind, Position at) {
        auto node = std::make_shared<SyntaxNode>();
        node->kind = kind;
        node->at = at;
        return node;
    }

    [[noreturn]] void fail(Position at, const std::string& text) const;
    [[noreturn]] void unexpected(const Token& token) const;
    bool accept(const char* punctuation, Reading reading = k_expr) {
        if (!lexer_.peek(reading).is(punctuation))
            return false;
        lexer_.take(reading);
        return true;
    }
    Token expect(const char* punctuation);
    bool accept_name(const char* name) {
        const Token& token = lexer_.peek(k_expr);
        if (token.kind != TokenKind::name || token.text != name)
            return false;
        lexer_.take(k_expr);
        return true;
    }
    void end_statement();

    // --- statements ---------------------------------------------------------------------------

    SyntaxNodePtr statement();
    SyntaxNodePtr keyword_statement(const Token& token);
    SyntaxNodePtr block();
    SyntaxNodePtr body();
    SyntaxNodePtr parenthesised();
    SyntaxNodePtr if_statement();
    SyntaxNodePtr for_loop();

    /// Comma-separated expressions of a for statement, up to `closing`; the first list may declare
    /// a variable.
    SyntaxNodePtr expression_list(const char* closing, bool may_declare);
    SyntaxNodePtr while_loop();
    SyntaxNodePtr do_loop();
    SyntaxNodePtr switch_statement();
    SyntaxNodePtr return_statement();
    SyntaxNodePtr procedure_or_global();

    /// `int $a = 1;` is a declaration, `int($a);` a cast whose result is discarded.
    SyntaxNodePtr declaration_or_cast(const Token& token);
    SyntaxNodePtr declarators(Basic basic, bool global, Position at);

    /// `$name`, `$name[]`, `$name[size]`, for a matrix `$name[rows][columns]`.
    NewNode declarator(Basic basic);
    SyntaxNodePtr procedure(Position at, bool global);

    // --- commands -----------------------------------------------------------------------------

    /// The next token is a name. `quoted`: inside back-quotes, where a back-quote ends the command.
    SyntaxNodePtr command_or_call(bool quoted);

    bool ends_command(bool quoted);
    SyntaxNodePtr argument();

    /// `$a`, `$a[1]`, `$v.x`. A subscript must follow without a space: in `$a [0]`, `[0]` is the
    /// next argument.
    SyntaxNodePtr argument_variable(const Token& token);
    SyntaxNodePtr call_arguments(const Token& name);
    SyntaxNodePtr catch_expression(const Token& name);

    // --- expressions --------------------------------------------------------------------------

    SyntaxNodePtr expression();

    void require_target(const SyntaxNode& node) const;
    SyntaxNodePtr conditional();
    SyntaxNodePtr binary(size_t level);
    SyntaxNodePtr unary();
    SyntaxNodePtr increment(const Token& token, SyntaxNodePtr target, bool after);
    SyntaxNodePtr postfix();
    SyntaxNodePtr subscript(SyntaxNodePtr base);

    static SyntaxNodePtr variable(const Token& token) {
        auto node = make(SyntaxKind::variable, token.at);
        node->text = token.text;
        return node;
    }

    SyntaxNodePtr primary();
    SyntaxNodePtr name_expression(const Token& token);

    /// `(expr)` or `(type)operand`.
    SyntaxNodePtr cast_or_group(const Token& token);
    SyntaxNodePtr back_quoted(const Token& token);
    SyntaxNodePtr array_literal(const Token& token);
    SyntaxNodePtr vector_literal(const Token& token);

    /// Vector components exclude comparisons, because `>` would end the vector.
    SyntaxNodePtr expression_in_vector() { return binary(4); }

    void check_shape(const SyntaxNode& node) const;

    Lexer lexer_;
    int depth_ = 0;
    int loops_ = 0;
    int switches_ = 0;
    int procedures_ = 0;
};

} // namespace host::script
