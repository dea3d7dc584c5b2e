#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/simulated/simulated_platform.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"
#include "store/orvane_recording.h"
#include "store/store_stack.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {

/// A simulated desktop with an empty user folder, and a store stack that lies in it.
class StoreFixture : public testing::Test {
  protected:
    StoreFixture() {
        desktop().fileManager().setApplicationSupportDirectory(folder_ / "share");
        desktop().fileManager().setResourceDirectory(ORVANE_SOURCE_DIR "/store");
        desktop().hostApplication().setErrorHandler([this](const Error& error) { errors_.push_back(error); });
        desktop().logSink().setHandler([this](std::string_view line) { lines_.emplace_back(line); });
        Platform::install(desktop_);
    }
    ~StoreFixture() override {
        stack_.reset();
        Platform::install(nullptr);
    }

    SimulatedPlatform& desktop() { return *desktop_; }
    StoreStack& stack() { return *stack_; }
    /// The main context; a test that asks for it expects that it can be had.
    OrvaneManagedObjectContext& context() {
        OrvaneManagedObjectContext* context = stack_->managedObjectContext();
        if (!context) throw std::runtime_error("no main context");
        return *context;
    }
    std::filesystem::path database() const { return folder_ / "share" / "Orvane" / "Orvaning.db"; }
    /// Domain and code of each error that was shown.
    std::vector<std::string> shownErrors() const {
        std::vector<std::string> result;
        for (const Error& error : errors_)
            result.push_back(error.domain() + " " + std::to_string(error.code()));
        return result;
    }

    template <class T>
    Ref<T> insert() {
        return T::insertInManagedObjectContext(context());
    }
    Ref<OrvaneRecording> record(const Ref<OrvaneApp>& app, std::optional<double> start,
                                std::optional<double> end, std::optional<bool> idle = false) {
        const auto recording = insert<OrvaneRecording>();
        recording->setApplication(app);
        if (start) recording->setStartDate(dateFromSecondsSinceEpoch(*start));
        if (end) recording->setEndDate(dateFromSecondsSinceEpoch(*end));
        recording->setIdle(idle);
        return recording;
    }
    /// Saves, and lets go of everything: what is read next comes from the file.
    void startAnew() {
        Error error;
        ASSERT_TRUE(context().save(&error)) << error.localizedDescription();
        context().reset();
    }
    template <class T>
    Ref<T> only() {
        const auto found = context().fetch<T>({std::string(T::entityName())});
        return found.size() == 1 ? found.front() : nullptr;
    }

    TemporaryFolder folder_;
    std::shared_ptr<SimulatedPlatform> desktop_ = std::make_shared<SimulatedPlatform>();
    std::unique_ptr<StoreStack> stack_ = std::make_unique<StoreStack>();
    std::vector<Error> errors_;
    std::vector<std::string> lines_;
};

}  // namespace orvane::test
