#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <sstream>

#include "host/replay/replay.h"
#include "host/replay/trace_reader.h"
#include "random_trace.h"

namespace orvane::host {
namespace {

struct Outcome {
    int status = 0;
    std::string output;
    std::string errors;
};

Outcome run(const std::string& trace) {
    std::istringstream input(trace);
    std::ostringstream output;
    std::ostringstream errors;
    const int status = runReplay(input, output, errors);
    return {status, output.str(), errors.str()};
}

std::vector<std::string> linesOf(const std::vector<Json>& trace) {
    std::vector<std::string> result;
    for (const Json& line : trace) result.push_back(line.dump());
    return result;
}

std::string joined(const std::vector<std::string>& lines, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += lines[i] + '\n';
    return text;
}

/// Changes lines at random, as noise on the wire does and as people do who write traces by hand.
class Mutator {
  public:
    explicit Mutator(std::uint32_t seed) : random_(seed) {}

    std::size_t upTo(std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(random_);
    }

    std::string ofBytes(std::string line) {
        for (std::size_t changes = upTo(3); changes <= 3; ++changes) {
            static constexpr std::string_view interesting = "\"{}[]:,\\0-eE.tnf\xff\xc3\x80\x01 ";
            const std::size_t place = upTo(line.size());
            const char byte =
                upTo(1) ? interesting[upTo(interesting.size() - 1)] : static_cast<char>(upTo(255));
            switch (upTo(4)) {
                case 0:
                    line.insert(place, 1, byte);
                    break;
                case 1:
                    if (place < line.size()) line[place] = byte;
                    break;
                case 2:
                    line.erase(std::min(place, line.size()), 1 + upTo(5));
                    break;
                case 3:
                    line.resize(place);
                    break;
                default:
                    line.insert(place, line.substr(line.size() / 2, upTo(20)));
            }
        }
        std::erase(line, '\n');
        return line;
    }

    /// Another value, or another key, somewhere in the line.
    std::string ofValues(const std::string& line) {
        Json json = Json::parse(line);
        Json* place = &json;
        while (!place->empty() && place->is_structured() && upTo(3) > 0) {
            auto member = place->begin();
            std::advance(member, upTo(place->size() - 1));
            place = &*member;
        }
        if (place->is_object() && upTo(1))
            (*place)[upTo(1) ? "at" : "unknown"] = anything();
        else
            *place = anything();
        return json.dump();
    }

  private:
    Json anything() {
        static const Json values[] = {nullptr,
                                      true,
                                      false,
                                      0,
                                      -1,
                                      1.5,
                                      1e300,
                                      -1e18,
                                      18446744073709551615u,
                                      "",
                                      "x",
                                      "\xc3\xa9",
                                      std::string("\0", 1),
                                      Json::array(),
                                      Json::object(),
                                      Json::array({nullptr, 1}),
                                      {{"at", nullptr}}};
        return values[upTo(std::size(values) - 1)];
    }

    std::mt19937 random_;
};

/// Whether the line is valid but would keep a replay busy for ages.
bool lastsTooLong(const std::string& line) {
    const Json json = Json::parse(line, nullptr, false);
    if (!json.is_object() || !json.contains("at") || !json["at"].is_number()) return false;
    return json["at"].get<double>() > 5000;
}

/// A trace with one changed line is either still valid, or ends at that line with one message and with what
/// was printed until then.
void expectAnswerOrError(const std::vector<std::string>& valid, std::size_t place,
                         const std::string& changed) {
    SCOPED_TRACE("line " + std::to_string(place + 1) + ": " + changed);
    std::vector<std::string> lines = valid;
    lines[place] = changed;
    const Outcome outcome = run(joined(lines, lines.size()));
    std::istringstream printed(outcome.output);
    for (std::string line; std::getline(printed, line);) EXPECT_TRUE(Json::accept(line)) << line;
    if (outcome.status == replayCompleted) {
        EXPECT_EQ(outcome.errors, "");
        return;
    }
    ASSERT_EQ(outcome.status, replayInvalid);
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    // A changed line may make a later one invalid: times run backwards, and what edits name is missing.
    const std::size_t number = std::stoul(outcome.errors.substr(outcome.errors.find("line ") + 5));
    ASSERT_GT(number, place);
    ASSERT_LE(number, lines.size());
    if (number > place + 1) return;
    const std::string before = run(joined(lines, place)).output;
    const bool isEdit = outcome.errors.find("there is no ") != std::string::npos;
    EXPECT_EQ(isEdit ? outcome.output.substr(0, before.size()) : outcome.output, before);
}

std::vector<std::string> validTrace() {
    return linesOf(randomTrace(11, {.events = 40,
                                    .clockSteps = true,
                                    .storageFailures = true,
                                    .hostEdits = true,
                                    .longPauses = false,
                                    .lostRecordings = true}));
}

TEST(MutatedTraces, AreReadOrRefusedWithOneLineOfText) {
    const std::vector<std::string> valid = validTrace();
    Mutator mutator(13);
    std::size_t refused = 0;
    constexpr std::size_t rounds = 5000;
    for (std::size_t round = 0; round < rounds; ++round) {
        const std::size_t place = mutator.upTo(valid.size() - 1);
        const std::string changed =
            round % 2 ? mutator.ofBytes(valid[place]) : mutator.ofValues(valid[place]);
        std::istringstream input(place == 0 ? changed : valid.front() + '\n' + changed);
        TraceReader reader(input);
        const auto header = reader.header();
        const auto* failure = std::get_if<TraceFailure>(&header);
        std::variant<TraceLine, TraceEnd, TraceFailure> line;
        if (!failure) failure = std::get_if<TraceFailure>(&(line = reader.next()));
        if (!failure) continue;
        ++refused;
        EXPECT_EQ(failure->line, place == 0 ? 1u : 2u) << changed;
        EXPECT_FALSE(failure->problem.empty()) << changed;
        EXPECT_EQ(failure->problem.find('\n'), std::string::npos) << failure->problem;
    }
    // Neither may be the rule, or the other was hardly tried.
    EXPECT_GT(refused, rounds / 10);
    EXPECT_LT(refused, rounds);
}

TEST(MutatedTraces, EndInAnErrorOrAnAnswer) {
    const std::vector<std::string> valid = validTrace();
    ASSERT_EQ(run(joined(valid, valid.size())).status, replayCompleted);
    Mutator mutator(12);
    for (int round = 0; round < 100; ++round) {
        const std::size_t place = mutator.upTo(valid.size() - 1);
        const std::string changed =
            round % 2 ? mutator.ofBytes(valid[place]) : mutator.ofValues(valid[place]);
        if (!lastsTooLong(changed)) expectAnswerOrError(valid, place, changed);
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace orvane::host
