#include "window/settings.h"

#include "host/commands/session.h"

namespace window {
namespace {

host::script::Value call(const std::string& expression) {
    return host::script::Session::current()
        .run("catchQuiet(`tessoraCreateUI`); " + expression + ";", "window", false)
        .value;
}

} // namespace

std::map<std::string, Setting> read_settings() {
    std::map<std::string, Setting> settings;
    if (!call("exists tessoraSettingHelp").truth())
        return settings;
    const auto attributes = call("tessoraSettingAttributes()").flattened();
    const auto labels = call("tessoraSettingLabels()").flattened();
    const int first_without_effect = call("tessoraFirstSettingWithoutEffect()").to_int();
    for (size_t i = 0; i < attributes.size() && i < labels.size(); ++i) {
        const int row = static_cast<int>(i);
        settings[attributes[i]] = {
            row, labels[i], call("tessoraSettingHelp(" + std::to_string(row) + ")").to_string(),
            row < first_without_effect};
    }
    return settings;
}

} // namespace window
