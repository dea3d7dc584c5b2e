#pragma once

#include "reporting/orvane_app_for_range.h"

namespace orvane {

/// A group's use within a date range: the views of those of its applications that were used.
class ORVANE_EXPORT OrvaneGroupForRange : public RangeItem {
  public:
    static const KeyTable& classKeyTable();
    const KeyTable& keyTable() const override { return classKeyTable(); }
    static std::set<std::string_view> keyPathsForValuesAffectingDuration() { return {"appsForRange"}; }
    static std::set<std::string_view> keyPathsForValuesAffectingLastUsedDate() { return {"appsForRange"}; }

    const Ref<OrvaneGroup>& group() const { return group_; }
    void setGroup(Ref<OrvaneGroup> group);

    bool isGroup() const override { return true; }
    std::optional<std::string> name() const override;
    void setName(std::optional<std::string_view> name);
    std::optional<std::string> identifier() const override;
    std::optional<std::string> color() const override;
    void setColor(std::optional<std::string_view> color) override;
    std::optional<Color> colorValue() const override;
    /// Locations of all members, also of those not used in the range.
    std::optional<std::set<std::filesystem::path>> URLs() const override;
    DecimalSeconds duration() const override;
    std::vector<Ref<OrvaneAppForRange>> appsForRange() const override { return appsForRange_; }
    void setAppsForRange(std::vector<Ref<OrvaneAppForRange>> apps);
    bool editableName() const override { return true; }
    std::vector<Ref<OrvaneRecording>> recordings() const override;
    void setMainContext() override;

  private:
    std::vector<Ref<OrvaneAppForRange>> appsForRange_;
    Ref<OrvaneGroup> group_;
};

}  // namespace orvane
