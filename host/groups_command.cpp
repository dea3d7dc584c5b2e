#include <algorithm>
#include <cctype>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/answer.h"
#include "host/exchange/stored_objects.h"
#include "host/item_lookup.h"
#include "host/reading_platform.h"
#include "host/terminal.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"

namespace orvane::host {

namespace {

using nlohmann::ordered_json;

std::string shownName(const OrvaneGroup& group) {
    return "\"" + std::string(group.name().value_or("")) + "\"";
}

/// The members, longest used first.
struct Member {
    Ref<OrvaneApp> app;
    DecimalSeconds duration;
};

std::vector<Member> membersOf(const OrvaneGroup& group) {
    std::vector<Member> result;
    for (const Ref<OrvaneApp>& app : group.applications()) result.push_back({app, app->duration()});
    std::stable_sort(result.begin(), result.end(),
                     [](const Member& left, const Member& right) { return left.duration > right.duration; });
    return result;
}

DecimalSeconds total(const std::vector<Member>& members) {
    DecimalSeconds result{0};
    for (const Member& member : members) result += member.duration;
    return result;
}

ordered_json json(const OrvaneGroup& group) {
    const std::vector<Member> members = membersOf(group);
    ordered_json result;
    result["identifier"] = jsonText(group.identifier());
    result["name"] = jsonText(group.name());
    result["color"] = jsonText(group.color());
    result["category"] = jsonText(group.category());
    result["disabled"] = group.disabledValue();
    result["duration"] = decimalText(total(members));
    result["applications"] = ordered_json::array();
    for (const Member& member : members)
        result["applications"].push_back({{"identifier", jsonText(member.app->identifier())},
                                          {"name", jsonText(member.app->name())},
                                          {"duration", decimalText(member.duration)}});
    return result;
}

/// The stored form of a colour as people write it: `3584e4` or `3584e4cc`, also with a `#`. None for any
/// other text.
std::optional<std::string> storedColor(std::string_view text) {
    if (text.starts_with('#')) text.remove_prefix(1);
    if (text.size() != 6 && text.size() != 8) return std::nullopt;
    std::string result;
    for (const char digit : text) {
        if (std::isxdigit(static_cast<unsigned char>(digit)) == 0) return std::nullopt;
        result += static_cast<char>(std::tolower(static_cast<unsigned char>(digit)));
    }
    return result.size() == 6 ? result + "ff" : result;
}

std::string colorProblem(const std::string& color) {
    return "\"" + color + "\" is no colour. Write it as #3584e4, or as #3584e4cc with its opacity.";
}

/// One edit of the groups: what is looked up, what is wrong, and the save at the end.
class GroupEdit {
  public:
    explicit GroupEdit(const CommonOptions& options, bool creates = false)
        : options_(options), store_(options.store) {
        context_ = creates ? store_.contextForWriting() : store_.context();
        if (!context_) {
            if (store_.exists() || creates) status_ = exitFailure;  // the reason was printed
            return;
        }
        Error error;
        auto groups = storedObjects<OrvaneGroup>(*context_, &error);
        auto apps = groups ? storedObjects<OrvaneApp>(*context_, &error) : std::nullopt;
        if (!apps) {
            status_ = fail(error);
            return;
        }
        groups_ = std::move(*groups);
        apps_ = std::move(*apps);
    }

    bool isFine() const { return status_ == exitSuccess; }
    int status() const { return status_; }
    void refuse(const std::string& problem) { status_ = fail(problem, exitUsage); }
    ManagedObjectContext& context() { return *context_; }

    /// None, after a message, when the word does not mean just one group.
    Ref<OrvaneGroup> group(const std::string& word) {
        const ItemLookup lookup = lookUp(word, names(groups_), "group");
        if (lookup.found.size() == 1) return groups_[lookup.found.front()];
        refuse(lookup.problem.empty() ? "several groups have the identifier \"" + word + "\"."
                                      : lookup.problem);
        return nullptr;
    }
    /// All applications that the words mean; stops, after a message, at the first that means none or several.
    std::vector<Ref<OrvaneApp>> apps(const std::vector<std::string>& words) {
        std::vector<Ref<OrvaneApp>> result;
        for (const std::string& word : words) {
            const ItemLookup lookup = lookUp(word, names(apps_), "application");
            if (!lookup.problem.empty()) {
                refuse(lookup.problem);
                return {};
            }
            for (const std::size_t index : lookup.found) result.push_back(apps_[index]);
        }
        return result;
    }
    /// Whether a group may be called so; says why not. The group itself does not stand in its own way.
    bool mayBeCalled(const std::string& name, const OrvaneGroup* group = nullptr) {
        if (name.find_first_not_of(" \t\r\n") == std::string::npos) {
            refuse("a group needs a name.");
            return false;
        }
        for (const Ref<OrvaneGroup>& other : groups_)
            if (other.get() != group && other->name() == name) {
                refuse("there is a group \"" + name + "\" already.");
                return false;
            }
        return true;
    }

    /// Saves, and prints what was done.
    int finish(const ordered_json& json, const std::string& text) {
        Error error;
        if (!saveSoon(*context_, &error)) return fail(error);
        if (options_.json)
            print(json);
        else
            std::cout << text << '\n';
        return exitSuccess;
    }

  private:
    template <class T>
    static std::vector<ItemName> names(const std::vector<Ref<T>>& items) {
        std::vector<ItemName> result;
        for (const Ref<T>& item : items)
            result.push_back(
                {std::string(item->identifier().value_or("")), std::string(item->name().value_or(""))});
        return result;
    }

    CommonOptions options_;
    OpenStore store_;
    ManagedObjectContext* context_ = nullptr;
    std::vector<Ref<OrvaneGroup>> groups_;
    std::vector<Ref<OrvaneApp>> apps_;
    int status_ = exitSuccess;
};

std::string countOf(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " application" : " applications");
}

}  // namespace

int runGroups(const CommonOptions& options) {
    OpenStore store(options.store);
    ManagedObjectContext* context = store.context();
    if (store.exists() && !context) return exitFailure;
    std::vector<Ref<OrvaneGroup>> groups;
    if (context) {
        Error error;
        auto stored = storedObjects<OrvaneGroup>(*context, &error);
        if (!stored) return fail(error);
        groups = std::move(*stored);
    }
    if (options.json) {
        auto list = ordered_json::array();
        for (const Ref<OrvaneGroup>& group : groups) list.push_back(json(*group));
        print(list);
        return store.readStatus();
    }
    if (groups.empty()) {
        std::cout << "There are no groups yet. `orvane groups add NAME` makes one.\n";
        return exitSuccess;
    }
    std::vector<std::vector<std::string>> rows;
    for (const Ref<OrvaneGroup>& group : groups) {
        const std::vector<Member> members = membersOf(*group);
        rows.push_back({swatch(group->colorValue()), displayText(group->name().value_or(""), 40),
                        clockText(total(members)), displayText(group->color().value_or("-"), 12),
                        displayText(group->identifier().value_or(""), 36)});
        for (const Member& member : members)
            rows.push_back({"", "  " + displayText(member.app->name().value_or(""), 38),
                            clockText(member.duration), displayText(member.app->color().value_or("-"), 12),
                            displayText(member.app->identifier().value_or(""), 36)});
    }
    printTable({"", "GROUP", "TIME", "COLOUR", "IDENTIFIER"}, rows, {2});
    return store.readStatus();
}

int runAddGroup(const std::string& name, const std::optional<std::string>& color,
                const CommonOptions& options) {
    const auto stored = color ? storedColor(*color) : std::nullopt;
    if (color && !stored) return fail(colorProblem(*color), exitUsage);
    GroupEdit edit(options, true);
    if (!edit.isFine() || !edit.mayBeCalled(name)) return edit.status();
    const Ref<OrvaneGroup> group = edit.context().insert<OrvaneGroup>();
    group->setName(name);
    if (stored) group->setColor(*stored);
    return edit.finish(json(*group), "Added the group " + shownName(*group) + ".");
}

int runRenameGroup(const std::string& name, const std::string& newName, const CommonOptions& options) {
    GroupEdit edit(options);
    const Ref<OrvaneGroup> group = edit.isFine() ? edit.group(name) : nullptr;
    if (!group || !edit.mayBeCalled(newName, group.get())) return edit.status();
    const std::string before = shownName(*group);
    group->setName(newName);
    return edit.finish(json(*group), "The group " + before + " is called " + shownName(*group) + " now.");
}

int runColorGroup(const std::string& name, const std::string& color, const CommonOptions& options) {
    const auto stored = storedColor(color);
    if (!stored) return fail(colorProblem(color), exitUsage);
    GroupEdit edit(options);
    const Ref<OrvaneGroup> group = edit.isFine() ? edit.group(name) : nullptr;
    if (!group) return edit.status();
    group->setColor(*stored);
    return edit.finish(json(*group),
                       "The group " + shownName(*group) + " has the colour " + *stored + " now.");
}

int runRemoveGroup(const std::string& name, const CommonOptions& options) {
    GroupEdit edit(options);
    const Ref<OrvaneGroup> group = edit.isFine() ? edit.group(name) : nullptr;
    if (!group) return edit.status();
    const std::string text = "Removed the group " + shownName(*group) +
                             ". Without a group now: " + countOf(group->applications().size()) + ".";
    const ordered_json removed{{"removed", jsonText(group->identifier())}};
    edit.context().deleteObject(*group);
    return edit.finish(removed, text);
}

int runAssign(const std::string& name, const std::vector<std::string>& applications,
              const CommonOptions& options) {
    GroupEdit edit(options);
    const Ref<OrvaneGroup> group = edit.isFine() ? edit.group(name) : nullptr;
    if (!group) return edit.status();
    const auto apps = edit.apps(applications);
    if (!edit.isFine()) return edit.status();
    for (const Ref<OrvaneApp>& app : apps) app->setGroup(group);
    return edit.finish(json(*group), "The group " + shownName(*group) + " has " +
                                         countOf(group->applications().size()) + " now.");
}

int runUnassign(const std::vector<std::string>& applications, const CommonOptions& options) {
    GroupEdit edit(options);
    if (!edit.isFine()) return edit.status();
    const auto apps = edit.apps(applications);
    if (!edit.isFine()) return edit.status();
    ordered_json unassigned{{"unassigned", ordered_json::array()}};
    for (const Ref<OrvaneApp>& app : apps) {
        app->setGroup(nullptr);
        unassigned["unassigned"].push_back(jsonText(app->identifier()));
    }
    return edit.finish(unassigned, "Took " + countOf(apps.size()) + " out of the groups.");
}

}  // namespace orvane::host
