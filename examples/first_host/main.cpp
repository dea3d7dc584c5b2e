// Keeps applications and their recordings in a store of its own: run "first_host FOLDER write" first, then
// "first_host FOLDER read".
#include <orvane/orvane.h>
#include <iostream>

using namespace orvane;

static void record(ManagedObjectContext& context, const Ref<OrvaneApp>& app, double start, double seconds) {
    const auto recording = OrvaneRecording::insertInManagedObjectContext(context);
    recording->setStartDate(dateFromSecondsSinceEpoch(start));
    recording->setEndDate(dateFromSecondsSinceEpoch(start + seconds));
    recording->setApplication(app);  // the application's recordings, and all that depends on them, follow
}

static bool write(ManagedObjectContext& context) {
    const auto app = OrvaneApp::insertInManagedObjectContext(context);
    app->setName("Editor");
    app->setGroup(OrvaneGroup::insertInManagedObjectContext(context));
    app->group()->setName("Writing");

    const auto token = observe(*app, "duration", [](const Change& change) {
        std::cout << "duration " << decimalText(*change.newValue.asDecimal()) << "\n";
    });
    const double nineOClock = 1772442000;  // on 2 March 2026, UTC
    record(context, app, nineOClock - 1800, 1500);
    record(context, app, nineOClock, 600.5);

    context.processPendingChanges();  // what follows is a step of its own for undo
    app->setName("Somebody else's");
    context.undoManager()->undo();

    Error error;
    if (!context.save(&error)) std::cerr << error.localizedDescription() << "\n";
    return !error;
}

static void read(ManagedObjectContext& context) {
    const auto used = Predicate::withFormat("name BEGINSWITH %@ AND disabled != TRUE", {"Ed"});
    for (const auto& app : context.fetch<OrvaneApp>({"Application", used}))
        std::cout << app->group()->name().value_or("") << ": " << app->name().value_or("") << ", "
                  << decimalText(app->duration()) << " s, last used "
                  << description(app->lastUsedDate().value()) << "\n";
}

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    StoreStack stack;
    stack.setUrl(argv[1]);
    ManagedObjectContext* context = stack.managedObjectContext();
    if (!context) return 1;  // why was shown already
    if (argv[2] == std::string_view("write")) return write(*context) ? 0 : 1;
    read(*context);
    return 0;
}
