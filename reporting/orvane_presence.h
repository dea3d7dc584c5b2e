#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/keyed_object.h"
#include "store/orvane_recording.h"

namespace orvane {

/// Names under which the host registers the transformers that write a date and a time of day.
inline constexpr const char* shortDateTransformerName = "VxShortDateTransformer";
inline constexpr const char* shortTimeTransformerName = "VxShortTimeTransformer";

/// The one period of a day during which the user was at the machine. Work that runs past midnight belongs to
/// the evening before: the start skips activity just after midnight that a long break follows, and the end
/// reaches into the next day's small hours. Main thread only.
class ORVANE_EXPORT OrvanePresence : public KeyedObject {
  public:
    static const KeyTable& classKeyTable();
    const KeyTable& keyTable() const override { return classKeyTable(); }

    /// The presence of the local calendar day that holds the date, read through the shared tracker. Never
    /// null; without start and end for a day without use.
    static Ref<OrvanePresence> presenceForDate(Date date);

    const std::optional<Date>& startDate() const { return startDate_; }
    void setStartDate(std::optional<Date> date) { startDate_ = date; }
    const std::optional<Date>& endDate() const { return endDate_; }
    void setEndDate(std::optional<Date> date) { endDate_ = date; }
    /// Always empty in a presence that was computed; for the host's own use.
    const std::vector<Ref<OrvaneRecording>>& recordings() const { return recordings_; }
    void setRecordings(std::vector<Ref<OrvaneRecording>> recordings) { recordings_ = std::move(recordings); }

    /// "DATE • START - END" in the forms that the host's transformers give; "-" for a day without use.
    std::string label() const;
    /// Text for logs.
    std::string description() const;

  private:
    std::optional<Date> startDate_;
    std::optional<Date> endDate_;
    std::vector<Ref<OrvaneRecording>> recordings_;
};

}  // namespace orvane
