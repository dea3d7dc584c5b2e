#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>

#include "tests/persistence/temporary_folder.h"

namespace orvane {
namespace {

/// Runs the generator on models written by the test.
class Generator : public testing::Test {
  protected:
    struct Outcome {
        int code;
        std::string output;
    };
    static Outcome run(const std::string& arguments) {
        std::FILE* pipe = ::popen(("'" ORVANE_CODEGEN "' " + arguments + " 2>&1").c_str(), "r");
        std::string output;
        std::array<char, 4096> buffer;
        for (std::size_t count = 0; (count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
            output.append(buffer.data(), count);
        const int status = ::pclose(pipe);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
    }
    std::filesystem::path model() const { return folder_ / "My Notes.momd"; }
    Outcome generate(const std::string& version, const std::string& options = "") const {
        std::filesystem::create_directories(model());
        test::writeBytes(model() / "versions.json",
                         R"({"current": "Notes 2", "versions": ["Notes", "Notes 2"]})");
        test::writeBytes(model() / "Notes 2.json", version);
        return run("'" + model().string() + "' '" + (folder_ / "out").string() + "' " + options);
    }
    /// What is said about an entity of these properties.
    std::string problem(const std::string& properties) const {
        const Outcome outcome = generate(R"({"name": "Notes", "entities": [
            {"name": "Note", "class": "HTMLNote", )" +
                                         properties + "}]}");
        EXPECT_EQ(outcome.code, 1) << outcome.output;
        EXPECT_FALSE(std::filesystem::exists(folder_ / "out"));
        const std::string place =
            "orvane-codegen: " + (model() / "Notes 2.json").string() + ": entity \"Note\": ";
        EXPECT_TRUE(outcome.output.starts_with(place)) << outcome.output;
        return outcome.output.substr(std::min(place.size(), outcome.output.size()));
    }
    std::string written(const std::string& name) const { return test::bytesOf(folder_ / "out" / name); }

    test::TemporaryFolder folder_;
};

/// Whether the parts occur in the text in this order.
testing::AssertionResult inOrder(const std::string& text, const std::vector<std::string>& parts) {
    std::size_t place = 0;
    for (const std::string& part : parts) {
        place = text.find(part, place);
        if (place == std::string::npos)
            return testing::AssertionFailure() << "\"" << part << "\" is not where it should be in\n" << text;
        place += part.size();
    }
    return testing::AssertionSuccess();
}

constexpr const char* note = R"({"name": "Notes", "entities": [
    {"name": "Note", "class": "HTMLNote",
     "attributes": [{"name": "title", "type": "text"}, {"name": "done", "type": "boolean"}],
     "relationships": [{"name": "tags", "destination": "Tag", "inverse": "notes", "toMany": true}]},
    {"name": "Tag", "class": "Tag", "attributes": [{"name": "aNameOfAnAttributeThatNeedsRoom", "type": "text"}],
     "relationships": [{"name": "notes", "destination": "Note", "inverse": "tags"}]},
    {"name": "Plain", "attributes": [{"name": "class", "type": "text"}]}]})";

TEST_F(Generator, writesInTheOrderOfTheModel) {
    const Outcome outcome =
        generate(note, "--namespace notes --export-macro NOTES_API --include-prefix data");
    ASSERT_EQ(outcome.code, 0) << outcome.output;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_ / "out"), {}), 8);
    EXPECT_TRUE(inOrder(
        written("_html_note.h"),
        {"#pragma once", "#include <orvane/orvane.h>", "namespace notes {", "class HTMLNote;\nclass Tag;\n",
         "class NOTES_API HTMLNoteID : public orvane::ManagedObjectID {",
         "class NOTES_API _HTMLNote : public orvane::ManagedObject {",
         "std::optional<std::string_view> title()", "void setTitle(std::optional<std::string_view> value);",
         "std::optional<bool> done() const;", "bool primitiveDoneValue() const;",
         "std::vector<orvane::Ref<Tag>> tags() const;", "orvane::ToManySet<Tag> tagsSet();",
         "orvane::TextSlot title;", "orvane::BooleanSlot done;", "orvane::ToManySlot tags;",
         "}  // namespace notes\n"}));
    EXPECT_TRUE(
        inOrder(written("_html_note.cpp"),
                {"#include \"data/_html_note.h\"", "#include \"data/html_note.h\"", "#include \"data/tag.h\"",
                 "orvane::keys::readWrite<\"title\"", "orvane::keys::readWrite<\"doneValue\"", "{\"done\"}",
                 "{\"tags\", orvane::SlotKind::toMany, offsetof(Row, tags)}"}));
    EXPECT_TRUE(inOrder(written("html_note_keys.cpp"),
                        {"HTMLNoteAttributes{", ".title = \"title\"", ".done = \"done\"",
                         "HTMLNoteRelationships{", ".tags = \"tags\""}));
    EXPECT_EQ(written("_html_note.h").find("Plain"), std::string::npos);

    // Layout as a hand would have it: nothing runs out of the column, and nothing is left at a line's end.
    for (const auto& file : std::filesystem::directory_iterator(folder_ / "out")) {
        const std::string text = test::bytesOf(file);
        for (std::size_t start = 0; start < text.size();) {
            const std::size_t end = text.find('\n', start);
            EXPECT_LE(end - start, 110U) << text.substr(start, end - start);
            EXPECT_FALSE(end > start && text[end - 1] == ' ') << text.substr(start, end - start);
            start = end + 1;
        }
    }
}

TEST_F(Generator, withinTheLibrarysNamespaceNothingIsQualified) {
    ASSERT_EQ(generate(note, "--internal").code, 0);
    EXPECT_TRUE(inOrder(written("_tag.h"), {"#include \"persistence/managed_object.h\"", "namespace orvane {",
                                            "class _Tag : public ManagedObject {"}));
    EXPECT_EQ(written("_tag.h").find("orvane::"), std::string::npos);
}

TEST_F(Generator, refusesNamesThatCppCannotCarry) {
    const auto attribute = [&](const std::string& name) {
        return problem(R"("attributes": [{"name": ")" + name + R"(", "type": "text"}])");
    };
    for (const char* name : {"_x", "9lives", "two words", "a__b", "end_", "Date", "\\\"quote", "grün"})
        EXPECT_NE(attribute(name).find("names are letters"), std::string::npos) << name;
    EXPECT_NE(attribute("class").find("\"class\": this is a word of C++"), std::string::npos);
    for (const char* name : {"objectID", "entity", "keyTable", "std", "valueForKey"})
        EXPECT_NE(attribute(name).find("means something else"), std::string::npos) << name;
    EXPECT_NE(
        problem(R"("attributes": [{"name": "x", "type": "boolean"}, {"name": "xValue", "type": "text"}])")
            .find("\"xValue\": its accessor xValue() is one of property \"x\" too"),
        std::string::npos);
    EXPECT_NE(problem(R"("attributes": [{"name": "x", "type": "text"}],
                         "relationships": [{"name": "x", "destination": "Note", "inverse": "x"}])")
                  .find("too"),
              std::string::npos);
}

TEST_F(Generator, saysWhatIsWrongWithAModel) {
    EXPECT_NE(problem(R"("attributes": [{"name": "x", "type": "txt"}])")
                  .find("attribute \"x\" has the unknown type \"txt\"; types are boolean integer32"),
              std::string::npos);
    EXPECT_EQ(problem(R"("attributes": [{"type": "text"}])"), "\"name\" is missing\n");
    EXPECT_EQ(problem(R"("attributes": [{"name": 3, "type": "text"}])"), "\"name\" must be a text\n");
    EXPECT_EQ(problem(R"("attributes": {})"), "\"attributes\" must be a list\n");
    EXPECT_EQ(problem(R"("attributes": [])"), "it has no properties\n");
    EXPECT_EQ(problem(R"("relationships": [{"name": "r", "destination": "Nowhere"}])"),
              "relationship \"r\" leads to the unknown entity \"Nowhere\"\n");
    EXPECT_EQ(problem(R"("relationships": [{"name": "r", "destination": "Note", "toMany": 1}])"),
              "\"toMany\" must be true or false\n");

    const auto whole = [&](const std::string& text) {
        const Outcome outcome = generate(text);
        EXPECT_EQ(outcome.code, 1);
        return outcome.output;
    };
    EXPECT_NE(whole("{\"name\": ").find("Notes 2.json: "), std::string::npos);
    EXPECT_NE(whole("[]").find("expected an object"), std::string::npos);
    EXPECT_NE(whole(R"({"name": "Notes", "entities": [{"name": "Note"}]})").find("no entity has a class"),
              std::string::npos);
    EXPECT_NE(
        whole(
            R"({"name": "N", "entities": [{"name": "A", "class": "ATag"}, {"name": "B", "class": "ATag"}]})")
            .find("another class"),
        std::string::npos);
    EXPECT_NE(whole(R"({"name": "N", "entities": [{"name": "A"}, {"name": "A"}]})").find("two entities"),
              std::string::npos);
    EXPECT_NE(whole(R"({"name": "N", "entities": [{"name": "A", "class": "aTag"}]})").find("first a capital"),
              std::string::npos);
}

TEST_F(Generator, tellsUsageFromFaults) {
    EXPECT_EQ(run("--help").code, 0);
    EXPECT_NE(run("--help").output.find("--include-prefix"), std::string::npos);
    for (const char* wrong : {"", "one", "one two three", "one two --colour", "one two --namespace"})
        EXPECT_EQ(run(wrong).code, 2) << wrong;
    const Outcome missing =
        run("'" + (folder_ / "none.momd").string() + "' '" + (folder_ / "out").string() + "'");
    EXPECT_EQ(missing.code, 1);
    EXPECT_NE(missing.output.find("versions.json: cannot be read"), std::string::npos);
    test::writeBytes(folder_ / "out", "a file");
    EXPECT_EQ(generate(note).code, 1);
}

}  // namespace
}  // namespace orvane
