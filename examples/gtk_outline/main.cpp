// Shows today's use as an outline in a GTK 4 window, and goes on recording while it is open. Tracking has to
// be switched on (user default "OrvaneEnabled"). With --simulated the window looks at a desktop of its own
// instead: see simulated_desktop.h.
#include <gtk/gtk.h>
#include <orvane/orvane.h>

#include <memory>

#include "outline_window.h"
#include "simulated_desktop.h"

using namespace orvane;

static char* simulatedFolder = nullptr;
static gboolean printsRows = FALSE;

int main(int argc, char** argv) {
    const GOptionEntry options[] = {
        {"simulated", 0, G_OPTION_FLAG_NONE, G_OPTION_ARG_FILENAME, &simulatedFolder,
         "Follow lines on standard input instead of the desktop; keep the store below DIR", "DIR"},
        {"print", 0, G_OPTION_FLAG_NONE, G_OPTION_ARG_NONE, &printsRows, "Print the rows that are shown",
         nullptr},
        {}};
    std::unique_ptr<SimulatedDesktop> desktop;
    std::unique_ptr<OutlineWindow> window;
    const auto open = [&](GApplication* application) {
        if (window) return;
        if (simulatedFolder) desktop = std::make_unique<SimulatedDesktop>(simulatedFolder);
        Orvane& tracker = Orvane::sharedOrvane();
        window = std::make_unique<OutlineWindow>(GTK_APPLICATION(application), tracker, printsRows);
        if (desktop) desktop->follow(application, tracker);
    };
    const auto activated = +[](GApplication* application, gpointer open_) {
        (*static_cast<decltype(open)*>(open_))(application);
    };

    // Each start has a window of its own: there need be no bus.
    GtkApplication* application = gtk_application_new("org.example.Outline", G_APPLICATION_NON_UNIQUE);
    g_application_add_main_option_entries(G_APPLICATION(application), options);
    g_signal_connect(application, "activate", G_CALLBACK(activated),
                     const_cast<void*>(static_cast<const void*>(&open)));
    const int status = g_application_run(G_APPLICATION(application), argc, argv);

    if (window) {
        // The host tells the tracker that it ends: what is being recorded ends here.
        Platform& platform = Platform::current();
        platform.defaultNotificationCenter().post(NSApplicationWillTerminateNotification,
                                                  &platform.hostApplication());
    }
    window.reset();
    Orvane::resetShared();
    desktop.reset();
    g_object_unref(application);
    return status;
}
