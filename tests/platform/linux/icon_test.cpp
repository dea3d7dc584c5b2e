#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>

#include <array>

#include "desktop_fixture.h"
#include "platform/linux/icon_image.h"
#include "platform/linux/icon_theme.h"
#include "platform/linux/icon_theme_name.h"
#include "tests/platform/main_loop_wait.h"
#include "tests/platform/session/private_bus.h"

namespace orvane::testing {
namespace {

namespace fs = std::filesystem;

void writePng(const fs::path& file, int width, int height, guint32 color) {
    fs::create_directories(file.parent_path());
    GdkPixbuf* image = gdk_pixbuf_new(GDK_COLORSPACE_RGB, (color & 0xFF) != 0xFF, 8, width, height);
    gdk_pixbuf_fill(image, color);
    ASSERT_TRUE(gdk_pixbuf_save(image, file.c_str(), "png", nullptr, nullptr));
    g_object_unref(image);
}

std::array<int, 4> pixel(const Image& image, int x, int y) {
    const auto* at = &image.pixels.at(4 * static_cast<std::size_t>(y * image.width + x));
    return {at[0], at[1], at[2], at[3]};
}

class IconTest : public ::testing::Test {
  protected:
    void SetUp() override {
        writeFile(high_ / "Test/index.theme",
                  "[Icon Theme]\nName=Test\nInherits=hicolor,Base\nDirectories=16/apps, 48/apps,any\n"
                  "ScaledDirectories=16@2/apps\n[16/apps]\nSize=16\n[48/apps]\nSize=48\nType=Fixed\n"
                  "[any]\nSize=64\nType=Scalable\nMinSize=100\nMaxSize=300\n[16@2/apps]\nSize=16\nScale=2\n");
        writeFile(low_ / "Base/index.theme",
                  "[Icon Theme]\nName=Base\nInherits=Test\nDirectories=32\n[32]\nSize=32\nType=Fixed\n");
        writeFile(low_ / "hicolor/index.theme",
                  "[Icon Theme]\nName=Hicolor\nDirectories=48\n[48]\nSize=48\n");
    }
    fs::path add(const fs::path& file) {
        writeFile(file, "");
        return file;
    }
    std::optional<fs::path> lookUp(std::string_view icon, int size = 32, int scale = 1) {
        return IconTheme("Test", {high_, low_}).lookUp(icon, size, scale);
    }

    fs::path high_ = freshFolder("icons-high");
    fs::path low_ = freshFolder("icons-low");
};

TEST_F(IconTest, PrefersTheExactSizeThenTheNearest) {
    const auto small = add(high_ / "Test/16/apps/a.png");
    const auto large = add(low_ / "Test/48/apps/a.svg");  // another folder of the same theme
    const auto scaled = add(high_ / "Test/16@2/apps/a.png");
    const auto huge = add(high_ / "Test/any/a.xpm");
    EXPECT_EQ(lookUp("a", 16), small);
    EXPECT_EQ(lookUp("a", 18), small) << "within the usual threshold";
    EXPECT_EQ(lookUp("a", 48), large);
    EXPECT_EQ(lookUp("a", 16, 2), scaled);
    EXPECT_EQ(lookUp("a", 45), large);
    EXPECT_EQ(lookUp("a", 250), huge);
    EXPECT_EQ(lookUp("a", 900), huge);
}

TEST_F(IconTest, GoesFromThemeToThemeAndToPlainFiles) {
    const auto inherited = add(low_ / "Base/32/b.png");
    add(low_ / "hicolor/48/b.png");
    const auto common = add(low_ / "hicolor/48/c.png");
    add(low_ / "c.png");
    const auto plain = add(low_ / "d.xpm");
    const auto dotted = add(low_ / "hicolor/48/org.example.App.png");
    const auto ending = add(low_ / "hicolor/48/e.png");
    EXPECT_EQ(lookUp("b"), inherited) << "hicolor comes last wherever a theme names it";
    EXPECT_EQ(lookUp("c"), common);
    EXPECT_EQ(lookUp("d"), plain);
    EXPECT_EQ(lookUp("org.example.App"), dotted);
    EXPECT_EQ(lookUp("org.example"), std::nullopt);
    EXPECT_EQ(lookUp("e.png"), ending);
    EXPECT_EQ(lookUp(plain.string()), plain);
    EXPECT_EQ(lookUp("/absent.png"), std::nullopt);
    EXPECT_EQ(lookUp("../icons-low/d"), std::nullopt);
    EXPECT_EQ(IconTheme("NoSuchTheme", {high_, low_}).lookUp("c", 32), common);
}

TEST_F(IconTest, DrawsIntoASquare) {
    writePng(high_ / "wide.png", 64, 32, 0xFF0000FF);
    const Image wide = drawImageFile(high_ / "wide.png", 32);
    ASSERT_EQ(wide.pixels.size(), 32U * 32U * 4U);
    const std::array<int, 4> red{255, 0, 0, 255};
    const std::array<int, 4> nothing{0, 0, 0, 0};
    EXPECT_EQ(pixel(wide, 0, 7), nothing);
    EXPECT_EQ(pixel(wide, 0, 8), red);
    EXPECT_EQ(pixel(wide, 31, 23), red);
    EXPECT_EQ(pixel(wide, 31, 24), nothing);

    writePng(low_ / "hicolor/48/entry.png", 8, 16, 0x0000FF80);
    installEntry("icon-entry", "Icon=entry\nExec=editor\n");
    const fs::path entry = fixtureRoot() / "data/applications/icon-entry.desktop";
    const Image tall = fileIcon(entry, IconTheme("Test", {high_, low_}));
    ASSERT_EQ(tall.width, 32);
    EXPECT_EQ(pixel(tall, 7, 16), nothing);
    EXPECT_EQ(pixel(tall, 16, 0), (std::array<int, 4>{0, 0, 255, 128})) << "colours stay as they are";

    writeFile(high_ / "broken.png", "no image");
    EXPECT_TRUE(drawImageFile(high_ / "broken.png", 32).pixels.empty());
    EXPECT_TRUE(fileIcon("/absent", IconTheme("Test", {high_, low_})).pixels.empty());
}

TEST_F(IconTest, ThemeSettingIsReadWithoutTyingTheHostToTheBus) {
    char* compiler = g_find_program_in_path("glib-compile-schemas");
    if (compiler == nullptr) GTEST_SKIP() << "left out: glib-compile-schemas is not installed";
    const std::string compile = compiler;
    g_free(compiler);
    const auto schemas = freshFolder("schemas");
    writeFile(schemas / "interface.gschema.xml",
              "<schemalist><schema id='org.gnome.desktop.interface' path='/org/gnome/desktop/interface/'>"
              "<key name='icon-theme' type='s'><default>'Chosen'</default></key></schema></schemalist>");
    ASSERT_TRUE(ChildProcess::run({compile, schemas.string()}));
    PrivateBus bus;
    bus.start();
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
    setenv("GSETTINGS_SCHEMA_DIR", schemas.c_str(), 1);
    setenv("XDG_CURRENT_DESKTOP", "GNOME", 1);
    // The program that reads it is given up after a second, which is not long on a busy machine.
    EXPECT_TRUE(waitUntil([] { return currentIconThemeName() == "Chosen"; }, 60));

    // Who had GSettings' connection to it would be ended now.
    GDBusConnection* own = bus.connect();
    g_dbus_connection_set_exit_on_close(own, FALSE);
    bus.kill();
    EXPECT_TRUE(runUntil([own] { return g_dbus_connection_is_closed(own) != 0; }));
    g_object_unref(own);
    // GIO knows the type from its first use on.
    EXPECT_EQ(g_type_from_name("GSettings"), 0U);
    unsetenv("GSETTINGS_SCHEMA_DIR");
    unsetenv("XDG_CURRENT_DESKTOP");
    EXPECT_EQ(currentIconThemeName(), "Adwaita");
}

}  // namespace
}  // namespace orvane::testing
