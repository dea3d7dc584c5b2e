#include "host/exchange/store_importer.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "host/exchange/interruption.h"
#include "host/exchange/stored_objects.h"

namespace orvane::host {

namespace {

std::optional<double> seconds(std::optional<Date> date) {
    return date ? std::optional(secondsSinceEpoch(*date)) : std::nullopt;
}

std::optional<Date> date(std::optional<double> seconds) {
    return seconds ? std::optional(dateFromSecondsSinceEpoch(*seconds)) : std::nullopt;
}

}  // namespace

StoreImporter::StoreImporter(ManagedObjectContext& context, const ImportBatch& batch, ImportReport& report,
                             Progress& progress)
    : context_(context), batch_(batch), report_(report), progress_(progress) {}

bool StoreImporter::run(Error* error) {
    // Nobody takes an import back step by step, and the steps would take more room than the recordings.
    UndoManager* undo = context_.undoManager();
    if (undo) undo->disableUndoRegistration();
    bool done = findItems(error) && findStored(error) && insertRecordings();
    if (done && context_.hasChanges()) {
        progress_.begin("Saving");
        progress_.show(0, 0);
        done = saveSoon(context_, error);
    }
    if (!done) context_.rollback();
    if (undo) undo->enableUndoRegistration();
    return done;
}

bool StoreImporter::findItems(Error* error) {
    const auto storedGroups = storedObjects<OrvaneGroup>(context_, error);
    if (!storedGroups) return false;
    const auto storedApplications = storedObjects<OrvaneApp>(context_, error);
    if (!storedApplications) return false;
    ItemMatching matching(*storedGroups, *storedApplications);
    for (const GroupItem& group : batch_.groups()) groups_.push_back(matching.find(group));
    for (const ApplicationItem& application : batch_.applications())
        applications_.push_back(
            batch_.matchesByName
                ? matching.findNamed(application.identifier.value_or(""))
                : matching.find(application, application.group ? groups_[*application.group] : nullptr));
    return true;
}

bool StoreImporter::findStored(Error* error) {
    const auto& recordings = batch_.recordings();
    isStored_.resize(recordings.size());
    byStart_.resize(recordings.size());
    std::iota(byStart_.begin(), byStart_.end(), 0U);
    std::sort(byStart_.begin(), byStart_.end(), [&](std::uint32_t left, std::uint32_t right) {
        return recordings[left].start < recordings[right].start;
    });

    progress_.begin("Comparing with what is stored");
    double first = std::numeric_limits<double>::infinity();
    double last = -first;
    bool hasOdd = false;
    for (const ImportBatch::Recording& recording : recordings) {
        hasOdd |= !recording.start || !recording.end || *recording.end < *recording.start;
        if (recording.start && recording.end) {
            first = std::min(first, std::min(*recording.start, *recording.end));
            last = std::max(last, std::max(*recording.start, *recording.end));
        }
    }
    if (first <= last &&
        !lookAtStored({dateFromSecondsSinceEpoch(last), "endDate >= %@", {dateFromSecondsSinceEpoch(first)}},
                      error))
        return false;
    if (hasOdd &&
        !lookAtStored({std::nullopt, "startDate == nil OR endDate == nil OR endDate < startDate", {}}, error))
        return false;
    covered_.settle();
    return !Interruption::requested();
}

bool StoreImporter::lookAtStored(const RecordingFilter& filter, Error* error) {
    std::size_t done = 0;
    return forEachRecording(context_, filter, error, [&](const OrvaneRecording& stored, std::size_t total) {
        note(stored);
        progress_.advance(++done, total);
        return !Interruption::requested();
    });
}

void StoreImporter::note(const OrvaneRecording& stored) {
    const std::optional<double> start = seconds(stored.startDate());
    const std::optional<double> end = seconds(stored.endDate());
    if (start && end) covered_.add(*start, *end);

    struct ByStart {
        const std::vector<ImportBatch::Recording>& recordings;
        bool operator()(std::uint32_t index, std::optional<double> start) const {
            return recordings[index].start < start;
        }
        bool operator()(std::optional<double> start, std::uint32_t index) const {
            return start < recordings[index].start;
        }
    };
    const auto [from, to] =
        std::equal_range(byStart_.begin(), byStart_.end(), start, ByStart{batch_.recordings()});
    for (auto index = from; index != to; ++index) {
        const ImportBatch::Recording& recording = batch_.recordings()[*index];
        if (recording.end != end || recording.idle != stored.idle() ||
            batch_.window(recording) != stored.windowName())
            continue;
        const Ref<OrvaneApp> application =
            recording.application ? applications_[recording.application - 1] : nullptr;
        // One whose application is yet to be made cannot be stored.
        const bool isNew = recording.application != 0 && !application;
        if (!isNew && application == stored.application()) isStored_[*index] = true;
    }
}

void StoreImporter::insertItems() {
    for (std::size_t i = 0; i < groups_.size(); ++i) {
        if (groups_[i]) continue;
        const GroupItem& item = batch_.groups()[i];
        groups_[i] = context_.insert<OrvaneGroup>();
        groups_[i]->setIdentifier(item.identifier);
        groups_[i]->setName(item.name);
        groups_[i]->setCategory(item.category);
        groups_[i]->setColor(item.color);
        groups_[i]->setDisabled(item.disabled);
        ++report_.newGroups;
    }
    for (std::size_t i = 0; i < applications_.size(); ++i) {
        if (applications_[i]) continue;
        const ApplicationItem& item = batch_.applications()[i];
        applications_[i] = context_.insert<OrvaneApp>();
        applications_[i]->setIdentifier(item.identifier);
        applications_[i]->setName(item.name);
        applications_[i]->setColor(item.color);
        applications_[i]->setDisabled(item.disabled);
        if (item.group) applications_[i]->setGroup(groups_[*item.group]);
        // Where the input knows no more than a name, the installed application may.
        if (batch_.matchesByName) applications_[i]->resetColor();
        ++report_.newApplications;
    }
}

void StoreImporter::insertPart(const ImportBatch::Recording& recording, std::optional<double> start,
                               std::optional<double> end) {
    const Ref<OrvaneRecording> object = context_.insert<OrvaneRecording>();
    object->setStartDate(date(start));
    object->setEndDate(date(end));
    object->setIdle(recording.idle);
    object->setWindowName(batch_.window(recording));
    if (recording.application) object->setApplication(applications_[recording.application - 1]);
    ++report_.taken;
}

void StoreImporter::insertRest(const ImportBatch::Recording& recording) {
    if (!recording.isSpan()) {
        // A moment takes no time; within the time of another it tells nothing new.
        if (recording.start && recording.start == recording.end && covered_.covers(*recording.start))
            ++report_.overlapping;
        else
            insertPart(recording, recording.start, recording.end);
        return;
    }
    const auto rest = covered_.uncovered(*recording.start, *recording.end);
    for (const auto& [start, end] : rest) insertPart(recording, start, end);
    if (rest.empty())
        ++report_.overlapping;
    else if (rest.size() > 1 || rest.front() != CoveredTime::Span(*recording.start, *recording.end))
        ++report_.takenInPart;
}

bool StoreImporter::insertRecordings() {
    progress_.begin("Importing");
    insertItems();
    const auto& recordings = batch_.recordings();
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        progress_.advance(i, recordings.size());
        if (Interruption::requested()) return false;
        if (isStored_[i])
            ++report_.alreadyStored;
        else
            insertRest(recordings[i]);
    }
    return true;
}

}  // namespace orvane::host
