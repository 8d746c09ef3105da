/// A minimal script host for tests without the script language. Runs the simple statements that
/// plug-ins send.
#pragma once

#include "host/graph/command_registry.h"
#include "host/graph/scene.h"
#include "host/graph/script_host.h"
#include "host/graph/undo.h"

#include <string>
#include <vector>

namespace host::graph::testing {

class SmallScript : public ScriptHost {
public:
    SmallScript() { set_script_host(this); }
    ~SmallScript() override { set_script_host(nullptr); }

    MStatus execute(const std::string& text, bool, bool undoable, CommandResult& result) override {
        texts.push_back(text);
        const UndoFrame frame(text, undoable);
        std::vector<std::string> words;
        MStatus status;
        for (const std::string& word : split(text)) {
            if (word != ";") {
                words.push_back(word);
                continue;
            }
            const MStatus one = statement(words, result);
            status = status ? one : status;
            words.clear();
        }
        return status;
    }
    MStatus source(const std::string& file) override {
        sourced.push_back(file);
        return MS::kSuccess;
    }
    void show(Severity, const std::string& text) override { lines.push_back(text); }
    void command_added(const std::string& name) override { commands.push_back("+" + name); }
    void command_removed(const std::string& name) override { commands.push_back("-" + name); }

    std::vector<std::string> texts, sourced, lines, commands, called;

private:
    /// Splits a statement into words without quotes and brackets; statements end with ";".
    static std::vector<std::string> split(const std::string& text) {
        std::vector<std::string> words;
        std::string word;
        bool quoted = false, has_word = false;
        const auto end = [&] {
            if (has_word)
                words.push_back(word);
            word.clear();
            has_word = false;
        };
        for (const char c : text) {
            if (c == '"') {
                quoted = !quoted;
                has_word = true;
            } else if (!quoted && (c == ' ' || c == ';')) {
                end();
                if (c == ';')
                    words.push_back(";");
            } else {
                word += c;
                has_word = true;
            }
        }
        end();
        if (words.empty() || words.back() != ";")
            words.push_back(";");
        return words;
    }

    MStatus statement(const std::vector<std::string>& words, CommandResult& result) {
        if (words.empty())
            return MS::kSuccess;
        Scene& scene = Scene::current();
        const std::string& name = words.front();
        if (name == "constructionHistory") {
            result.set(scene.records_history ? 1 : 0);
            return MS::kSuccess;
        }
        if (name == "dgeval" || name == "setAttr") {
            const Selection found = resolve(words[name == "dgeval" ? words.size() - 1 : 1]);
            if (found.empty() || found.front().plug == nullptr)
                return MS::kInvalidParameter;
            Slot& plug = *found.front().plug;
            if (name == "dgeval")
                return evaluate(plug);
            return scene.perform(set_value_edit(plug, PlugValue::of_double(std::stod(words[2]))));
        }
        if (Commands::current().knows(name))
            return Commands::current().run(name, {words.begin() + 1, words.end()}, result);
        called.push_back(name);
        return MS::kFailure;
    }
};

} // namespace host::graph::testing
