#include "tracker/title_rules.h"

#include <gtest/gtest.h>

#include <chrono>

namespace orvane::test {
namespace {

std::string recorded(std::vector<TitleRule> rules, std::string_view application, std::string_view title) {
    Error error;
    const auto made = TitleRules::make(std::move(rules), &error);
    return made ? made->recordedTitle(application, title) : error.localizedDescription();
}

TEST(TitleRules, TheFirstThatAppliesDecides) {
    const std::vector<TitleRule> rules{{"org.example.Bank", {}, false, {}},
                                       {{}, "inv(oice|ite)", false, "an invoice"},
                                       {"org.*.web", "^private: \\w+$", false, {}},
                                       {{}, {}, true, "private"}};
    EXPECT_EQ(recorded(rules, "ORG.example.bank", "My invoice"), "");
    EXPECT_EQ(recorded(rules, "org.example.Bank2", "My INVOICE 7"), "an invoice");
    EXPECT_EQ(recorded(rules, "org.a.b.web", "Private: x"), "");
    EXPECT_EQ(recorded(rules, "org.a.b.web", "Private: x y"), "Private: x y");
    EXPECT_EQ(recorded(rules, "other", "Page — Mozilla Firefox Private Browsing"), "private");
    EXPECT_EQ(recorded({}, "org.example.Bank", "My invoice"), "My invoice");
    // All that a rule asks for has to hold; one that asks for nothing holds always.
    EXPECT_EQ(recorded({{"a", "b", true, {}}}, "a", "b"), "b");
    EXPECT_EQ(recorded({{}}, "", ""), "");
    EXPECT_EQ(recorded({{"a", {}, false, {}}}, "ab", "t"), "t");
}

TEST(TitleRules, PatternsThatCannotBeReadAreRefusedWithTheirPlace) {
    EXPECT_EQ(
        recorded({{}, {{}, "é(ab[c", false, {}}}, "", ""),
        "The title rule 2 has a pattern that cannot be read:\n  é(ab[c\n        ^ missing terminating ] "
        "for character class");
    EXPECT_NE(recorded({{{}, "éa{2,1}b", false, {}}}, "", "").find("\n  éa{2,1}b\n        ^ "),
              std::string::npos);
    EXPECT_EQ(recorded({{{}, std::string("a\0b", 3), false, {}}}, "", ""),
              "The title rule 1 has a pattern that is no UTF-8 text.");
}

TEST(TitleRules, WhatCannotBeJudgedIsHidden) {
    EXPECT_EQ(recorded({{{}, "^abc$", false, {}}}, "", "ab\xff"), "");
    // This pattern would try for longer than anybody lives.
    const std::string title(60, 'a');
    EXPECT_EQ(recorded({{{}, "(a+)+(a+)+$", false, {}}}, "", title + "b"), "");
}

TEST(TitleRules, AreKeptAsSettings) {
    const auto rules = *TitleRules::make({{"a", "b", true, "c"}, {{}, {}, true, ""}, {}});
    const auto same = TitleRules::read(rules.value());
    ASSERT_TRUE(same);
    EXPECT_EQ(same->rules(), rules.rules());
    EXPECT_TRUE(TitleRules().value().isNone());
    EXPECT_TRUE(TitleRules::read(Value())->empty());
    const auto problem = [](const Value& value) {
        Error error;
        return TitleRules::read(value, &error) ? "" : error.localizedDescription();
    };
    EXPECT_EQ(problem("hide"), "The title rules are no list.");
    EXPECT_EQ(problem(Value::Array{Dictionary{}, 7}), "The title rule 2 is no object.");
    for (const auto& [key, value] :
         {std::pair<const char*, Value>{"aplication", "a"}, {"title", 7}, {"privateWindows", "yes"}})
        EXPECT_EQ(problem(Value::Array{Dictionary{{key, value}}}),
                  "The title rule 1 has a member \"" + std::string(key) +
                      "\" that is unknown or of the wrong kind.");
}

TEST(TitleRules, PrivateWindowsAreToldByTheirTitles) {
    for (const char* title : {"Mozilla Firefox Private Browsing", "Seite — Mozilla Firefox Privater Modus",
                              "Page — Mozilla Firefox (Private Browsing)", "Page – Navigation privée",
                              "NUEVA — NAVEGACIÓN PRIVADA", "Page - Chromium (Incognito)",
                              "Neuer Tab - Google Chrome (Inkognito)", "Page - Opera (Private) ",
                              "Page - [InPrivate] - Microsoft Edge", "頁 — プライベートブラウジング",
                              "Страница — Приватный просмотр"})
        EXPECT_TRUE(isPrivateWindowTitle(title)) << title;
    for (const char* title :
         {"", "Private", "Is this private", "How private browsing works — Mozilla Firefox", "Notes (draft)",
          "Nonprivate browsings", "Semiprivate browsing", "(incognito) - Editor"})
        EXPECT_FALSE(isPrivateWindowTitle(title)) << title;
}

}  // namespace
}  // namespace orvane::test
