#include "platform/linux/gnome/gnome_picture.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/linux/session/bus_connection.h"

namespace orvane {
namespace {

std::optional<GnomePicture> parse(const char* text) {
    GError* error = nullptr;
    const Variant values(g_variant_parse(nullptr, text, nullptr, nullptr, &error));
    EXPECT_EQ(error, nullptr) << (error != nullptr ? error->message : "");
    return GnomePicture::parse(values.get());
}

TEST(GnomePictureTest, WindowsFrontToBack) {
    const auto picture = parse(
        "(uint64 7, [{'number': <uint64 9>, 'layer': <24>},"
        "{'number': <uint64 7>, 'process': <12>, 'layer': <0>, 'title': <'Grüße'>, 'class': <'Class'>,"
        " 'instance': <'instance'>, 'gtk-application-id': <'org.example.Notes'>, 'news': <true>}])");
    ASSERT_TRUE(picture && picture->active);
    ASSERT_EQ(picture->windows.size(), 2U);
    const auto& menu = picture->windows.front();
    EXPECT_EQ(menu.number, 9);
    EXPECT_EQ(menu.layer, 24);
    EXPECT_EQ(menu.processIdentifier, 0);
    EXPECT_EQ(menu.title, std::nullopt);
    const auto& active = *picture->active;
    EXPECT_EQ(active.number, 7);
    EXPECT_EQ(active.processIdentifier, 12);
    EXPECT_EQ(active.title, "Grüße");
    EXPECT_EQ(active.windowClass + ' ' + active.windowInstance, "Class instance");
    EXPECT_EQ(active.gtkApplicationId, "org.example.Notes");
}

TEST(GnomePictureTest, WhatIsWrongIsPassedOver) {
    EXPECT_FALSE(GnomePicture::parse(nullptr));
    for (const char* other : {"(uint64 7,)", "(int64 7, @aa{sv} [])", "(uint64 7, @as [])", "@aa{sv} []"}) {
        EXPECT_FALSE(parse(other)) << other;
    }
    const auto picture = parse(
        "(uint64 3, [{'title': <'no number'>}, {'number': <int32 3>}, {'number': <uint64 0>},"
        "{'number': <uint64 18446744073709551615>},"
        "{'number': <uint64 4>, 'process': <-1>, 'title': <8>, 'layer': <'top'>},"
        "{'number': <uint64 4>, 'title': <'again'>}])");
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->active);
    ASSERT_EQ(picture->windows.size(), 1U);
    EXPECT_EQ(picture->windows.front().processIdentifier, 0);
    EXPECT_EQ(picture->windows.front().title, std::nullopt);
}

}  // namespace
}  // namespace orvane
