#include <iostream>
#include <nlohmann/json.hpp>

#include "host/answer.h"
#include "host/terminal.h"
#include "platform/linux/linux_platform.h"
#include "tracker/orvane.h"

namespace orvane::host {

namespace {

using nlohmann::ordered_json;

ordered_json json(const TitleRule& rule) {
    return {{"application", jsonText(rule.application)},
            {"title", jsonText(rule.title)},
            {"privateWindows", rule.privateWindows},
            {"replacement", jsonText(rule.replacement)}};
}

/// "titles of private windows of org.example.* in which \"invoice\" is found are left out"
std::string sentence(const TitleRule& rule) {
    std::string text = rule.privateWindows ? "titles of private windows" : "titles";
    if (rule.application) text += " of " + *rule.application;
    if (rule.title) text += " in which \"" + *rule.title + "\" is found";
    if (!rule.application && !rule.title && !rule.privateWindows) text = "all titles";
    return text + (rule.replacement ? " are recorded as \"" + *rule.replacement + "\"" : " are left out");
}

/// The user's rules, and the settings they are kept in.
class UserRules {
  public:
    UserRules() {
        Error error;
        const Value stored = platform_.userDefaults().objectForKey(orvaneTitleRulesDefault);
        if (const std::string& broken = platform_.userDefaults().problem(); !broken.empty())
            problem_ = "the settings file \"" + platform_.userDefaults().path().string() +
                       "\" cannot be used: " + broken + ".";
        else if (auto rules = TitleRules::read(stored, &error))
            rules_ = std::move(*rules);
        else
            problem_ = error.localizedDescription() + "\nUntil that is mended in \"" +
                       platform_.userDefaults().path().string() + "\", no title is recorded.";
    }

    /// Why the rules cannot be read; empty when they can.
    const std::string& problem() const { return problem_; }
    const TitleRules& rules() const { return rules_; }
    /// Keeps other rules. What went wrong was printed when that fails.
    int set(std::vector<TitleRule> rules) {
        Error error;
        auto made = TitleRules::make(std::move(rules), &error);
        if (!made) return fail(error.localizedDescription(), exitUsage);
        if (!platform_.userDefaults().setObject(made->value(), orvaneTitleRulesDefault, &error))
            return fail(error.localizedDescription(), exitFailure);
        rules_ = std::move(*made);
        return exitSuccess;
    }

  private:
    LinuxPlatform platform_;
    TitleRules rules_;
    std::string problem_;
};

}  // namespace

int runPrivacy(const CommonOptions& options) {
    const UserRules user;
    if (!user.problem().empty()) return fail(user.problem(), exitFailure);
    const std::vector<TitleRule>& rules = user.rules().rules();
    if (options.json) {
        auto list = ordered_json::array();
        for (const TitleRule& rule : rules) list.push_back(json(rule));
        print(list);
        return exitSuccess;
    }
    if (rules.empty())
        std::cout << "Every window title is recorded. `orvane privacy add` makes a rule that hides some.\n";
    for (std::size_t i = 0; i < rules.size(); ++i)
        std::cout << i + 1 << "  " << displayText(sentence(rules[i]), 1000) << '\n';
    return exitSuccess;
}

int runAddTitleRule(const TitleRuleOptions& added, const CommonOptions& options) {
    if (!added.application && !added.title && !added.privateWindows && !added.all)
        return fail("name the titles to hide with --app, --title or --private-windows, or all with --all.",
                    exitUsage);
    UserRules user;
    if (!user.problem().empty()) return fail(user.problem(), exitFailure);
    std::vector<TitleRule> rules = user.rules().rules();
    rules.push_back({added.application, added.title, added.privateWindows, added.replacement});
    const TitleRule rule = rules.back();
    if (const int status = user.set(std::move(rules)); status != exitSuccess) return status;
    if (options.json)
        print(json(rule));
    else
        std::cout << "From now on, " << displayText(sentence(rule), 1000)
                  << ". What was recorded before stays; `orvane forget` deletes it.\n";
    return exitSuccess;
}

int runRemoveTitleRule(std::size_t number, const CommonOptions& options) {
    UserRules user;
    if (!user.problem().empty()) return fail(user.problem(), exitFailure);
    std::vector<TitleRule> rules = user.rules().rules();
    if (number == 0 || number > rules.size())
        return fail("there is no rule " + std::to_string(number) + ". `orvane privacy` lists the rules.",
                    exitUsage);
    const auto place = rules.begin() + static_cast<std::ptrdiff_t>(number - 1);
    const TitleRule removed = *place;
    rules.erase(place);
    if (const int status = user.set(std::move(rules)); status != exitSuccess) return status;
    if (options.json)
        print(json(removed));
    else
        std::cout << "Removed the rule that " << displayText(sentence(removed), 1000) << ".\n";
    return exitSuccess;
}

int runTestTitleRules(const std::string& application, const std::string& title,
                      const CommonOptions& options) {
    const UserRules user;
    if (!user.problem().empty()) return fail(user.problem(), exitFailure);
    const auto rule = user.rules().ruleHiding(application, title);
    const std::string recorded = user.rules().recordedTitle(application, title);
    if (options.json) {
        print({{"recorded", recorded}, {"rule", rule ? ordered_json(*rule + 1) : ordered_json()}});
        return exitSuccess;
    }
    if (!rule)
        std::cout << "No rule hides this title: it is recorded as it is.\n";
    else if (recorded.empty())
        std::cout << "Rule " << *rule + 1 << " leaves this title out.\n";
    else
        std::cout << "Rule " << *rule + 1 << " records \"" << displayText(recorded, 1000) << "\" instead.\n";
    return exitSuccess;
}

}  // namespace orvane::host
