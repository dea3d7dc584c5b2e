#include "simulated_desktop.h"

#include <gio/gunixinputstream.h>
#include <unistd.h>

#include <iostream>

using namespace orvane;

static Image iconOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    Image icon{32, 32, {}};
    for (int i = 0; i < icon.width * icon.height; ++i)
        icon.pixels.insert(icon.pixels.end(), {red, green, blue, 255});
    return icon;
}

static SimulatedApplication installed(const std::string& name, const Image& icon) {
    return {"/apps/" + name, "/apps/" + name, name, icon};
}

SimulatedDesktop::SimulatedDesktop(const std::filesystem::path& folder)
    : platform_(std::make_shared<SimulatedPlatform>()) {
    platform_->clock().setWallTime(std::chrono::seconds(1772442000));
    platform_->fileManager().setApplicationSupportDirectory(folder);
    platform_->workspace().setApplications(
        {{"org.example.Editor", installed("Editor", iconOf(56, 132, 244))},
         {"org.example.Browser", installed("Web Browser", iconOf(240, 128, 48))},
         {"org.example.Mail", installed("Mail", iconOf(32, 176, 190))},
         {"org.example.Music", installed("Music", iconOf(200, 72, 160))}});
    platform_->hostApplication().setErrorHandler(
        [](const Error& error) { std::cerr << error.localizedDescription() << "\n"; });
    platform_->userDefaults().setObject(true, orvaneEnabledDefault);
    Platform::install(platform_);
}

SimulatedDesktop::~SimulatedDesktop() {
    g_clear_object(&input_);
    Platform::install(nullptr);
}

void SimulatedDesktop::follow(GApplication* application, Orvane& tracker) {
    application_ = application;
    tracker_ = &tracker;
    GInputStream* input = g_unix_input_stream_new(STDIN_FILENO, FALSE);
    input_ = g_data_input_stream_new(input);
    g_object_unref(input);
    readNext();
}

void SimulatedDesktop::readNext() {
    const auto arrived = +[](GObject* input, GAsyncResult* result, gpointer self) {
        char* line =
            g_data_input_stream_read_line_finish(G_DATA_INPUT_STREAM(input), result, nullptr, nullptr);
        auto* desktop = static_cast<SimulatedDesktop*>(self);
        if (!line) return g_application_quit(desktop->application_);
        desktop->run(line);
        g_free(line);
        desktop->readNext();
    };
    g_data_input_stream_read_line_async(input_, G_PRIORITY_DEFAULT_IDLE, nullptr, arrived, this);
}

void SimulatedDesktop::run(const std::string& line) {
    char** parts = g_strsplit(line.c_str(), "\t", 0);
    const bool isWhole = g_strv_length(parts) == 4;
    if (isWhole && parts[0] == std::string("use"))
        use(parts[1], parts[2], g_ascii_strtod(parts[3], nullptr));
    else if (isWhole && parts[0] == std::string("group"))
        group(parts[1], parts[2], parts[3]);
    else
        std::cerr << "not understood: " << line << "\n";
    g_strfreev(parts);
}

void SimulatedDesktop::use(const std::string& identifier, const std::string& title, double seconds) {
    constexpr std::int64_t process = 100;
    const auto known = platform_->workspace().applications().find(identifier);
    const std::string name =
        known == platform_->workspace().applications().end() ? identifier : *known->second.bundleName;
    platform_->workspace().setFrontmostApplication(RunningApplication{identifier, process});
    platform_->windowServer().setWindows({Dictionary{{kCGWindowOwnerPID, process},
                                                     {kCGWindowLayer, 0},
                                                     {kCGWindowName, title},
                                                     {kCGWindowOwnerName, name}}});
    platform_->windowServer().noteInput();
    platform_->workspace().notificationCenter().post(NSWorkspaceDidActivateApplicationNotification);
    const auto end = platform_->clock().time() +
                     std::chrono::duration_cast<VirtualClock::Time>(std::chrono::duration<double>(seconds));
    while (platform_->clock().time() < end) {
        platform_->windowServer().noteInput();
        platform_->runLoop().advanceTo(
            std::min<VirtualClock::Time>(end, platform_->clock().time() + std::chrono::seconds(10)));
    }
}

void SimulatedDesktop::group(const std::string& name, const std::string& color,
                             const std::string& identifier) {
    ManagedObjectContext* context = tracker_->managedObjectContext();
    if (!context) return;
    const auto group = OrvaneGroup::insertInManagedObjectContext(*context);
    group->setName(name);
    group->setColor(color);
    for (const auto& app :
         context->fetch<OrvaneApp>({"Application", Predicate::withFormat("identifier == %@", {identifier})}))
        app->setGroup(group);
    Error error;
    if (!context->save(&error)) std::cerr << error.localizedDescription() << "\n";
}
