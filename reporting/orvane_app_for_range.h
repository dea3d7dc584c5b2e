#pragma once

#include "reporting/range_item.h"

namespace orvane {

/// One application's use within a date range.
class ORVANE_EXPORT OrvaneAppForRange : public RangeItem {
  public:
    static const KeyTable& classKeyTable();
    const KeyTable& keyTable() const override { return classKeyTable(); }
    static std::set<std::string_view> keyPathsForValuesAffectingDuration() { return {"recordings"}; }
    static std::set<std::string_view> keyPathsForValuesAffectingLastUsedDate() { return {"recordings"}; }

    const Ref<OrvaneApp>& app() const { return app_; }
    void setApp(Ref<OrvaneApp> app);

    bool isGroup() const override { return false; }
    std::optional<std::string> name() const override;
    std::optional<std::string> identifier() const override;
    std::optional<std::string> color() const override;
    void setColor(std::optional<std::string_view> color) override;
    std::optional<Color> colorValue() const override;
    std::optional<std::filesystem::path> URL() const;
    std::optional<std::string> path() const;
    std::optional<std::set<std::filesystem::path>> URLs() const override;
    DecimalSeconds duration() const override;
    /// The latest end of the recordings; none without any.
    std::optional<Date> lastUsedDate() const;
    std::vector<Ref<OrvaneAppForRange>> appsForRange() const override { return {}; }
    bool editableName() const override { return false; }

    std::vector<Ref<OrvaneRecording>> recordings() const override { return recordings_; }
    void setRecordings(std::vector<Ref<OrvaneRecording>> recordings);

    /// Takes name and colour from the installed application again. Does not save.
    void resetColor(const void* sender = nullptr);
    void setMainContext() override;

  private:
    std::vector<Ref<OrvaneRecording>> recordings_;
    Ref<OrvaneApp> app_;
};

}  // namespace orvane
