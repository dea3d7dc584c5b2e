#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/keyed_object.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"
#include "store/orvane_recording.h"

namespace orvane {

class OrvaneAppForRange;

/// What the two kinds of range view have in common, so that one outline can show groups and applications side
/// by side. Everything is computed on each read from the stored objects. Use on the thread of the context
/// whose objects the view holds: the report's before `setMainContext`, the main thread after it.
class ORVANE_EXPORT RangeItem : public KeyedObject {
  public:
    virtual bool isGroup() const = 0;

    virtual std::optional<std::string> name() const = 0;
    /// The application's bundle identifier, or the group's unique text.
    virtual std::optional<std::string> identifier() const = 0;
    std::optional<std::string> uid() const { return identifier(); }
    /// The stored colour text.
    virtual std::optional<std::string> color() const = 0;
    virtual void setColor(std::optional<std::string_view> color) = 0;
    virtual std::optional<Color> colorValue() const = 0;
    /// Where the applications are installed; absent for an application whose location is unknown.
    virtual std::optional<std::set<std::filesystem::path>> URLs() const = 0;
    virtual DecimalSeconds duration() const = 0;
    /// The views beneath this one, longest first; none beneath an application.
    virtual std::vector<Ref<OrvaneAppForRange>> appsForRange() const = 0;
    /// Whether the name may be edited by the user.
    virtual bool editableName() const = 0;
    /// The recordings behind the duration; a group's are in no order.
    virtual std::vector<Ref<OrvaneRecording>> recordings() const = 0;

    /// Bounds of the range as the report was given them.
    const std::optional<Date>& fromDate() const { return fromDate_; }
    void setFromDate(std::optional<Date> date);
    const std::optional<Date>& toDate() const { return toDate_; }
    void setToDate(std::optional<Date> date);

    /// Exchanges the stored objects for those of the main context, after a report in a child context of it.
    /// Call on the main thread, when the child's thread is done. Throws std::logic_error when the main
    /// context does not have a recording; an application or group that it does not have becomes absent.
    virtual void setMainContext() = 0;

  protected:
    /// The keys that both kinds share.
    static const KeyTable& commonKeyTable();

  private:
    std::optional<Date> fromDate_;
    std::optional<Date> toDate_;
};

}  // namespace orvane
