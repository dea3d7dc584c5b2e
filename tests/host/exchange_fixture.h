#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/date_range.h"
#include "host/exchange/exchange_format.h"
#include "host/exchange/import_report.h"
#include "platform/simulated/simulated_platform.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"
#include "store/orvane_recording.h"
#include "store/store_stack.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {

/// One store, which is opened anew for every step, so that only what is in the file counts.
class ExchangeStore {
  public:
    explicit ExchangeStore(std::filesystem::path folder) : folder_(std::move(folder)) { open(); }

    ManagedObjectContext& context() { return *stack_->managedObjectContext(); }
    Ref<OrvaneApp> insertApp(std::optional<std::string> identifier, std::optional<std::string> name = {},
                             const Ref<OrvaneGroup>& group = {});
    Ref<OrvaneRecording> insertRecording(const Ref<OrvaneApp>& app, std::optional<double> start,
                                         std::optional<double> end, std::optional<bool> idle = false,
                                         std::optional<std::string> window = "w");
    void save();

    void exportTo(const std::filesystem::path& file, const std::optional<host::DateRange>& range = {});
    /// Fails the test when the file is refused.
    host::ImportReport import(const std::filesystem::path& file);
    /// Writes the text to a file with that extension and imports it.
    host::ImportReport importText(const std::string& text, const std::string& extension);

    /// Each recording with all attributes of its application and group, dates to the last bit, in the order
    /// of the texts. What is absent is "-".
    std::vector<std::string> recordings();
    /// The same of every application and group.
    std::vector<std::string> items();
    /// "start-end window" of each recording, idle ones in brackets, in the order of their starts.
    std::string summary();

  private:
    void open();

    std::filesystem::path folder_;
    std::unique_ptr<StoreStack> stack_;
};

/// A simulated desktop for stores in a folder of their own.
class ExchangeFixture : public testing::Test {
  protected:
    ExchangeFixture();
    ~ExchangeFixture() override;

    SimulatedPlatform& desktop() { return *desktop_; }

    TemporaryFolder folder_;
    std::shared_ptr<SimulatedPlatform> desktop_ = std::make_shared<SimulatedPlatform>();
};

/// Why the file is refused, as "line: reason"; empty when it is not.
std::string refusal(const std::filesystem::path& file);

}  // namespace orvane::test
