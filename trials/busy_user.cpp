#include "trials/busy_user.h"

#include <algorithm>
#include <chrono>

#include "store/orvane_app.h"
#include "store/orvane_group.h"

namespace orvane::trials {

namespace {

constexpr const char* applications[] = {"org.example.Editor", "org.example.Mail", "org.example.Terminal",
                                        "org.example.Browser", "org.example.Notes"};
constexpr const char* windows[] = {"", "letter", "plan", "Übersicht",
                                   "a title that is longer than the others"};

/// A host that cannot read tries again.
template <class T>
std::vector<Ref<T>> all(ManagedObjectContext& context, const char* key) {
    // One order for all runs, whatever order the file yields.
    const FetchRequest request{.entityName = std::string(T::entityName()), .sortOrders = {{key, true}}};
    Error error;
    std::vector<Ref<T>> found = context.fetch<T>(request, &error);
    return error ? context.fetch<T>(request) : found;
}

}  // namespace

void BusyUser::begin() {
    desk_.use();
    desk_.show(applications[0], windows[1]);
    desk_.tracker().setEnabled(true);
}

void BusyUser::work() {
    desk_.use();
    const auto what = upTo(99);
    if (what < 30) {
        switchWindow();
    } else if (what < 36) {
        desk_.platform().windowServer().setTimeSinceLastInput(std::chrono::seconds(upTo(300)));
    } else if (what < 40) {
        desk_.sleep();
        desk_.pass(static_cast<double>(upTo(3600)));
        switchWindow();
        desk_.activate();
    } else if (what < 44) {
        editGroups();
    } else if (what < 52) {
        editApplications();
    } else {
        desk_.platform().windowServer().noteInput();
    }
    desk_.pass(10);
}

void BusyUser::switchWindow() {
    desk_.show(applications[upTo(std::size(applications) - 1)], windows[upTo(std::size(windows) - 1)]);
    desk_.platform().windowServer().noteInput();
    if (upTo(1) == 0) desk_.activate();
}

void BusyUser::editGroups() {
    OrvaneManagedObjectContext* context = desk_.context();
    if (!context) return;
    const auto group = OrvaneGroup::insertInManagedObjectContext(*context);
    group->setName("group " + std::to_string(++groups_));
    context->save();
}

void BusyUser::editApplications() {
    const auto chosen = upTo(1000);
    const bool switchesOff = upTo(4) == 0;
    OrvaneManagedObjectContext* context = desk_.context();
    if (!context) return;
    const auto apps = all<OrvaneApp>(*context, "identifier");
    const auto groups = all<OrvaneGroup>(*context, "name");
    if (apps.empty()) return;
    const Ref<OrvaneApp>& app = apps[chosen % apps.size()];
    if (switchesOff)
        app->setDisabled(!app->disabledValue());
    else if (!groups.empty())
        app->setGroup(groups[chosen % groups.size()]);
    context->save();
}

}  // namespace orvane::trials
