#include "util/unique_strings.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "util/text_encoding.h"

namespace orvane {
namespace {

class CountingSource : public UuidSource {
  public:
    std::array<std::uint8_t, 16> next() override {
        auto uuid = first;
        uuid[15] = static_cast<std::uint8_t>(uuid[15] + count++);
        return uuid;
    }

    static constexpr std::array<std::uint8_t, 16> first = {0xFB, 0xEF, 0xBE, 0xFF, 0xFF, 0xFF, 0x06, 0x07,
                                                           0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x10};
    int count = 0;
};

TEST(UniqueStrings, writeTheSourcesBytes) {
    CountingSource source;
    EXPECT_EQ(uniqueString(source), u"FBEFBEFF-FFFF-0607-0809-0A0B0C0D0E10");
    source.count = 0;
    EXPECT_EQ(uniqueBase64String(source), u"----____BgcICQoLDA0OEA");
    setUuidSource(&source);
    EXPECT_EQ(uniqueString(), u"FBEFBEFF-FFFF-0607-0809-0A0B0C0D0E11");
    EXPECT_EQ(uniqueBase64String(), u"----____BgcICQoLDA0OEg");
    setUuidSource(nullptr);
    EXPECT_NE(uniqueString().substr(0, 8), u"FBEFBEFF");
    EXPECT_EQ(source.count, 3);
}

TEST(UniqueStrings, randomOnesAreVersion4AndDiffer) {
    std::set<std::u16string> seen;
    for (int round = 0; round < 2000; ++round) {
        const std::u16string text = uniqueString();
        ASSERT_EQ(text.size(), 36U);
        for (const std::size_t hyphen : {8, 13, 18, 23}) ASSERT_EQ(text[hyphen], u'-');
        ASSERT_EQ(text[14], u'4');
        ASSERT_NE(std::u16string_view(u"89AB").find(text[19]), std::u16string_view::npos);
        ASSERT_EQ(text.find_first_not_of(u"0123456789ABCDEF-"), text.npos) << utf8(text);
        ASSERT_TRUE(seen.insert(text).second);
        ASSERT_EQ(uniqueBase64String().size(), 22U);
    }
}

TEST(UniqueStrings, callsToTheSourceNeverOverlap) {
    CountingSource source;  // counts without a lock of its own
    setUuidSource(&source);
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index)
        threads.emplace_back([] {
            for (int round = 0; round < 5000; ++round) uniqueString();
        });
    for (auto& thread : threads) thread.join();
    setUuidSource(nullptr);
    EXPECT_EQ(source.count, 20000);
}

}  // namespace
}  // namespace orvane
