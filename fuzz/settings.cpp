// Settings files, and the rules about titles in them.

#include "fuzz/common.h"
#include "platform/linux/settings_json.h"
#include "tracker/title_rules.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    std::string problem;
    auto document = SettingsDocument::parse(fuzz::textOf(data, size), problem);
    fuzz::demand(document || !problem.empty(), "settings that cannot be read are told why");
    if (!document) return 0;
    const Dictionary values = document->values();
    fuzz::demand(document->set("OrvaneEnabled", true), "a boolean can be set");
    const auto again = SettingsDocument::parse(document->text(), problem);
    fuzz::demand(again && again->values()["OrvaneEnabled"] == Value(true), "own settings can be read");

    Error error;
    const auto rules = TitleRules::read(values["OrvaneTitleRules"], &error);
    fuzz::demand(rules || error, "rules that cannot be read are told why");
    if (!rules) return 0;
    const auto same = TitleRules::read(rules->value());
    fuzz::demand(same && same->rules() == rules->rules(), "rules are stored as they are");
    for (const char* title : {"", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab", "Page \u2014 Private Browsing"})
        rules->recordedTitle("org.example.Editor", title);
    isPrivateWindowTitle(fuzz::textOf(data, size));
    return 0;
}
