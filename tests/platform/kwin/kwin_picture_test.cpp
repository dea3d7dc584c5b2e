#include "platform/linux/kwin/kwin_picture.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(KwinPictureTest, WindowsKeepTheirNumbers) {
    KwinPictureReader reader;
    const auto first = reader.read(
        R"([{"id": "{b}", "pid": 12, "class": "org.example.Notes", "title": "Grüße", "layer": 0, "active": true,
             "shown": true}, {"id": "{a}", "layer": 20.0, "shown": true}, {"id": "{c}", "shown": false}])");
    ASSERT_TRUE(first && first->active);
    ASSERT_EQ(first->windows.size(), 2U);
    const auto& active = first->windows.front();
    EXPECT_EQ(active.number, first->active->number);
    EXPECT_EQ(active.processIdentifier, 12);
    EXPECT_EQ(active.title, "Grüße");
    EXPECT_EQ(active.windowClass, "org.example.Notes");
    EXPECT_EQ(first->windows.back().layer, WindowLayer::dock);
    EXPECT_EQ(first->windows.back().title, std::nullopt);

    const auto second = reader.read(R"([{"id": "{a}", "shown": true}, {"id": "{d}", "shown": true}])");
    ASSERT_EQ(second->windows.size(), 2U);
    EXPECT_FALSE(second->active);
    EXPECT_EQ(second->windows.front().number, first->windows.back().number);
    EXPECT_GT(second->windows.back().number, active.number);
    EXPECT_GT(second->windows.back().number, first->windows.back().number);
}

TEST(KwinPictureTest, WhatIsWrongIsPassedOver) {
    KwinPictureReader reader;
    for (const char* other : {"", "[", "{}", "null", "\xff", "[\"\xff\"]"})
        EXPECT_FALSE(reader.read(other)) << other;
    const auto picture = reader.read(
        R"([7, null, {}, {"id": 3}, {"id": ""}, {"id": "a", "pid": 1e300, "title": 8, "layer": "top", "shown": 1},
            {"id": "b", "pid": -5, "class": [], "shown": true}, {"id": "b", "title": "again", "shown": true}])");
    ASSERT_TRUE(picture);
    ASSERT_EQ(picture->windows.size(), 1U);
    EXPECT_EQ(picture->windows.front().processIdentifier, 0);
    EXPECT_EQ(picture->windows.front().title, std::nullopt);
}

}  // namespace
}  // namespace orvane
