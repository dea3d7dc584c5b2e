// The program's system calls, watched by strace: no socket but to the display and the buses of this machine.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>

#include "tests/host/program.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

class NoNetwork : public testing::Test {
  protected:
    void SetUp() override {
        if (runShell("command -v strace >/dev/null && strace -f -o /dev/null true", "").status != 0)
            GTEST_SKIP() << "strace is not installed, or may not trace";
    }

    /// Runs a line of shell in which `watched` runs the program under strace, where no search for leaks can
    /// work.
    ProgramRun run(const std::string& line) {
        return runShell(R"(program=$0; folder=$1
                           watched() { ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0 \
                               strace -f -qq -e trace=%network -s 200 -A -o "$folder/calls" sh -c \
                               'echo $$ >"$0"; exec "$@"' "$folder/process" "$program" "$@"; }
                           )" +
                            line,
                        folder_.path());
    }
    std::vector<std::string> calls() const {
        std::ifstream file(folder_ / "calls");
        std::vector<std::string> result;
        for (std::string line; std::getline(file, line);) result.push_back(line);
        return result;
    }
    /// Holds every call to what is allowed, and returns where connections led.
    std::set<std::string> expectLocal() {
        std::set<std::string> targets;
        const std::regex connection(R"re(connect\(\d+, \{sa_family=AF_UNIX, sun_path=@?"([^"]*)")re");
        for (const std::string& call : calls()) {
            const auto has = [&](const char* text) { return call.find(text) != std::string::npos; };
            EXPECT_TRUE(!has(" socket(") || has(" socket(AF_UNIX, ")) << call;
            EXPECT_TRUE(!has(" socketpair(") || has(" socketpair(AF_UNIX, ")) << call;
            EXPECT_FALSE(has(" listen(") || has(" bind(") || has(" accept") || has("AF_INET")) << call;
            std::smatch match;
            if (!has(" connect(")) continue;
            if (std::regex_search(call, match, connection))
                targets.insert(match[1]);
            else
                ADD_FAILURE() << call;
        }
        return targets;
    }

    TemporaryFolder folder_;
};

TEST_F(NoNetwork, CommandsThatReadAndWriteConnectToNothing) {
    writeBytes(folder_ / "in.jsonl", R"({"type":"export","version":1}
{"type":"application","number":1,"identifier":"org.a","name":"A"}
{"type":"recording","application":1,"start":1700000000,"end":1700000010,"window":"http://example.org/"}
)");
    const ProgramRun commands =
        run(R"(cd "$folder" && watched import in.jsonl --store s && watched report all --store s &&
        watched report 2023-11-14 --html page.html --store s && watched presence 2023-11-14 --store s && watched apps --store s &&
        watched groups add G --store s && watched export --output out.csv --store s && watched check --store s &&
        watched recover s/Orvaning.db r.db && watched privacy add --private-windows && watched enable &&
        watched forget all --yes --store s)");
    EXPECT_EQ(commands.status, 0) << commands.errors;
    EXPECT_EQ(expectLocal(), std::set<std::string>());
}

TEST_F(NoNetwork, TrackingConnectsToTheDisplayAndTheBuses) {
    if (runShell("command -v Xvfb xdpyinfo dbus-daemon >/dev/null", "").status != 0)
        GTEST_SKIP() << "there is no virtual display to track";
    const ProgramRun tracking = run(R"(
        mkfifo "$folder/display" "$folder/bus"
        Xvfb -displayfd 3 -screen 0 640x480x24 -nolisten tcp 3>"$folder/display" 2>/dev/null & server=$!
        dbus-daemon --session --nofork --print-address=3 3>"$folder/bus" 2>/dev/null & bus=$!
        trap 'kill $server $bus' EXIT
        read -r number <"$folder/display"; read -r address <"$folder/bus"
        export DISPLAY=:$number DBUS_SESSION_BUS_ADDRESS=$address DBUS_SYSTEM_BUS_ADDRESS=$address
        watched track --json --store "$folder/s" >"$folder/lines" & tracker=$!
        for i in $(seq 600); do [ -s "$folder/lines" ] && break; sleep 0.1; done
        "$program" apps --store "$folder/s" >/dev/null
        read -r child <"$folder/process"
        kill -INT "$child"; wait $tracker)");
    EXPECT_EQ(tracking.status, 0) << tracking.errors;
    const std::set<std::string> targets = expectLocal();
    EXPECT_FALSE(targets.empty());
    for (const std::string& target : targets)
        EXPECT_TRUE(target.find("/.X11-unix/X") != std::string::npos ||
                    target.find("dbus-") != std::string::npos || target == "/run/systemd/journal/socket")
            << target;
}

}  // namespace
}  // namespace orvane::test
