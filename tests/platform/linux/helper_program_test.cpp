#include "platform/linux/helper_program.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/wait.h>

namespace orvane::testing {
namespace {

constexpr std::chrono::seconds ample(30);

TEST(HelperPrograms, TellWhatTheyWrite) {
    const auto output = outputOfProgram({"/bin/sh", "-c", "printf 'a\\0b'; printf 'c' >&2"}, 3, ample);
    ASSERT_TRUE(output);
    EXPECT_EQ(*output, (std::vector<std::uint8_t>{'a', 0, 'b'}));
    EXPECT_EQ(outputOfProgram({"/bin/cat"}, 3, ample), std::vector<std::uint8_t>()) << "their input is empty";
}

TEST(HelperPrograms, AreEndedWhenTheyWriteTooMuchOrTakeTooLong) {
    EXPECT_FALSE(outputOfProgram({"/bin/sh", "-c", "while :; do echo more; done"}, 100, ample));
    EXPECT_FALSE(outputOfProgram({"/bin/sleep", "1000"}, 100, std::chrono::milliseconds(0)));
    EXPECT_FALSE(outputOfProgram({"/no/such/program"}, 100, ample));
    // None is left behind.
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(HelperPrograms, LieWithTheLibrary) {
    EXPECT_TRUE(helperProgram("orvane-draw-icon"));
    EXPECT_FALSE(helperProgram("orvane-no-such-program"));
}

}  // namespace
}  // namespace orvane::testing
