#include "tests/host/exchange_fixture.h"

namespace orvane::test {
namespace {

struct Case {
    const char* text;
    const char* refusal;  ///< how it begins
};

class MalformedInput : public testing::Test {
  protected:
    void expectRefusals(const std::string& name, const std::string& before, const std::vector<Case>& cases) {
        for (const Case& malformed : cases) {
            SCOPED_TRACE(malformed.text);
            writeBytes(folder_ / name, before + malformed.text);
            const std::string told = refusal(folder_ / name);
            EXPECT_TRUE(told.starts_with(malformed.refusal)) << "told: " << told;
        }
    }

    TemporaryFolder folder_;
};

TEST_F(MalformedInput, JsonLinesAreRefusedAtTheirLine) {
    expectRefusals("input.jsonl", "",
                   {{"", "1: the file is empty"},
                    {"\n\n", "3: the file is empty"},
                    {"{}", "1: the file does not begin with the line of an export"},
                    {R"({"type":"recording"})", "1: the file does not begin"},
                    {R"({"type":"export"})", "1: \"version\" is missing"},
                    {R"({"type":"export","version":2})", "1: the file was written by a newer program"},
                    {R"({"type":"export","version":1.5})", "1: \"version\" is not a whole number"},
                    {R"({"type":"export","version":1,"more":1})", "1: \"more\" is unknown here"}});
    expectRefusals("input.jsonl", "{\"type\":\"export\",\"version\":1}\n\r\n",
                   {{"{", "3: no JSON: column 2"},
                    {R"({"type":"recording","start":12)", "3: no JSON"},
                    {R"({"type":"recording"}{})", "3: no JSON"},
                    {"{\"type\":\"recording\",\"window\":\"\xFF\"}", "3: no JSON"},
                    {R"({"type":"recording","window":"\ud800"})", "3: no JSON"},
                    {R"({"type":"recording","start":1e999})", "3: no JSON"},
                    {R"({"type":"recording","start":NaN})", "3: no JSON"},
                    {"\n[]", "4: the line is not an object"},
                    {"7", "3: the line is not an object"},
                    {R"({"type":"event"})", "3: \"type\" is neither"},
                    {R"({"start":1})", "3: \"type\" is neither"},
                    {R"({"type":7})", "3: \"type\" is not a text"},
                    {R"({"type":"recording","strat":1})", "3: \"strat\" is unknown here"},
                    {R"({"type":"recording","start":1,"start":2})", "3: \"start\" stands twice"},
                    {R"({"type":"recording","start":"2026-03-02"})", "3: \"start\" is not a number"},
                    {R"({"type":"recording","start":"1"})", "3: \"start\" is not a number"},
                    {R"({"type":"recording","idle":0})", "3: \"idle\" is not true or false"},
                    {R"({"type":"recording","window":{"a":1}})", "3: \"window\" is an object"},
                    {R"({"type":"recording","window":[]})", "3: \"window\" is a list"},
                    {R"({"type":"recording","window":"base64:a"})", "3: \"window\" promises base64"},
                    {R"({"type":"recording","window":"base64:YQ==\n"})", "3: \"window\" promises base64"},
                    {R"({"type":"recording","application":1})", "3: \"application\" names a number"},
                    {R"({"type":"application","name":"x"})", "3: \"number\" is missing"},
                    {R"({"type":"application","number":0})", "3: \"number\" is not a whole number"},
                    {"{\"type\":\"group\",\"number\":1}\n{\"type\":\"group\",\"number\":1}",
                     "4: \"number\" was given by a line before"}});
}

TEST_F(MalformedInput, CsvIsRefusedAtTheLineWhereTheRowBegins) {
    expectRefusals("input.csv", "",
                   {{"", "1: the file is empty"},
                    {"start,ende\n", "1: there is no column \"ende\" in our exports. Did you mean \"end\"?"},
                    {"start,idle\n", "1: the column \"end\" is missing"},
                    {"start,end,start\n", "1: the column \"start\" stands twice"},
                    {"start,,end\n", "1: there is no column \"\""}});
    expectRefusals(
        "input.csv",
        "start,end,idle,window,application,identifier,group,group_name\r\n1,2,,\"two\nlines\",,,,\n",
        {{"1,2,,,,,\n", "4: the row has 7 fields and the heading 8"},
         {"1,2,,,,,,,\n", "4: the row has 9 fields"},
         {"one,2,,,,,,\n", "4: start \"one\" is not a number of seconds"},
         {"1,2 ,,,,,,\n", "4: end \"2 \" is not a number"},
         {"1,+2,,,,,,\n", "4: end \"+2\" is not a number"},
         {"1,nan,,,,,,\n", "4: end \"nan\" is not a number"},
         {"1,inf,,,,,,\n", "4: end \"inf\" is not a number"},
         {"1,1e400,,,,,,\n", "4: end \"1e400\" is not a number"},
         {"1,0x10,,,,,,\n", "4: end \"0x10\" is not a number"},
         {"1,\"\",,,,,,\n", "4: end \"\" is not a number"},
         {"1,2,yes,,,,,\n", "4: idle \"yes\" is neither true nor false"},
         {"1,2,,a\"b\",,,,\n", "4: a quotation mark stands within a field"},
         {"1,2,,\"a\"b,,,,\n", "4: text follows a closing quotation mark"},
         {"1,2,,\"a\nb\n", "4: a quotation mark is not closed"},
         {"1,2,,a\rb,,,,\n", "4: a carriage return stands alone"},
         {"1,2,,\xC3,,,,\n", "4: the text is not UTF-8"},
         {"1,2,,base64:%,,,,\n", "4: window \"base64:%\" promises base64"},
         {"1,2,,,7,a,,\n1,2,,,7,b,,\n", "5: application \"7\" has other attributes"},
         {"1,2,,,7,a,1,g\n1,2,,,8,b,1,h\n", "5: group \"1\" has other attributes"}});
}

TEST_F(MalformedInput, BucketExportsAreRefusedForTheirStructureOnly) {
    expectRefusals("input.json", "\n",
                   {{"", "2: the file is no JSON"},
                    {"[]", "2: the file is a list"},
                    {"\"buckets\"", "2: the file is not an object"},
                    {"{}", "2: the file has neither"},
                    {"{\"buckets\": []}", "2: \"buckets\" is not an object"},
                    {"{\"buckets\": {\"a\": 1}}", "2: the bucket \"a\" is not an object"},
                    {"{\"buckets\": {\"a\":\n{\"events\": {}}}}", "3: \"events\" is not a list"},
                    {"{\"events\": null}", "2: \"events\" is not a list"},
                    {"{\"buckets\": {}}\n{}", "3: the file is no JSON"},
                    {"{\"events\": [{\"timestamp\": \"2026-03-02T08:00:00Z\",\n\"duration\": 1",
                     "3: the file is no JSON"},
                    {"{\"events\": [{\"data\": {\"title\": \"\xFF\"}}]}", "2: the file is no JSON"}});
}

TEST_F(MalformedInput, LinesThatCannotBeMeantAreNotKeptInMemory) {
    writeBytes(folder_ / "input.jsonl", "{\"type\":\"export\",\"version\":1}\n" + std::string(5 << 20, ' '));
    EXPECT_EQ(refusal(folder_ / "input.jsonl"), "2: the line is too long");
    writeBytes(folder_ / "input.csv", "start,end\n" + std::string(5 << 20, '1'));
    EXPECT_EQ(refusal(folder_ / "input.csv"), "2: a field is too long");
}

}  // namespace
}  // namespace orvane::test
