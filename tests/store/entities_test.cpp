#include <set>

#include "foundation/observing.h"
#include "store/orvane_app_keys.h"
#include "store/orvane_group_keys.h"
#include "store/orvane_recording_keys.h"
#include "tests/store/store_fixture.h"

namespace orvane {
namespace {

using namespace std::chrono_literals;

constexpr double noon = 1772452800;  // 2026-03-02T12:00:00Z

class Entities : public test::StoreFixture {};

Image oneColour(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    Image image{32, 32, {}};
    for (int i = 0; i < 32 * 32; ++i) image.pixels.insert(image.pixels.end(), {red, green, blue, 255});
    return image;
}

TEST_F(Entities, aRecordingsDurationIsItsSpanInSixDecimals) {
    const auto app = insert<OrvaneApp>();
    const auto durationOf = [&](std::optional<double> start, std::optional<double> end,
                                std::optional<bool> idle) {
        return record(app, start, end, idle)->duration();
    };
    EXPECT_EQ(durationOf(0, 1.0000004, false), 1s);
    EXPECT_EQ(durationOf(0, 1.0000006, false), 1s + 1us);
    EXPECT_EQ(durationOf(noon, noon + 0.25, std::nullopt), 250ms);
    EXPECT_EQ(durationOf(noon + 10, noon, false), -10s);
    EXPECT_EQ(durationOf(noon, noon + 7200, true), 0s);
    EXPECT_EQ(durationOf(noon, std::nullopt, false), 0s);
    EXPECT_EQ(durationOf(std::nullopt, noon, false), 0s);
}

TEST_F(Entities, anApplicationSumsUpWhatTheFileAndTheContextHold) {
    const auto check = [&](const Ref<OrvaneApp>& app) {
        // Asked first, so that it is answered without the recordings at hand.
        const DecimalSeconds duration = app->duration();
        const auto lastUsed = app->lastUsedDate();
        DecimalSeconds sum(0);
        std::optional<Date> latest;
        for (const auto& recording : app->recordings()) {
            sum += recording->duration();
            if (recording->endDate() && (!latest || *latest < *recording->endDate()))
                latest = recording->endDate();
        }
        EXPECT_EQ(duration, sum);
        EXPECT_EQ(lastUsed, latest);
        EXPECT_EQ(app->valueForKey("duration"), Value(sum));
        EXPECT_EQ(app->valueForKey("lastUsedDate"), Value(latest));
    };
    auto app = insert<OrvaneApp>();
    app->setName("used");
    check(app);
    for (int i = 0; i < 200; ++i) record(app, noon + i * 60, noon + i * 60 + i / 7.0, i % 5 == 0);
    record(app, noon, std::nullopt);
    record(app, std::nullopt, noon);
    record(app, noon, noon + 3, std::nullopt);
    const auto other = insert<OrvaneApp>();
    record(other, noon, noon + 1000000);
    check(app);

    startAnew();
    app = context().fetch<OrvaneApp>({"Application", Predicate::withFormat("name == 'used'")}).at(0);
    check(app);
    context().processPendingChanges();

    // Unsaved: one made longer, one given away, one deleted, one new.
    auto recordings = app->recordings();
    recordings[3]->setEndDate(dateFromSecondsSinceEpoch(noon + 100000.5));
    recordings[6]->setApplication(insert<OrvaneApp>());
    context().deleteObject(*recordings[9]);
    record(app, noon, noon + 0.125);
    check(app);
    EXPECT_EQ(app->lastUsedDate(), dateFromSecondsSinceEpoch(noon + 100000.5));

    const auto unused = insert<OrvaneApp>();
    EXPECT_EQ(unused->duration(), 0s);
    EXPECT_EQ(unused->lastUsedDate(), std::nullopt);
}

TEST_F(Entities, observersAreToldWhatDependsOnWhatChanged) {
    const auto app = insert<OrvaneApp>();
    const auto recording = insert<OrvaneRecording>();
    std::vector<std::string> told;
    std::vector<ObservationToken> tokens;
    const auto follow = [&](KeyedObject& object, std::string_view key) {
        tokens.push_back(observe(object, key, [&told](const Change& change) {
            told.push_back(std::string(change.keyPath) + " " + change.newValue.description());
        }));
    };
    for (const char* key : {"disabledValue", "colorValue", "duration", "lastUsedDate"}) follow(*app, key);
    follow(*recording, "idleValue");

    const auto toldBy = [&](auto&& change) {
        told.clear();
        change();
        std::sort(told.begin(), told.end());
        return told;
    };
    using Told = std::vector<std::string>;
    EXPECT_EQ(toldBy([&] { app->setDisabled(true); }), Told{"disabledValue true"});
    EXPECT_EQ(toldBy([&] { app->setPrimitiveDisabledValue(false); }), Told{});
    EXPECT_FALSE(app->disabledValue());
    EXPECT_EQ(toldBy([&] { app->setColor("ff0000ff"); }).size(), 1U);
    EXPECT_EQ(toldBy([&] { recording->setIdleValue(true); }), Told{"idleValue true"});
    recording->setIdleValue(false);
    recording->setStartDate(dateFromSecondsSinceEpoch(0));
    recording->setEndDate(dateFromSecondsSinceEpoch(90));
    // Only the recording's end of the relationship is set; the application hears of it at once.
    EXPECT_EQ(toldBy([&] { recording->setApplication(app); }),
              (Told{"duration " + Value(DecimalSeconds(90s)).description(),
                    "lastUsedDate " + Value(dateFromSecondsSinceEpoch(90)).description()}));
    EXPECT_EQ(toldBy([&] { recording->setEndDate(dateFromSecondsSinceEpoch(95)); }), Told{});
    EXPECT_EQ(toldBy([&] { app->recordingsSet().remove(*recording); }).size(), 2U);
}

TEST_F(Entities, bothEndsOfARelationshipFollowEachOther) {
    const auto group = insert<OrvaneGroup>();
    const auto first = insert<OrvaneApp>();
    const auto second = insert<OrvaneApp>();
    auto members = group->applicationsSet();
    members.add(*first);
    second->setGroup(group);
    EXPECT_EQ(first->group(), group);
    EXPECT_EQ(members.count(), 2U);
    members.remove(*first);
    EXPECT_EQ(first->group(), nullptr);
    EXPECT_EQ(group->applications(), std::vector{second});
    group->setApplications({first});
    EXPECT_EQ(second->group(), nullptr);
    EXPECT_TRUE(members.contains(*first));

    // An application takes its recordings with it; a group leaves its members behind.
    record(first, noon, noon + 1);
    context().deleteObject(*group);
    EXPECT_EQ(first->group(), nullptr);
    context().deleteObject(*first);
    startAnew();
    EXPECT_TRUE(context().fetch<OrvaneRecording>({"Recording"}).empty());
    EXPECT_EQ(context().fetch<OrvaneApp>({"Application"}).size(), 1U);
}

TEST_F(Entities, storedValuesComeBackThroughEveryAccessor) {
    const auto app = insert<OrvaneApp>();
    EXPECT_EQ(app->disabled(), std::nullopt);
    EXPECT_FALSE(app->disabledValue());
    app->setIdentifier("editor.desktop");
    app->setName("Editor");
    app->setPrimitiveDisabledValue(true);
    const auto group = insert<OrvaneGroup>();
    group->setCategory("work");
    group->setDisabledValue(false);
    app->setGroup(group);
    const auto recording = record(app, noon, noon + 0.5);
    recording->setWindowName("");
    startAnew();

    const auto read = only<OrvaneRecording>();
    ASSERT_TRUE(read);
    EXPECT_EQ(read->startDate(), dateFromSecondsSinceEpoch(noon));
    EXPECT_EQ(read->endDate(), dateFromSecondsSinceEpoch(noon + 0.5));
    EXPECT_EQ(read->windowName(), "");
    EXPECT_EQ(read->idle(), false);
    EXPECT_EQ(read->valueForKeyPath("application.identifier"), Value("editor.desktop"));
    const Ref<OrvaneApp> owner = read->application();
    EXPECT_FALSE(owner->isFault());
    EXPECT_TRUE(owner->primitiveDisabledValue());
    EXPECT_EQ(owner->name(), "Editor");
    EXPECT_EQ(owner->color(), std::nullopt);
    EXPECT_EQ(owner->group()->category(), "work");
    EXPECT_EQ(owner->group()->disabled(), false);
    EXPECT_EQ(owner->recordings(), std::vector{read});
}

TEST_F(Entities, keysAreTheSameByTableAndByName) {
    EXPECT_EQ(OrvaneAppAttributes.color, "color");
    EXPECT_EQ(OrvaneAppRelationships.recordings, "recordings");
    const auto& app = OrvaneAppAttributes;
    const auto& group = OrvaneGroupAttributes;
    const auto& recording = OrvaneRecordingAttributes;
    using Names = std::vector<std::string_view>;
    const auto attributes = [&](const EntityDescription* entity) {
        Names names;
        for (const auto& attribute : entity->attributes) names.push_back(attribute.name);
        return names;
    };
    EXPECT_EQ(attributes(OrvaneApp::entityInManagedObjectContext(context())),
              (Names{app.color, app.disabled, app.identifier, app.name}));
    EXPECT_EQ(attributes(OrvaneGroup::entityInManagedObjectContext(context())),
              (Names{group.category, group.color, group.disabled, group.identifier, group.name}));
    EXPECT_EQ(attributes(OrvaneRecording::entityInManagedObjectContext(context())),
              (Names{recording.endDate, recording.idle, recording.startDate, recording.windowName}));

    using Paths = std::set<std::string_view>;
    EXPECT_EQ(OrvaneApp::keyPathsForValuesAffectingDuration(), Paths{"recordings"});
    EXPECT_EQ(OrvaneApp::keyPathsForValuesAffectingLastUsedDate(), Paths{"recordings"});
    EXPECT_EQ(OrvaneRecording::keyPathsForValuesAffectingValueForKey("idleValue"), Paths{"idle"});
    EXPECT_EQ(OrvaneApp::keyPathsForValuesAffectingValueForKey("disabled"), Paths{});

    const auto object = insert<OrvaneApp>();
    object->setValueForKey("blue", "name");
    object->setValueForKey(1, "disabled");
    EXPECT_EQ(object->name(), "blue");
    EXPECT_TRUE(object->disabledValue());
    EXPECT_THROW(object->setValueForKey("yes", "disabled"), WrongValueError);
    EXPECT_THROW(object->setValueForKey(Value(insert<OrvaneRecording>()), "group"), WrongValueError);
    EXPECT_THROW(object->setValueForKey(Value(1), "duration"), UnknownKeyError);
    try {
        object->valueForKey("nothing");
        ADD_FAILURE() << "an unknown key was read";
    } catch (const UnknownKeyError& error) {
        EXPECT_NE(std::string(error.what()).find("OrvaneApp"), std::string::npos) << error.what();
    }
    const OrvaneAppID identifier = object->objectID();
    EXPECT_EQ(context().objectWithID(identifier), object);
}

TEST_F(Entities, coloursAreReadFromTheStoredText) {
    const auto app = insert<OrvaneApp>();
    const Color white{1, 1, 1, 1};
    EXPECT_EQ(app->colorValue(), white);
    app->setColor("ff0000");
    EXPECT_EQ(app->colorValue(), white);
    app->setColor("#ff0000ff");
    EXPECT_EQ(app->colorValue(), std::nullopt);
    app->setColor("0000ffff");
    EXPECT_EQ(app->valueForKey("colorValue"), Value(Color{0, 0, 1, 1}));
    EXPECT_EQ(app->hexStringForColor(app->colorValue()), "0000ffff");
    EXPECT_EQ(app->hexStringForColor(std::nullopt), "00000000");
    EXPECT_EQ(insert<OrvaneGroup>()->colorValue(), white);
}

TEST_F(Entities, anApplicationIsWhereTheDesktopSaysItIs) {
    const std::string bundle = (folder_ / "Shop").string();
    std::filesystem::create_directories(folder_ / "Shop" / "Contents" / "_MASReceipt");
    desktop().workspace().setApplications({{"shop", {bundle, {}, {}, {}}},
                                           {"plain", {"/usr/bin/plain", {}, {}, {}}},
                                           {"", {"/nowhere", {}, {}, {}}},
                                           {"lost", {{}, "/elsewhere", {}, {}}}});
    const auto app = insert<OrvaneApp>();
    const auto look = [&](std::optional<std::string_view> identifier) {
        app->setIdentifier(identifier);
        return app->path();
    };
    for (const auto& nowhere : {std::optional<std::string_view>(), std::optional<std::string_view>(""),
                                std::optional<std::string_view>("lost")}) {
        EXPECT_EQ(look(nowhere), std::nullopt);
        EXPECT_EQ(app->URL(), std::nullopt);
        EXPECT_EQ(app->valueForKey("URL"), Value());
        EXPECT_FALSE(app->isAppStore());
    }
    EXPECT_EQ(look("plain"), "/usr/bin/plain");
    EXPECT_EQ(app->URL(), std::filesystem::path("/usr/bin/plain"));
    EXPECT_FALSE(app->isAppStore());
    EXPECT_EQ(look("shop"), bundle);
    EXPECT_EQ(app->valueForKey("URL"), Value(bundle));
    EXPECT_TRUE(app->isAppStore());
}

TEST_F(Entities, resettingTakesOverOnlyWhatTheDesktopKnows) {
    const Image red = oneColour(255, 0, 51);
    const Image grey = oneColour(200, 200, 200);
    desktop().workspace().setApplications({{"all", {"/apps/all", "/apps/all", "All", red}},
                                           {"grey", {"/apps/grey", "/apps/grey", "Grey", grey}},
                                           {"nameless", {"/apps/nameless", "/apps/nameless", {}, red}},
                                           {"bundle", {{}, "/apps/bundle", "Bundle", red}}});
    const auto reset = [&](std::optional<std::string_view> identifier) {
        const auto app = insert<OrvaneApp>();
        app->setIdentifier(identifier);
        app->setName("before");
        app->setColor("01020304");
        app->resetColor();
        return std::string(app->name().value()) + " " + std::string(app->color().value());
    };
    EXPECT_EQ(reset("all"), "All ff0033ff");
    EXPECT_EQ(reset("grey"), "Grey 01020304");
    EXPECT_EQ(reset("nameless"), "before ff0033ff");
    EXPECT_EQ(reset("bundle"), "Bundle 01020304");
    EXPECT_EQ(reset("unknown"), "before 01020304");
    EXPECT_EQ(reset(std::nullopt), "before 01020304");
}

TEST_F(Entities, aNewGroupHasANameAndAnIdentifierOfItsOwn) {
    std::set<std::string> identifiers;
    for (int i = 0; i < 50; ++i) {
        const auto group = insert<OrvaneGroup>();
        EXPECT_EQ(group->name(), "New Group");
        EXPECT_EQ(group->color(), std::nullopt);
        EXPECT_EQ(group->category(), std::nullopt);
        EXPECT_EQ(group->disabled(), std::nullopt);
        EXPECT_EQ(group->identifier().value().size(), 36U);
        identifiers.emplace(*group->identifier());
    }
    EXPECT_EQ(identifiers.size(), 50U);
    const auto one = insert<OrvaneGroup>();
    one->setName("Renamed");
    const std::string identifier(one->identifier().value());
    startAnew();
    // Reading is no insertion.
    const auto read = context().fetch<OrvaneGroup>({"Group", Predicate::withFormat("name == 'Renamed'")});
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0]->identifier(), identifier);
}

TEST_F(Entities, debugInfoLeavesOutWhatIsAbsent) {
    const auto app = insert<OrvaneApp>();
    const auto recording = record(app, noon, std::nullopt, std::nullopt);
    const auto keys = [&] {
        std::string result;
        for (const auto& [key, value] : recording->debugInfo()) result += key + " ";
        return result;
    };
    EXPECT_EQ(keys(), "dateStart ");
    recording->setWindowName("Letter");
    recording->setEndDate(dateFromSecondsSinceEpoch(noon + 1));
    recording->setIdle(false);
    app->setName("Editor");
    EXPECT_EQ(keys(), "window application dateStart dateEnd idle ");
    EXPECT_EQ(recording->debugInfo()["application"], Value("Editor"));
    recording->setApplication(nullptr);
    EXPECT_EQ(keys(), "window dateStart dateEnd idle ");
}

}  // namespace
}  // namespace orvane
