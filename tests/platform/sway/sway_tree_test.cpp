#include "platform/linux/sway/sway_tree.h"

#include <gtest/gtest.h>

#include <string>

namespace orvane {
namespace {

std::string view(int number, const std::string& facts) {
    return R"({"type":"con","nodes":[],"floating_nodes":[],"focus":[],"id":)" + std::to_string(number) + "," +
           facts + "}";
}

std::string workspace(const std::string& nodes, const std::string& floating, const std::string& focus,
                      const std::string& facts = R"("focused":false)") {
    return R"({"type":"root","id":1,"nodes":[{"type":"output","id":2,"nodes":[{"type":"workspace","id":3,)" +
           facts + R"(,"nodes":[)" + nodes + R"(],"floating_nodes":[)" + floating + R"(],"focus":[)" + focus +
           R"(]}],"floating_nodes":[],"focus":[3]}],"floating_nodes":[],"focus":[2]})";
}

std::string textOf(const DesktopWindow& window) {
    return std::to_string(window.number) + '/' + std::to_string(window.processIdentifier) + '/' +
           window.title.value_or("-") + '/' + window.windowClass + '/' + window.windowInstance;
}

/// "number/process/title/class/instance" of each window; the one with the focus is marked.
std::string read(const std::string& json) {
    const auto tree = SwayTree::parse(json);
    if (!tree) return "no tree";
    std::string result;
    for (const auto& window : tree->windows) {
        result += (result.empty() ? "" : " ") + textOf(window);
        if (tree->focused && tree->focused->number == window.number) result += '*';
    }
    return result;
}

TEST(SwayTree, ListsVisibleWindowsByTheirLastFocus) {
    const auto native = view(10, R"("pid":100,"name":"One","app_id":"foot","visible":true,"focused":false)");
    const auto x11 = view(11, R"("pid":101,"name":"Two","app_id":null,"visible":true,"focused":true,)"
                              R"("window_properties":{"class":"XTerm","instance":"xterm","title":"Two"})");
    const auto untitled = view(12, R"("pid":102,"name":null,"app_id":"mpv","visible":true,"focused":false)");
    const auto hidden =
        view(13, R"("pid":103,"name":"Away","app_id":"foot","visible":false,"focused":false)");
    EXPECT_EQ(read(workspace(native + "," + untitled + "," + hidden, x11, "11,13,12,10")),
              "11/101/Two/XTerm/xterm* 12/102/-/mpv/ 10/100/One/foot/");
    // Nested containers keep their own order; one that the order leaves out comes last.
    const auto split = R"({"type":"con","id":20,"focus":[12,11],"floating_nodes":[],"nodes":[)" + x11 + "," +
                       untitled + "]}";
    EXPECT_EQ(read(workspace(native + "," + split, "", "20")),
              "12/102/-/mpv/ 11/101/Two/XTerm/xterm* 10/100/One/foot/");
}

TEST(SwayTree, AnEmptyWorkspaceOrAWholeContainerIsNoWindow) {
    EXPECT_EQ(read(workspace("", "", "", R"("focused":true)")), "");
    EXPECT_FALSE(SwayTree::parse(workspace("", "", "", R"("focused":true)"))->focused);
    const auto inner = view(10, R"("pid":100,"name":"One","app_id":"foot","visible":true,"focused":false)");
    const auto split =
        R"({"type":"con","id":20,"focused":true,"focus":[10],"floating_nodes":[],"nodes":[)" + inner + "]}";
    EXPECT_EQ(read(workspace(split, "", "20")), "10/100/One/foot/");
}

TEST(SwayTree, WhateverItIsGivenMakesSenseOrIsPassedOver) {
    for (const char* text : {"", "{", "[]", "null", "{}", R"({"type":"con"})", R"({"type":7})", "\xff\xfe"}) {
        EXPECT_EQ(read(text), "no tree") << text;
    }
    for (const char* text :
         {R"({"type":"root","nodes":7,"focus":{}})", R"({"type":"root","nodes":[7,null,"x",[]]})",
          R"({"type":"root","nodes":[{"id":1.5,"pid":"5","visible":true}]})",
          R"({"type":"root","nodes":[{"id":5,"pid":-5,"visible":true}]})",
          R"({"type":"root","nodes":[{"id":5,"pid":99999999999,"visible":true}]})"}) {
        EXPECT_EQ(read(text), "") << text;
    }
    // A title in another encoding spoils nothing but itself.
    EXPECT_EQ(read(workspace(
                  view(10, "\"pid\":100,\"name\":\"caf\xe9\",\"app_id\":\"foot\",\"visible\":true"), "", "")),
              "10/100/caf\xEF\xBF\xBD/foot/");
    std::string deep;
    for (int i = 0; i < 20000; ++i) deep += R"({"type":"root","nodes":[)";
    EXPECT_EQ(read(deep), "no tree");
    for (int i = 0; i < 20000; ++i) deep += "]}";
    EXPECT_EQ(read(deep), "");
}

TEST(SwayTree, OnlySomeEventsCanMoveTheFocus) {
    EXPECT_FALSE(canChangeSwayFocus(R"({"change":"title","container":{}})"));
    for (const char* text : {R"({"change":"focus"})", R"({"change":"close"})", R"({"change":"empty"})",
                             R"({"change":"from a newer sway"})", "{}", "no JSON"}) {
        EXPECT_TRUE(canChangeSwayFocus(text)) << text;
    }
}

}  // namespace
}  // namespace orvane
