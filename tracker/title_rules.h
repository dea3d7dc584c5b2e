#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/error.h"
#include "foundation/value.h"

namespace orvane {

inline constexpr const char* titleRulesErrorDomain = "OrvaneTitleRulesErrorDomain";

/// Which window titles are hidden: those for which everything holds that the rule asks for. A rule that asks
/// for nothing hides every title.
struct TitleRule {
    /// Identifier of the application in either case; `*` stands for any run of characters, `?` for one.
    std::optional<std::string> application;
    /// Regular expression that is found anywhere in the title, in either case (Perl's syntax).
    std::optional<std::string> title;
    /// The title ends as that of a browser's private window does: see `isPrivateWindowTitle`.
    bool privateWindows = false;
    /// What is recorded instead of the title; none: an empty text.
    std::optional<std::string> replacement;

    friend bool operator==(const TitleRule&, const TitleRule&) = default;
};

/// Rules in their order; the first that applies decides. Copies share what was made of the patterns.
class ORVANE_EXPORT TitleRules {
  public:
    TitleRules();
    ~TitleRules();
    TitleRules(const TitleRules&);
    TitleRules(TitleRules&&) noexcept;
    TitleRules& operator=(const TitleRules&);
    TitleRules& operator=(TitleRules&&) noexcept;

    /// None, with an error that tells rule and place, when a pattern cannot be read.
    static std::optional<TitleRules> make(std::vector<TitleRule> rules, Error* error = nullptr);
    /// Reads the value of a user default: a list of dictionaries with the members of `TitleRule` as keys, or
    /// none. None, with an error, when it is anything else.
    static std::optional<TitleRules> read(const Value& value, Error* error = nullptr);
    /// The one rule that hides every title.
    static TitleRules hidingAll();

    /// The rules as `read` takes them; none when there are none.
    Value value() const;
    const std::vector<TitleRule>& rules() const { return rules_; }
    bool empty() const { return rules_.empty(); }

    /// Position of the rule that hides the title; none when it may be recorded. A title for which a pattern
    /// cannot be judged, as it would take too long, counts as found.
    std::optional<std::size_t> ruleHiding(std::string_view application, std::string_view title) const;
    /// What is recorded for the title.
    std::string recordedTitle(std::string_view application, std::string_view title) const;

  private:
    class Pattern;
    struct Compiled;

    std::vector<TitleRule> rules_;
    std::vector<std::shared_ptr<const Compiled>> compiled_;
};

/// Whether the title is marked as that of a private window by one of the usual browsers, in one of
/// some twenty languages. Browsers that mark nothing, and other languages, go unnoticed.
ORVANE_EXPORT bool isPrivateWindowTitle(std::string_view title);

}  // namespace orvane
