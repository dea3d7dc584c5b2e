#include "trials/long_use.h"

#include <sqlite3.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>

#include "reporting/orvane_app_for_range.h"
#include "reporting/orvane_presence.h"
#include "util/day_boundaries.h"

namespace orvane::trials {

namespace {

constexpr std::int64_t minute = 60;  // seconds
constexpr std::int64_t hour = 60 * minute;
constexpr std::int64_t dayLength = 24 * hour;
constexpr std::int64_t applications = 24;
constexpr std::int64_t titles = 12;  // of each application
constexpr std::size_t groups = 4;
constexpr std::size_t undoSteps = 20;

Date dateAt(std::int64_t seconds) { return dateFromSecondsSinceEpoch(static_cast<double>(seconds)); }

std::string titleOf(std::int64_t number) { return "Document " + std::to_string(number) + " — draft"; }

std::string applicationName(std::int64_t number) { return "org.example.App" + std::to_string(number); }

/// Seconds of each application below the items.
void collect(const std::vector<Ref<RangeItem>>& items, std::map<std::string, std::int64_t>& seconds) {
    for (const Ref<RangeItem>& item : items) {
        if (item->isGroup()) {
            const auto apps = item->appsForRange();
            collect({apps.begin(), apps.end()}, seconds);
        } else {
            const DecimalSeconds duration = item->duration();
            if (duration.count() > 0)
                seconds[item->identifier().value_or("")] += duration.count() / DecimalSeconds::period::den;
        }
    }
}

}  // namespace

LongUse::LongUse(Desk& desk, const std::filesystem::path& folder, std::uint64_t seed)
    : desk_(desk), file_(folder / "Orvaning.db"), random_(seed) {
    Orvane::sharedOrvane().setUrl(folder);
    dayBegin_ = static_cast<std::int64_t>(
        secondsSinceEpoch(orvaneDayStart(dateAt(desk_.platform().clock().wallTime().count() / 1'000'000))));
    dayBegin_ += dayLength;
    for (std::int64_t application = 0; application < applications; ++application)
        for (std::int64_t title = 0; title < titles; ++title)
            ledger_.reserve(applicationName(application), titleOf(title));
    OrvaneManagedObjectContext& context = *desk_.context();
    context.undoManager()->setLevelsOfUndo(undoSteps);
    for (std::size_t i = 0; i < groups; ++i) OrvaneGroup::insertInManagedObjectContext(context);
    context.save();
    desk_.tracker().setEnabled(true);
    desk_.sleep();
}

std::int64_t LongUse::upTo(std::int64_t most) {
    return static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(most + 1));
}

bool LongUse::day() {
    if (problem_) return false;
    ledger_.beginDay();
    const auto goTo = [&](std::int64_t second) {
        desk_.pass(static_cast<double>(dayBegin_ + second) -
                   static_cast<double>(desk_.platform().clock().wallTime().count()) / 1e6);
    };
    goTo(7 * hour + upTo(2 * hour));
    work(2 * hour + upTo(hour));
    goTo(13 * hour + upTo(hour));
    work(3 * hour + upTo(2 * hour));
    goTo(20 * hour);
    compareToday();
    edit();
    if (days_ % 7 == 6) {
        compareInChild();
        compareWithFile();
        forgetOne();
    }
    if (!desk_.errors().empty()) complain(desk_.errors().front().localizedDescription());
    ++days_;
    dayBegin_ += dayLength;
    return !problem_;
}

void LongUse::work(std::int64_t seconds) {
    while (seconds > 0) {
        const Stretch stretch = makeStretch(seconds);
        play(stretch);
        seconds -= stretch.length;
    }
    desk_.sleep();
}

Stretch LongUse::makeStretch(std::int64_t most) {
    // Few applications have most of the use.
    const std::int64_t application = upTo(upTo(applications - 1));
    const auto title = [&] { return titleOf(upTo(titles - 1)); };
    Stretch stretch{
        applicationName(application), title(), std::min(most, 5 + upTo(upTo(20 * minute))), {}, 0, {}};
    if (upTo(3) == 0) {
        stretch.titleChange = 1 + upTo(stretch.length);
        stretch.otherTitle = title();
    }
    const bool leaves = upTo(7) == 0;
    for (std::int64_t second = 1 + upTo(minute); second < stretch.length; second += 1 + upTo(minute))
        if (!leaves || second < minute || second > stretch.length - minute) stretch.inputs.push_back(second);
    return stretch;
}

void LongUse::play(const Stretch& stretch) {
    const auto begin = desk_.platform().clock().wallTime().count() / 1'000'000;
    desk_.show(stretch.application, stretch.title);
    desk_.platform().windowServer().noteInput();
    desk_.activate();
    std::int64_t second = 0;
    const auto passTo = [&](std::int64_t next) {
        desk_.pass(static_cast<double>(next - second));
        second = next;
    };
    const auto changeTitle = [&](std::int64_t until) {
        if (stretch.titleChange <= second || stretch.titleChange > until) return;
        passTo(stretch.titleChange);
        desk_.show(stretch.application, stretch.otherTitle);
    };
    for (const std::int64_t input : stretch.inputs) {
        changeTitle(input);
        passTo(input);
        desk_.platform().windowServer().noteInput();
    }
    changeTitle(stretch.length);
    passTo(stretch.length);
    seconds_ += static_cast<std::uint64_t>(stretch.length);
    ledger_.add(stretch, begin);
}

void LongUse::edit() {
    OrvaneManagedObjectContext& context = *desk_.context();
    const auto all = context.fetch<OrvaneGroup>({std::string(OrvaneGroup::entityName())});
    const auto apps = context.fetch<OrvaneApp>({std::string(OrvaneApp::entityName())});
    if (all.size() != groups) return complain("there are " + std::to_string(all.size()) + " groups");
    const auto any = [&](const auto& list) {
        return list[static_cast<std::size_t>(upTo(std::ssize(list) - 1))];
    };
    any(all)->setName("Group " + std::to_string(upTo(99)));
    for (int i = 0; i < 3; ++i) any(apps)->setGroup(upTo(4) == 0 ? nullptr : any(all));
    context.processPendingChanges();
    if (upTo(1) == 0) context.undoManager()->undo();
    if (upTo(1) == 0) context.undoManager()->redo();
    if (!context.save()) complain("the host's edits were not saved");
}

void LongUse::forgetOne() {
    OrvaneManagedObjectContext& context = *desk_.context();
    const std::string identifier = applicationName(upTo(applications - 1));
    for (const Ref<OrvaneRecording>& recording : context.fetch<OrvaneRecording>(
             {std::string(OrvaneRecording::entityName()),
              Predicate::withFormat("application.identifier == %@", {Value(identifier)})}))
        context.deleteObject(*recording);
    if (!context.save()) complain("the host's deletions were not saved");
    // What it could undo would keep the recordings.
    context.undoManager()->removeAllActions();
    ledger_.erase(identifier);
}

void LongUse::compareToday() {
    compare("a day's report", ledger_.usedToday(),
            desk_.tracker().itemsFromDate(dateAt(dayBegin_), dateAt(dayBegin_ + dayLength - 1)));
    const Ref<OrvanePresence> presence = OrvanePresence::presenceForDate(dateAt(dayBegin_ + 12 * hour));
    const auto& expected = ledger_.presence();
    const bool same = expected ? presence->startDate() == dateAt(expected->first) &&
                                     presence->endDate() == dateAt(expected->second)
                               : !presence->startDate();
    if (!same) complain("the presence is " + presence->description());
}

void LongUse::compareInChild() {
    ManagedObjectContext child(ConcurrencyType::privateQueue);
    child.setParentContext(desk_.context());
    Seconds seconds;
    {
        // The tracker goes on meanwhile, in an application whose time is not counted here.
        const std::string other = "org.example.Other";
        const std::int64_t end = dayBegin_ + 20 * hour;
        std::jthread thread([&] {
            collect(desk_.tracker().itemsFromDate(dateAt(0), dateAt(end), child), seconds);
            child.reset();
        });
        Stretch stretch{other, "Report", 10 * minute, {}, 0, {}};
        play(stretch);
        desk_.sleep();
        thread.join();
        seconds.erase(other);
    }
    Seconds expected = ledger_.used();
    expected.erase("org.example.Other");
    ++reports_;
    for (const auto& [application, sum] : expected) compared_ += static_cast<std::uint64_t>(sum);
    if (seconds != expected) complain("a report in a child context differs from the ledger");
}

void LongUse::compareWithFile() {
    compare("a report over everything", ledger_.used(),
            desk_.tracker().itemsFromDate(dateAt(0), dateAt(dayBegin_ + dayLength)));
    sqlite3* handle = nullptr;
    sqlite3_open_v2(file_.c_str(), &handle, SQLITE_OPEN_READONLY, nullptr);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(handle, sqlite3_close);
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(
        handle,
        "SELECT a.identifier, r.windowName, r.idle, SUM(r.endDate - r.startDate) FROM Recording r "
        "JOIN Application a ON r.application = a._id GROUP BY 1, 2, 3",
        -1, &statement, nullptr);
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> query(statement, sqlite3_finalize);
    UseLedger::Lines found = ledger_.lines();
    for (auto& [line, seconds] : found) seconds = 0;
    const auto text = [&](int column) {
        return std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)));
    };
    while (sqlite3_step(statement) == SQLITE_ROW)
        found[{text(0), text(1), sqlite3_column_int(statement, 2) != 0}] = sqlite3_column_int64(statement, 3);
    for (const auto& [line, seconds] : found) compared_ += static_cast<std::uint64_t>(seconds);
    if (found != ledger_.lines()) complain("the file differs from the ledger");
}

void LongUse::compare(const std::string& what, const Seconds& expected,
                      const std::vector<Ref<RangeItem>>& items) {
    Seconds seconds;
    collect(items, seconds);
    ++reports_;
    for (const auto& [application, sum] : expected) compared_ += static_cast<std::uint64_t>(sum);
    if (seconds == expected) return;
    const auto different = std::ranges::find_if(
        expected, [&](const auto& entry) { return seconds[entry.first] != entry.second; });
    complain(what + " differs from the ledger" +
             (different == expected.end()
                  ? std::string()
                  : ": " + different->first + " has " + std::to_string(seconds[different->first]) +
                        " seconds, not " + std::to_string(different->second)));
}

void LongUse::complain(const std::string& what) {
    if (!problem_) problem_ = "day " + std::to_string(days_ + 1) + ": " + what;
}

}  // namespace orvane::trials
