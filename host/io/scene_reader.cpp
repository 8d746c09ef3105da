#include "host/graph/edits.h"
#include "host/graph/plugins.h"
#include "host/graph/scene.h"
#include "host/io/mesh_block.h"
#include "host/io/scene_file.h"
#include "host/script/flags.h"
#include "host/script/plugs.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>

namespace host {

namespace {

using script::Lexer;
using script::Position;
using script::Reading;
using script::ScriptError;
using script::ScriptFault;
using script::Token;
using script::TokenKind;
using script::Value;

struct Statement {
    std::string name;
    std::vector<Token> words;
    Position at;
    std::string_view text; ///< including the semicolon
};

/// Splits a scene text into statements. `next` returns false at the end.
class Statements {
public:
    Statements(const std::string& text, const std::string& file)
        : text_(text), lexer_(text, file) {}

    bool next(Statement& statement) {
        while (lexer_.peek(Reading::argument).is(";"))
            lexer_.take(Reading::argument);
        const Token first = lexer_.peek(Reading::argument);
        if (first.kind == TokenKind::end)
            return false;
        const size_t start = lexer_.offset_of_next();
        lexer_.take(Reading::argument);
        if (first.kind != TokenKind::word)
            throw ScriptError(lexer_.file(), first.at, "A statement starts with a command's name.");
        statement.name = first.text;
        statement.at = first.at;
        statement.words.clear();
        for (;;) {
            Token token = lexer_.take(Reading::argument);
            if (token.is(";"))
                break;
            if (token.kind == TokenKind::end)
                throw ScriptError(lexer_.file(), first.at, "The statement is not finished.");
            if (token.kind == TokenKind::punctuation && token.text != "-")
                throw ScriptError(lexer_.file(), token.at,
                                  "\"" + token.text + "\" cannot stand in a scene.");
            statement.words.push_back(std::move(token));
        }
        statement.text = std::string_view(text_).substr(start, lexer_.mark() - start);
        return true;
    }

private:
    const std::string& text_;
    Lexer lexer_;
};

Value value_of(const Token& token) {
    if (token.kind == TokenKind::integer || token.kind == TokenKind::real)
        return token.number;
    if (token.kind == TokenKind::flag)
        return "-" + token.text;
    for (const char* yes : {"yes", "on", "true"})
        if (token.kind == TokenKind::word && token.text == yes)
            return int32_t(1);
    for (const char* no : {"no", "off", "false"})
        if (token.kind == TokenKind::word && token.text == no)
            return int32_t(0);
    return token.text;
}

bool is_flag(const Token& token, const char* short_name, const char* long_name) {
    return token.kind == TokenKind::flag && (token.text == short_name || token.text == long_name);
}

class Reader {
public:
    Reader(const std::string& file, script::Interpreter& interpreter)
        : file_(file), interpreter_(interpreter), notes_(SceneNotes::current()) {}

    void read(Statement& statement) {
        try {
            dispatch(statement);
        } catch (const ScriptFault& fault) {
            throw ScriptError(file_, statement.at, fault.what());
        }
    }

    void finish_block() {
        try {
            if (mesh_ && mesh_->has_geometry())
                script::require(node_->as_mesh()->set_mesh(mesh_->build()), "setAttr",
                                script::name_of(*node_));
        } catch (const ScriptFault& fault) {
            throw ScriptError(file_, block_at_, fault.what());
        }
        mesh_.reset();
        node_ = Ref<graph::Node>();
        in_unknown_ = false;
    }

private:
    void dispatch(Statement& statement) {
        const std::string& name = statement.name;
        if (name == "createNode")
            return create(statement);
        if (name == "select")
            return select(statement);
        if (name == "setAttr" || name == "addAttr" || name == "rename" || name == "lockNode")
            return setting(statement);
        finish_block();
        if (name == "requires")
            return requires_plugin(statement);
        if (name == "fileInfo")
            return file_info(statement);
        if (name == "currentUnit")
            return units(statement);
        if (name == "connectAttr" || name == "disconnectAttr" || name == "parent") {
            if (!call(name, statement.words, 0))
                keep_connection(statement);
            return;
        }
        keep_connection(statement);
    }

    void warn(const Statement& statement, const std::string& text) {
        interpreter_.output().warning(file_ + ":" + std::to_string(statement.at.line) + ":" +
                                      std::to_string(statement.at.column) + ": " + text);
    }

    void keep_connection(const Statement& statement) {
        notes_.unknown_connections.emplace_back(statement.text);
    }

    /// Replaces names in "a.b" or "|a|b" that were taken when their nodes were created by the names
    /// that the nodes have now.
    std::string renamed(const std::string& name) const {
        if (renames_.empty())
            return name;
        std::string result;
        for (size_t start = 0; start < name.size();) {
            const size_t end = std::min(name.find_first_of("|.", start), name.size());
            const std::string part = name.substr(start, end - start);
            const auto found = renames_.find(part);
            result += found == renames_.end() ? part : found->second;
            if (end == name.size())
                break;
            if (name[end] == '.')
                return result + name.substr(end);
            result += name[end];
            start = end + 1;
        }
        return result;
    }

    /// Runs a command; false if it fails. String words from number `first_name` on can be node
    /// names.
    bool call(const std::string& name, const std::vector<Token>& words, size_t first_name) {
        std::vector<Value> arguments;
        for (size_t i = 0; i < words.size(); ++i) {
            // Later versions write capacity hints, which have no use here.
            if (is_flag(words[i], "ch", "capacityHint")) {
                ++i;
                continue;
            }
            const bool is_name = i >= first_name && words[i].kind == TokenKind::string;
            arguments.push_back(is_name && name != "setAttr" ? Value(renamed(words[i].text))
                                                             : value_of(words[i]));
        }
        try {
            interpreter_.call(name, std::move(arguments));
            return true;
        } catch (const std::runtime_error&) { // ScriptFault, or ScriptError from a script it ran
            return false;
        }
    }

    void create(const Statement& statement) {
        finish_block();
        block_at_ = statement.at;
        if (statement.words.empty())
            throw ScriptFault("createNode needs a type.");
        graph::Scene& scene = graph::Scene::current();
        std::string wanted;
        for (size_t i = 0; i + 1 < statement.words.size(); ++i)
            if (is_flag(statement.words[i], "n", "name"))
                wanted = statement.words[i + 1].text;
        const std::string type = statement.words[0].text;
        if (!scene.find_type(type)) {
            if (warned_types_.insert(type).second)
                warn(statement,
                     "Nodes of the unknown type \"" + type + "\" are kept as they stand.");
            notes_.unknown_nodes.emplace_back(statement.text);
            in_unknown_ = true;
            return;
        }
        std::vector<Value> arguments;
        bool has_parent = false;
        for (const Token& word : statement.words) {
            const bool names_parent = has_parent;
            has_parent = is_flag(word, "p", "parent");
            arguments.push_back(names_parent ? Value(renamed(word.text)) : value_of(word));
        }
        interpreter_.call("createNode", arguments);
        node_ = scene.selection().back().node;
        if (!wanted.empty() && node_->name_text() != wanted)
            renames_[wanted] = node_->name_text();
        if (type == "mesh")
            mesh_ = std::make_unique<MeshBlock>();
    }

    void select(const Statement& statement) {
        finish_block();
        block_at_ = statement.at;
        if (call("select", statement.words, 0)) {
            const graph::Selection& selection = graph::Scene::current().selection();
            if (!selection.empty())
                node_ = selection.back().node;
            return;
        }
        notes_.unknown_nodes.emplace_back(statement.text);
        in_unknown_ = true;
    }

    void setting(const Statement& statement) {
        if (in_unknown_) {
            notes_.unknown_nodes.back() += "\n\t" + std::string(statement.text);
            return;
        }
        if (!node_)
            return setting_of_a_named_node(statement);
        // Newer files contain `rename -uid`, which sets a node's identifier: ignored.
        if (statement.name == "rename")
            return;
        if (statement.name == "setAttr" && mesh_ && take_geometry(statement))
            return;
        // The text that this attribute holds becomes part of the mesh.
        if (statement.name == "addAttr" && mesh_ && names_word(statement, k_obj_attribute))
            return;
        if (!call(statement.name, statement.words, statement.words.size()))
            notes_.unknown_settings.emplace_back(node_, std::string(statement.text));
    }

    /// Outside the block of a node, a statement has to name its node. One that says ".t" would
    /// change the node before it in the saved file, so it is left out.
    void setting_of_a_named_node(const Statement& statement) {
        std::vector<Token> words = statement.words;
        const auto path = std::find_if(words.begin(), words.end(), [](const Token& token) {
            return token.kind == TokenKind::string;
        });
        if (statement.name != "setAttr" || path == words.end() ||
            path->text.find('.') - 1 >= path->text.size()) {
            warn(statement,
                 "No node stands before this \"" + statement.name + "\", which is left out.");
            return;
        }
        path->text = renamed(path->text);
        if (!call(statement.name, words, words.size()))
            keep_connection(statement);
    }

    static bool names_word(const Statement& statement, const char* word) {
        return std::any_of(statement.words.begin(), statement.words.end(),
                           [&](const Token& token) { return token.text == word; });
    }

    /// Passes the attribute and the values of a setAttr, without its flags, to the mesh.
    bool take_geometry(const Statement& statement) {
        std::string path;
        std::vector<Token> values;
        for (size_t i = 0; i < statement.words.size(); ++i) {
            const Token& word = statement.words[i];
            const bool has_value = is_flag(word, "s", "size") || is_flag(word, "typ", "type") ||
                                   is_flag(word, "ch", "capacityHint");
            if (has_value)
                ++i;
            else if (path.empty() && word.kind == TokenKind::string && word.text[0] == '.')
                path = word.text.substr(1);
            else
                values.push_back(word);
        }
        return mesh_->take(path, values);
    }

    void requires_plugin(const Statement& statement) {
        std::string name;
        for (size_t i = 0; i < statement.words.size() && name.empty(); ++i) {
            const Token& word = statement.words[i];
            if (word.kind == TokenKind::flag)
                ++i; // -nodeType and -dataType take a value
            else
                name = word.text;
        }
        if (name.empty() || name == "maya")
            return;
        std::string reason;
        if (graph::Plugins::current().load_required(name, reason))
            return;
        warn(statement,
             "The plug-in \"" + name + "\" that the scene requires is not loaded. " + reason);
        notes_.requirements.emplace_back(statement.text);
    }

    void file_info(const Statement& statement) {
        if (statement.words.size() != 2)
            throw ScriptFault("fileInfo takes a key and a value.");
        notes_.file_info.emplace_back(statement.words[0].text, statement.words[1].text);
    }

    void units(const Statement& statement) {
        for (size_t i = 0; i + 1 < statement.words.size(); ++i) {
            const std::string& unit = statement.words[i + 1].text;
            const bool length = is_flag(statement.words[i], "l", "linear");
            const bool angle = is_flag(statement.words[i], "a", "angle");
            if ((length && unit != "centimeter" && unit != "cm") ||
                (angle && unit != "degree" && unit != "deg"))
                warn(statement, "The unit \"" + unit + "\" is not converted.");
        }
    }

    std::string file_;
    script::Interpreter& interpreter_;
    SceneNotes& notes_;
    Ref<graph::Node> node_; ///< the node that setAttr and addAttr refer to
    std::unique_ptr<MeshBlock> mesh_;
    Position block_at_;
    bool in_unknown_ = false;
    std::map<std::string, std::string> renames_;
    std::set<std::string> warned_types_;
};

} // namespace

SceneNotes& SceneNotes::current() {
    static SceneNotes notes;
    return notes;
}

void read_scene(const std::string& text, const std::string& file,
                script::Interpreter& interpreter) {
    if (text.compare(0, 6, "//Maya") != 0)
        throw ScriptError(file, Position(), "This is no scene: it does not start with \"//Maya\".");
    Statement statement;
    Statements check(text, file);
    while (check.next(statement)) {
    }
    Statements statements(text, file);
    Reader reader(file, interpreter);
    while (statements.next(statement))
        reader.read(statement);
    reader.finish_block();
}

} // namespace host
