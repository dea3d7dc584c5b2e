#include "tracker/title_rules.h"

#include <glib.h>

#include <algorithm>

#include "foundation/predicate.h"

namespace orvane {

namespace {

constexpr int invalidRuleError = 1;

/// A pattern that tries more than this on one title is given up: the main loop waits for it. Pattern texts
/// may begin with such a setting (pcre2pattern(3)).
constexpr const char* effortLimit = "(*LIMIT_MATCH=20000)(*LIMIT_DEPTH=2000)";

std::nullopt_t refuse(Error* error, std::size_t rule, const std::string& what) {
    assignError(error, {titleRulesErrorDomain, invalidRuleError,
                        "The title rule " + std::to_string(rule + 1) + " " + what});
    return std::nullopt;
}

/// Where a pattern cannot be read: the pattern, a caret below the place, what is wrong there. The place
/// counts characters.
std::string placeInPattern(const std::string& pattern, std::size_t place, const std::string& what) {
    const auto length =
        static_cast<std::size_t>(g_utf8_strlen(pattern.data(), static_cast<gssize>(pattern.size())));
    return "has a pattern that cannot be read:\n  " + pattern + "\n  " +
           std::string(std::min(place, length), ' ') + "^ " + what;
}

}  // namespace

class TitleRules::Pattern {
  public:
    /// None, with what is wrong, when the text is no regular expression.
    static std::shared_ptr<const Pattern> make(const std::string& text, std::string& problem) {
        if (text.find('\0') != std::string::npos ||
            !g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) {
            problem = "has a pattern that is no UTF-8 text.";
            return nullptr;
        }
        GError* failure = nullptr;
        GRegex* regex = g_regex_new((effortLimit + text).c_str(), G_REGEX_CASELESS,
                                    static_cast<GRegexMatchFlags>(0), &failure);
        if (!regex) {
            problem = placeInPattern(text, placeOfError(text), withoutPlace(failure->message));
            g_error_free(failure);
            return nullptr;
        }
        auto pattern = std::make_shared<Pattern>();
        pattern->regex_ = regex;
        return pattern;
    }
    Pattern() = default;
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;
    ~Pattern() {
        if (regex_) g_regex_unref(regex_);
    }

    bool isIn(std::string_view title) const {
        if (!g_utf8_validate(title.data(), static_cast<gssize>(title.size()), nullptr)) return true;
        GError* failure = nullptr;
        const bool found = g_regex_match_full(regex_, title.data(), static_cast<gssize>(title.size()), 0,
                                              static_cast<GRegexMatchFlags>(0), nullptr, &failure) == TRUE;
        // What cannot be judged is not shown.
        const bool failed = failure != nullptr;
        g_clear_error(&failure);
        return found || failed;
    }

  private:
    /// The library tells the place only within its message: "… at char N: what is wrong". The text goes
    /// without our settings, so that the place is one in it.
    static std::size_t placeOfError(const std::string& text) {
        std::size_t place = text.size();
        GError* failure = nullptr;
        GRegex* regex =
            g_regex_new(text.c_str(), G_REGEX_CASELESS, static_cast<GRegexMatchFlags>(0), &failure);
        if (regex) g_regex_unref(regex);
        if (failure) {
            const std::string message = failure->message;
            const std::string mark = " at char ";
            if (const auto at = message.rfind(mark); at != std::string::npos)
                place = static_cast<std::size_t>(
                    g_ascii_strtoull(message.c_str() + at + mark.size(), nullptr, 10));
            g_error_free(failure);
        }
        return place;
    }
    static std::string withoutPlace(const std::string& message) {
        const std::size_t colon = message.rfind(": ");
        return colon == std::string::npos ? message : message.substr(colon + 2);
    }

    GRegex* regex_ = nullptr;
};

struct TitleRules::Compiled {
    std::optional<Predicate> application;
    std::shared_ptr<const Pattern> title;
};

TitleRules::TitleRules() = default;
TitleRules::~TitleRules() = default;
TitleRules::TitleRules(const TitleRules&) = default;
TitleRules::TitleRules(TitleRules&&) noexcept = default;
TitleRules& TitleRules::operator=(const TitleRules&) = default;
TitleRules& TitleRules::operator=(TitleRules&&) noexcept = default;

std::optional<TitleRules> TitleRules::make(std::vector<TitleRule> rules, Error* error) {
    TitleRules result;
    for (std::size_t i = 0; i < rules.size(); ++i) {
        auto compiled = std::make_shared<Compiled>();
        if (rules[i].application)
            compiled->application = Predicate::withFormat("SELF LIKE[c] %@", {Value(*rules[i].application)});
        if (rules[i].title) {
            std::string problem;
            compiled->title = Pattern::make(*rules[i].title, problem);
            if (!compiled->title) return refuse(error, i, problem);
        }
        result.compiled_.push_back(std::move(compiled));
    }
    result.rules_ = std::move(rules);
    return result;
}

std::optional<TitleRules> TitleRules::read(const Value& value, Error* error) {
    if (value.isNone()) return TitleRules();
    const Value::Array* list = value.asArray();
    if (!list) {
        assignError(error, {titleRulesErrorDomain, invalidRuleError, "The title rules are no list."});
        return std::nullopt;
    }
    std::vector<TitleRule> rules;
    for (const Value& element : *list) {
        const Dictionary* members = element.asDictionary();
        if (!members) return refuse(error, rules.size(), "is no object.");
        TitleRule rule;
        for (const auto& [key, member] : *members) {
            const std::string* text = member.asString();
            const bool* flag = member.asBool();
            if (key == "application" && text)
                rule.application = *text;
            else if (key == "title" && text)
                rule.title = *text;
            else if (key == "replacement" && text)
                rule.replacement = *text;
            else if (key == "privateWindows" && flag)
                rule.privateWindows = *flag;
            else
                return refuse(error, rules.size(),
                              "has a member \"" + key + "\" that is unknown or of the wrong kind.");
        }
        rules.push_back(std::move(rule));
    }
    return make(std::move(rules), error);
}

TitleRules TitleRules::hidingAll() { return *make({TitleRule{}}); }

Value TitleRules::value() const {
    if (rules_.empty()) return {};
    Value::Array list;
    for (const TitleRule& rule : rules_) {
        Dictionary members;
        members.set("application", rule.application);
        members.set("title", rule.title);
        if (rule.privateWindows) members.set("privateWindows", true);
        members.set("replacement", rule.replacement);
        list.emplace_back(std::move(members));
    }
    return list;
}

std::optional<std::size_t> TitleRules::ruleHiding(std::string_view application,
                                                  std::string_view title) const {
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        const Compiled& compiled = *compiled_[i];
        if (compiled.application && !compiled.application->evaluate(Value(application))) continue;
        if (rules_[i].privateWindows && !isPrivateWindowTitle(title)) continue;
        if (compiled.title && !compiled.title->isIn(title)) continue;
        return i;
    }
    return std::nullopt;
}

std::string TitleRules::recordedTitle(std::string_view application, std::string_view title) const {
    const auto rule = ruleHiding(application, title);
    return rule ? rules_[*rule].replacement.value_or("") : std::string(title);
}

}  // namespace orvane
