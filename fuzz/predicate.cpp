// Predicates from outside: those that can be read mean the same to the file as in memory.

#include "foundation/predicate.h"

#include <set>

#include "fuzz/common.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"
#include "store/orvane_recording.h"

namespace {

using namespace orvane;

/// Few objects with values that are hard to tell apart.
class Store {
  public:
    Store() {
        ManagedObjectContext& context = store_.context();
        const auto group = OrvaneGroup::insertInManagedObjectContext(context);
        group->setName("Work");
        std::vector<Ref<OrvaneApp>> apps;
        for (const char* name : {"Editor", "e\u0301diteur", ""}) {
            apps.push_back(OrvaneApp::insertInManagedObjectContext(context));
            apps.back()->setName(name);
            apps.back()->setIdentifier(std::string("org.") + name);
        }
        apps[0]->setGroup(group);
        apps[1]->setDisabled(true);
        constexpr double dates[] = {0, 1, 1.5, 1772438400, -1};
        for (int i = 0; i < 12; ++i) {
            const auto recording = OrvaneRecording::insertInManagedObjectContext(context);
            if (i % 4 != 3) recording->setApplication(apps[static_cast<std::size_t>(i % 3)]);
            if (i % 5 != 4) recording->setStartDate(dateFromSecondsSinceEpoch(dates[i % 5]));
            if (i % 7 != 6) recording->setEndDate(dateFromSecondsSinceEpoch(dates[(i + 1) % 5] + 10));
            if (i % 3 != 2) recording->setWindowName(i % 2 ? "Stra\u00dfe" : "a*b");
            recording->setIdle(i % 2 == 0);
        }
        fuzz::demand(context.save(), "a store in memory can be written");
        objects_ = context.fetch<ManagedObject>({"Recording"});
        for (const auto& app : context.fetch<ManagedObject>({"Application"})) objects_.push_back(app);
    }

    void compare(const Predicate& predicate) {
        for (const char* entity : {"Recording", "Application"}) {
            std::set<std::int64_t> inFile;
            std::set<std::int64_t> inMemory;
            bool fileKnows = true;
            bool memoryKnows = true;
            try {
                for (const auto& object : store_.context().fetch<ManagedObject>({entity, predicate}))
                    inFile.insert(object->objectID().key());
            } catch (const std::logic_error&) {
                fileKnows = false;  // a key that the entity does not have
            }
            try {
                for (const auto& object : objects_)
                    if (object->entity().name == entity && predicate.evaluate(*object))
                        inMemory.insert(object->objectID().key());
            } catch (const std::logic_error&) {
                memoryKnows = false;
            }
            // Memory does not look at a key behind a condition that decides already.
            if (fileKnows && memoryKnows)
                fuzz::demand(inFile == inMemory, "file and memory agree on a predicate");
            fuzz::demand(!fileKnows || memoryKnows, "the file knows no more keys than objects do");
        }
    }

  private:
    fuzz::MemoryStore store_;
    std::vector<Ref<ManagedObject>> objects_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Store store;
    const Value arguments[] = {Value(1), Value("name"), Value(dateFromSecondsSinceEpoch(1.5))};
    const std::string_view text = fuzz::textOf(data, size);
    for (const std::size_t count : {std::size_t{0}, std::size(arguments)}) {
        Error error;
        const auto predicate = Predicate::parse(text, std::span(arguments, count), &error);
        fuzz::demand(predicate || error, "a predicate that cannot be read is told why");
        if (!predicate) continue;
        predicate->description();
        store.compare(*predicate);
    }
    return 0;
}
