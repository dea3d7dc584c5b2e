#include <bit>
#include <limits>
#include <random>
#include <set>

#include "host/exchange/stored_recordings.h"
#include "tests/host/exchange_fixture.h"

namespace orvane::test {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Fills a store with what is awkward to write down, and with chance.
class RandomStore {
  public:
    RandomStore(ExchangeStore& store, unsigned seed) : store_(store), random_(seed) {}

    void fill() {
        std::vector<Ref<OrvaneGroup>> groups{nullptr};
        for (int i = 0; i < 6; ++i) {
            groups.push_back(OrvaneGroup::insertInManagedObjectContext(store_.context()));
            // Twins, too: nothing keeps a host from making them.
            if (i % 3 != 0) groups.back()->setIdentifier(text());
            groups.back()->setName(text());
            groups.back()->setCategory(text());
            groups.back()->setColor(text());
            groups.back()->setDisabled(flag());
        }
        std::vector<Ref<OrvaneApp>> apps{nullptr};
        for (int i = 0; i < 25; ++i) {
            apps.push_back(store_.insertApp(text(), text(), one(groups)));
            apps.back()->setColor(text());
            apps.back()->setDisabled(flag());
        }
        for (int i = 0; i < 800; ++i) {
            const auto start = date();
            const auto end = start && pick(4) != 0 ? std::optional(*start + pick(500) * 0.37) : date();
            store_.insertRecording(one(apps), start, end, flag(), text());
        }
        store_.save();
    }

  private:
    unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }
    template <class T>
    const T& one(const std::vector<T>& of) {
        return of[pick(static_cast<unsigned>(of.size()))];
    }
    std::optional<bool> flag() {
        const unsigned chance = pick(3);
        return chance == 0 ? std::nullopt : std::optional(chance == 1);
    }
    std::optional<std::string> text() {
        static const std::vector<std::string> awkward{"",
                                                      "plain",
                                                      " blanks ",
                                                      "comma, \"quotes\"",
                                                      "\"",
                                                      "line\nfeed",
                                                      "carriage\r\nreturn\r",
                                                      std::string("zero\0byte", 9),
                                                      "Grüße 日本 🦉",
                                                      "bad \xFF\xC0\x80 bytes",
                                                      "\xE2\x82",
                                                      "\xED\xA0\x80",
                                                      "base64:",
                                                      "base64:aGVsbG8=",
                                                      "null",
                                                      "-",
                                                      "\x01\x7F\t\\u0041",
                                                      "=1+1",
                                                      "\xEF\xBB\xBF mark",
                                                      "e\u0301 and \u00e9"};
        if (pick(6) == 0) return std::nullopt;
        if (pick(2) == 0) return one(awkward);
        std::string result;
        for (unsigned i = pick(12); i > 0; --i) result += static_cast<char>(pick(256));
        return result;
    }
    std::optional<double> date() {
        static const std::vector<double> awkward{0,
                                                 0.1,
                                                 1e-320,
                                                 -1.5,
                                                 1772438400,
                                                 infinity,
                                                 1e300,
                                                 -1e300,
                                                 1.0 / 3,
                                                 9007199254740993.0,
                                                 -infinity,
                                                 1e21,
                                                 123456789012345680.0};
        switch (pick(8)) {
            case 0:
                return std::nullopt;
            case 1:
                return one(awkward);
            case 2: {
                const double any =
                    std::bit_cast<double>(std::uniform_int_distribution<std::uint64_t>()(random_));
                return any == any && any != 0 ? any : 1.0;
            }
            default:
                return 1.7e9 + std::uniform_real_distribution<double>(0, 1e7)(random_);
        }
    }

    ExchangeStore& store_;
    std::mt19937 random_;
};

class Exchange : public ExchangeFixture {};

TEST_F(Exchange, BringsBackEveryBitOfARandomStore) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
        const std::string name = std::to_string(seed);
        ExchangeStore original(folder_ / ("original" + name));
        RandomStore(original, seed).fill();
        const auto recordings = original.recordings();
        const auto items = original.items();
        ASSERT_EQ(recordings.size(), 800U);

        for (const std::string extension : {".jsonl", ".csv"}) {
            SCOPED_TRACE(name + extension);
            const auto file = folder_ / ("export" + name + extension);
            original.exportTo(file);
            ExchangeStore copy(folder_ / ("copy" + name + extension));
            const auto report = copy.import(file);
            EXPECT_EQ(report.taken, 800U);
            EXPECT_EQ(report.takenInPart, 0U);
            EXPECT_EQ(copy.recordings(), recordings);
            // Rows of recordings carry no group or application without any.
            if (extension == ".jsonl") {
                EXPECT_EQ(copy.items(), items);
            }

            // Both the copy and the original know all of it.
            for (ExchangeStore* store : {&copy, &original}) {
                const auto before = store->items();
                const auto again = store->import(file);
                EXPECT_EQ(again.taken + again.newApplications + again.newGroups, 0U);
                EXPECT_EQ(again.alreadyStored, 800U);
                EXPECT_EQ(store->recordings(), recordings);
                EXPECT_EQ(store->items(), before);
            }

            // The copy tells the same as the original.
            const auto second = folder_ / ("second" + extension);
            copy.exportTo(second);
            if (extension == ".jsonl") {
                EXPECT_EQ(bytesOf(second).size(), bytesOf(file).size());
            }
        }
    }
}

TEST_F(Exchange, TakesOnlyTimeThatIsNotCovered) {
    ExchangeStore store(folder_ / "store");
    const auto app = store.insertApp("org.app", "App");
    store.insertRecording(app, 100, 200, false, "a");
    store.insertRecording(app, 200, 250, true, "a");
    store.insertRecording(app, 300, 400, false, "b");
    store.insertRecording(app, 500, 450, false, "back");
    store.save();
    const std::string before = store.summary();

    const std::string heading = "start,end,idle,window,identifier,name\n";
    const auto report =
        store.importText(heading +
                             "50,350,false,long,org.app,Other name\n"  // two gaps of it are free
                             "120,180,false,inner,org.app,\n"          // all of it is covered
                             "400,420,false,after,org.app,\n"          // begins at an end
                             "250,250,false,moment,org.app,\n"         // at an end
                             "110,110,false,moment,org.app,\n"         // in the middle
                             "460,470,false,x,org.new,New\n"           // what ends early covers nothing
                             "300,400,false,b,org.app,\n"              // the same
                             "300,400,true,b,org.app,\n"               // covered, though not the same
                             "500,450,false,back,org.app,\n"
                             "500,440,false,back,org.app,\n",
                         ".csv");
    EXPECT_EQ(report.taken, 6U);
    EXPECT_EQ(report.takenInPart, 1U);
    EXPECT_EQ(report.overlapping, 3U);
    EXPECT_EQ(report.alreadyStored, 2U);
    EXPECT_EQ(report.newApplications, 1U);
    EXPECT_EQ(store.summary(),
              "50-100 long 100-200 a (200-250 a) 250-250 moment 250-300 long 300-400 b 400-420 after "
              "460-470 x 500-440 back 500-450 back");
    // What is stored keeps its attributes.
    EXPECT_EQ(store.items(), (std::vector<std::string>{"[<org.app><App>---]9", "[<org.new><New>---]1"}));
}

TEST_F(Exchange, ALaterExportAddsWhatCameSince) {
    ExchangeStore store(folder_ / "store");
    const auto app = store.insertApp("org.app");
    const auto growing = store.insertRecording(app, 100, 150);
    ASSERT_TRUE(store.context().save());
    store.exportTo(folder_ / "early.jsonl");
    growing->setEndDate(dateFromSecondsSinceEpoch(180));
    store.insertRecording(app, 180, 190, true);
    store.save();
    store.exportTo(folder_ / "late.jsonl");

    ExchangeStore copy(folder_ / "copy");
    EXPECT_EQ(copy.import(folder_ / "early.jsonl").taken, 1U);
    EXPECT_EQ(copy.import(folder_ / "late.jsonl").taken, 2U);
    EXPECT_EQ(copy.summary(), "100-150 w 150-180 w (180-190 w)");
    EXPECT_EQ(copy.import(folder_ / "early.jsonl").taken, 0U);
    EXPECT_EQ(store.import(folder_ / "early.jsonl").taken, 0U);
}

TEST_F(Exchange, TakesStoredItemsForThoseWithTheSameIdentifier) {
    ExchangeStore store(folder_ / "store");
    const auto group = OrvaneGroup::insertInManagedObjectContext(store.context());
    group->setIdentifier("G");
    group->setName("Mine");
    store.insertApp("org.app", "Kept", group);
    store.insertApp("", "No identifier");
    store.save();
    const auto report = store.importText(R"({"type": "export", "version": 1}
{"type": "group", "number": 9, "identifier": "G", "name": "Theirs"}
{"type": "group", "number": 4, "identifier": "H", "name": null}

{"type": "application", "number": 3, "identifier": "org.app", "name": "Renamed", "group": 4}
{"type": "application", "number": 1, "identifier": "org.app", "name": "Twin", "group": 9}
{"type": "application", "number": 2, "identifier": "", "name": "Another without", "disabled": true})",
                                         ".jsonl");
    EXPECT_EQ(report.newGroups, 1U);
    EXPECT_EQ(report.newApplications, 2U);
    EXPECT_EQ(store.items(), (std::vector<std::string>{
                                 "[<><Another without>-yes-]0", "[<><No identifier>---]0",
                                 "[<org.app><Kept>--{<G><Mine>---}]0", "[<org.app><Twin>--{<G><Mine>---}]0",
                                 "{<G><Mine>---}2", "{<H>----}0"}));
}

TEST_F(Exchange, ARangeHoldsWhatReachesIntoIt) {
    ExchangeStore store(folder_ / "store");
    const auto group = OrvaneGroup::insertInManagedObjectContext(store.context());
    const auto used = store.insertApp("org.used", "Used", group);
    const auto unused = store.insertApp("org.unused");
    store.insertRecording(unused, 0, 100, false, "before");
    store.insertRecording(used, 50, 101, false, "into");
    store.insertRecording(used, 120, 130, false, "within");
    store.insertRecording(used, 200, 300, false, "at the end");
    store.insertRecording(unused, 201, 300, false, "after");
    store.insertRecording(unused, std::nullopt, 150, false, "no start");
    store.save();
    store.exportTo(folder_ / "part.jsonl",
                   host::DateRange{dateFromSecondsSinceEpoch(100), dateFromSecondsSinceEpoch(200)});
    ExchangeStore copy(folder_ / "copy");
    copy.import(folder_ / "part.jsonl");
    EXPECT_EQ(copy.summary(), "50-101 into 120-130 within 200-300 at the end");
    EXPECT_EQ(copy.items().size(), 2U);
}

TEST_F(Exchange, WalksThroughAStoreInPiecesOfAnySize) {
    ExchangeStore store(folder_ / "store");
    RandomStore(store, 7).fill();
    for (int i = 0; i < 60; ++i)  // many that begin in the same moment
        store.insertRecording(nullptr, 1.705e9, 1.706e9 + i % 5, i % 2 == 0);
    store.save();
    const Date middle = dateFromSecondsSinceEpoch(1.705e9);
    const std::vector<host::RecordingFilter> filters{
        {std::nullopt, "TRUEPREDICATE", {}},
        {middle, "TRUEPREDICATE", {}},
        {middle, "endDate >= %@ OR idle == 1", {middle}},
        {std::nullopt, "endDate < startDate OR endDate == nil", {}}};
    for (const host::RecordingFilter& filter : filters) {
        SCOPED_TRACE(filter.format);
        std::size_t expected = 0;
        const auto predicate = Predicate::withFormat(filter.format, filter.arguments);
        for (const auto& recording : store.context().fetch<OrvaneRecording>({"Recording"}))
            if (predicate.evaluate(*recording) &&
                (!filter.lastStart ||
                 (recording->startDate() && *recording->startDate() <= *filter.lastStart)))
                ++expected;
        ASSERT_GT(expected, 100U);
        for (const std::size_t pieceSize : {1, 7, 100, 100000}) {
            std::set<std::int64_t> seen;
            std::optional<Date> last;
            EXPECT_TRUE(host::forEachRecording(
                store.context(), filter, nullptr,
                [&](const OrvaneRecording& recording, std::size_t total) {
                    EXPECT_TRUE(predicate.evaluate(recording));
                    EXPECT_TRUE(seen.insert(recording.objectID().key()).second);
                    EXPECT_GE(recording.startDate(), last);
                    EXPECT_EQ(total, expected);
                    last = recording.startDate();
                    return true;
                },
                pieceSize));
            EXPECT_EQ(seen.size(), expected) << pieceSize;
        }
    }
}

}  // namespace
}  // namespace orvane::test
