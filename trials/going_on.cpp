#include "trials/going_on.h"

#include "store/orvane_app.h"
#include "trials/desk.h"

namespace orvane::trials {

namespace {

constexpr double later = 86400 * 365.;  // seconds; after everything that a trial records
constexpr double polled = 20;           // seconds
constexpr const char* application = "org.example.Editor";

}  // namespace

std::optional<std::string> goOnTracking(const std::filesystem::path& folder, const std::string& fileSystem,
                                        const StoreContents& before) {
    double now = 0;
    {
        Desk desk(folder, fileSystem);
        desk.platform().clock().stepWallTime(VirtualClock::Time(static_cast<std::int64_t>(later * 1e6)));
        now = secondsSinceEpoch(desk.platform().clock().now());
        desk.show(application, "afterwards");
        // An application that was switched off stays so, and then there would be nothing to record.
        OrvaneManagedObjectContext* context = desk.context();
        if (!context) return "the store cannot be opened";
        for (const Ref<OrvaneApp>& app : context->fetch<OrvaneApp>({std::string(OrvaneApp::entityName())}))
            if (app->identifier() == application && app->disabledValue()) app->setDisabled(false);
        context->save();
        desk.tracker().setEnabled(true);
        desk.pass(polled);
        if (!desk.errors().empty())
            return "an error is shown: " + desk.errors().front().localizedDescription();
    }
    const StoreContents after = readStore(folder / "Orvaning.db", fileSystem);
    if (!after.isReadable || after.integrity != "ok") return "the store is damaged once it was written on";
    if (!after.doubledApplications.empty()) return "an application was recorded twice";
    if (after.recordings != before.recordings + 1 || after.lastEnd != now + polled)
        return "tracking does not go on";
    for (const char* kind : {"recording ", "group "})
        if (!holdsLines(after.text, before.text, kind)) return "what was there before is gone";
    return std::nullopt;
}

}  // namespace orvane::trials
