#include "tests/desktops/tracked_desktop.h"
#include "tests/persistence/temporary_folder.h"
#include "tests/platform/main_loop_wait.h"
#include "tracker/orvane.h"

namespace orvane {
namespace {

using std::chrono::seconds;

/// The tracker on a real desktop; the day begins at midnight and time stands still while the desktop works.
class RecordingsTest : public TrackedDesktop {
  protected:
    void startTracker() {
        timed_ = std::make_shared<VirtualTimePlatform>(platform());
        timed_->userDefaults().setObject(true, orvaneEnabledDefault);
        timed_->userDefaults().setObject(true, orvaneLoggingDefault);
        timed_->logSink().setHandler([this](std::string_view line) {
            const auto second = std::chrono::duration_cast<seconds>(timed_->clock().time());
            (log_ += std::to_string(second.count()) + ": ").append(line) += '\n';
        });
        Platform::install(timed_);
        Orvane::sharedOrvane(folder_.path());
    }
    void TearDown() override {
        endTracker();
        TrackedDesktop::TearDown();
    }
    void endTracker() {
        if (!timed_) return;
        Orvane::resetShared();
        Platform::install(nullptr);
        timed_.reset();
    }

    /// Ten seconds, and the poll at their end.
    void pass() { timed_->runLoop().advanceTo(timed_->clock().time() + seconds(10)); }
    /// The desktop has told the tracker of another application, or of a wake.
    bool isRecording(const std::string& title) {
        return waitUntil(
            [&] {
                const auto recording = Orvane::sharedOrvane().currentRecording();
                return recording && recording->windowName() == Value(title);
            },
            60);
    }
    bool isRecordingNothing() {
        return waitUntil([] { return !Orvane::sharedOrvane().currentRecording(); }, 60);
    }

    /// What stands in the file: application, title, "idle", first and last second.
    std::string recordings() {
        return test::runSQL(folder_ / "Orvaning.db",
                            "SELECT a.identifier, r.windowName, iif(r.idle, 'idle', 'active'), "
                            "CAST(r.startDate AS INTEGER), CAST(r.endDate AS INTEGER) FROM Recording r "
                            "JOIN Application a ON a._id = r.application ORDER BY r._id");
    }

    test::TemporaryFolder folder_;
    /// What the tracker did, with the second.
    std::string log_;
    std::shared_ptr<VirtualTimePlatform> timed_;
};

INSTANTIATE_TEST_SUITE_P(All, RecordingsTest, ::testing::ValuesIn(desktopKinds()),
                         [](const auto& kind) { return kind.param.name; });

TEST_P(RecordingsTest, ExactlyWhatHappenedStandsInTheFile) {
    auto& notes = openInFront("notes", "Shopping");
    // A notice that comes late would lead to a poll of its own.
    ASSERT_TRUE(told({"org.example.Notes"}));
    startTracker();
    pass();
    desktop().setTitle(notes, "Groceries");
    ASSERT_TRUE(frontBecomes("org.example.Notes: Groceries"));
    pass();
    pass();
    auto& mail = openInFront("mail", "Inbox");
    ASSERT_TRUE(isRecording("Inbox"));
    pass();
    desktop().activate(notes);
    ASSERT_TRUE(isRecording("Groceries"));
    pass();
    desktop().minimize(notes);
    ASSERT_TRUE(isRecording("Inbox"));
    pass();

    // From here on a second of rest counts as a minute.
    timed_->setIdleFactor(60);
    ASSERT_TRUE(waitUntil([this] { return idle() > 3; }, 60));
    pass();
    desktop().touch();
    ASSERT_TRUE(waitUntil([this] { return idle() < 0.5; }, 60));
    pass();
    timed_->setIdleFactor(0);

    desktop().lock(true);
    ASSERT_TRUE(isRecordingNothing());
    pass();
    desktop().lock(false);
    ASSERT_TRUE(isRecording("Inbox"));
    pass();
    desktop().sleep(true);
    ASSERT_TRUE(isRecordingNothing());
    pass();
    desktop().sleep(false);
    ASSERT_TRUE(isRecording("Inbox"));
    desktop().close(mail);
    ASSERT_TRUE(frontBecomes("none"));

    desktop().kill();
    ASSERT_TRUE(isRecordingNothing());
    pass();
    desktop().start();
    openInFront("notes", "Again");
    ASSERT_TRUE(isRecording("Again"));
    pass();
    endTracker();

    EXPECT_EQ(recordings(),
              "org.example.Notes|Shopping|active|0|20 "
              "org.example.Notes|Groceries|active|20|30 "
              "org.example.Mail|Inbox|active|30|40 "
              "org.example.Notes|Groceries|active|40|50 "
              "org.example.Mail|Inbox|active|50|70 "
              "org.example.Mail|Inbox|idle|70|80 "
              "org.example.Mail|Inbox|active|80|80 "
              "org.example.Mail|Inbox|active|90|100 "
              "org.example.Mail|Inbox|active|110|110 "
              "org.example.Notes|Again|active|120|130")
        << log_;
}

}  // namespace
}  // namespace orvane
