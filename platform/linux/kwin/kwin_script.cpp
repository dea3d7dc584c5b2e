#include "platform/linux/kwin/kwin_script.h"

#include <glib/gstdio.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "platform/library_resource.h"
#include "platform/linux/compositor_sockets.h"

namespace orvane {

namespace {

constexpr const char* kService = "org.kde.KWin";

/// No constant: a platform that lives until the program ends would outlive it.
BusObject scripting() { return {kService, "/Scripting", "org.kde.kwin.Scripting"}; }

// As the script is told them; a number in a name stands for what a script relies on.
constexpr const char* kPath = "/org/orvane/WindowReports1";
constexpr const char* kInterface = "org.orvane.WindowReports1";

constexpr unsigned kFirstReportMilliseconds = 5000;
constexpr int kUnloadMilliseconds = 250;

/// What KWin answers when it has a script of that name already.
constexpr int kNoScript = -1;

}  // namespace

std::string KWinScript::nameFor(const BusConnection& bus) {
    auto name = "orvane-windows-" + bus.uniqueName();
    std::replace_if(
        name.begin(), name.end(), [](char each) { return each == ':' || each == '.'; }, '-');
    return name;
}

KWinScript::KWinScript(BusConnection& bus)
    : bus_(bus), name_(nameFor(bus)), file_(runtimeFolder() + "/" + name_ + ".js") {}

KWinScript::~KWinScript() {
    removeFile();
    bool isLate = false;
    bus_.callNow(scripting(), "unloadScript", g_variant_new("(s)", name_.c_str()), kUnloadMilliseconds,
                 isLate);
}

void KWinScript::load() {
    if (!writeFile()) {
        firstReportTimer_.start(0, [this] { fail(); });
        return;
    }
    firstReportTimer_.start(kFirstReportMilliseconds, [this] { fail(); });
    object_ = bus_.receive(kPath, kInterface, "Report", [this](const std::string& report) {
        // KWin has read it by now.
        removeFile();
        firstReportTimer_.cancel();
        // Copied: the owner may destroy this object.
        const auto handler = onReport;
        if (handler) handler(report);
    });
    bus_.call(scripting(), "unloadScript", g_variant_new("(s)", name_.c_str()), nullptr);
    bus_.call(scripting(), "loadScript", g_variant_new("(ss)", file_.c_str(), name_.c_str()),
              [this, life = std::weak_ptr(life_)](GVariant* values, GUnixFDList*) {
                  if (life.expired()) return;
                  gint32 script = kNoScript;
                  if (values != nullptr && g_variant_is_of_type(values, G_VARIANT_TYPE("(i)"))) {
                      g_variant_get(values, "(i)", &script);
                  }
                  if (script == kNoScript) {
                      fail();
                  } else {
                      run(script);
                  }
              });
}

void KWinScript::run(int script) {
    // The first is where KWin 5 has its scripts, the second where KWin 6 does.
    for (const auto* folder : {"/", "/Scripting/Script"}) {
        bus_.call({kService, folder + std::to_string(script), "org.kde.kwin.Script"}, "run", nullptr,
                  nullptr);
    }
}

void KWinScript::fail() {
    firstReportTimer_.cancel();
    // Copied: the owner may destroy this object.
    const auto handler = onFailed;
    if (handler) handler();
}

bool KWinScript::writeFile() {
    const auto source = libraryResource("Windows", "kwin-script");
    if (!source || runtimeFolder().empty()) return false;
    std::ifstream stream(*source, std::ios::binary);
    const std::string body(std::istreambuf_iterator<char>(stream), {});
    if (body.empty()) return false;
    const nlohmann::json addressee{
        {"service", bus_.uniqueName()}, {"path", kPath}, {"interface", kInterface}, {"plugin", name_}};
    const auto text = "const ORVANE = " + addressee.dump() + ";\n" + body;
    return g_file_set_contents(file_.c_str(), text.data(), static_cast<gssize>(text.size()), nullptr) != 0;
}

void KWinScript::removeFile() { g_unlink(file_.c_str()); }

}  // namespace orvane
