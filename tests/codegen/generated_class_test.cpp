#include <gtest/gtest.h>

#include "foundation/observing.h"
#include "kinds_sample.h"
#include "kinds_sample_keys.h"
#include "persistence/managed_object_context.h"
#include "tests/persistence/temporary_folder.h"

namespace kinds {
namespace {

using orvane::Value;

/// A class with one attribute of each type, generated for a namespace of its own, and a store of such
/// objects.
class GeneratedClass : public testing::Test {
  protected:
    GeneratedClass() {
        orvane::Error error;
        auto model = orvane::ManagedObjectModel::modelWithContentsOfURL(
            ORVANE_SOURCE_DIR "/tests/codegen/Kinds.momd", &error);
        if (!model) throw std::runtime_error(error.localizedDescription());
        auto coordinator = std::make_shared<orvane::PersistentStoreCoordinator>(
            std::move(model), std::vector{&orvane::entityClass<KindsSample>()});
        if (!coordinator->addPersistentStore(orvane::NSSQLiteStoreType, {}, folder_ / "kinds.db", {}, &error))
            throw std::runtime_error(error.localizedDescription());
        context_.setPersistentStoreCoordinator(std::move(coordinator));
    }

    orvane::test::TemporaryFolder folder_;
    orvane::ManagedObjectContext context_;
};

void fill(KindsSample& sample) {
    sample.setFlag(true);
    sample.setSmall(-7);
    sample.setLarge(std::int64_t{1} << 62);
    sample.setRatio(0.1);
    sample.setElapsed(std::chrono::microseconds(1234567));
    sample.setTaken(orvane::dateFromSecondsSinceEpoch(1e9 + 0.5));
    sample.setURL("file:///a");
    sample.setPicture(orvane::Data{0, 255, 0});
}

void expectFilled(const KindsSample& sample) {
    EXPECT_EQ(sample.flag(), true);
    EXPECT_TRUE(sample.flagValue());
    EXPECT_EQ(sample.small(), -7);
    EXPECT_EQ(sample.large(), std::int64_t{1} << 62);
    EXPECT_EQ(sample.ratio(), 0.1);
    EXPECT_EQ(sample.elapsed(), std::chrono::microseconds(1234567));
    EXPECT_EQ(sample.taken(), orvane::dateFromSecondsSinceEpoch(1e9 + 0.5));
    EXPECT_EQ(sample.URL(), "file:///a");
    EXPECT_EQ(sample.picture(), (orvane::Data{0, 255, 0}));
}

TEST_F(GeneratedClass, everyKindOfValueIsStoredUndoneAndRead) {
    const auto sample = KindsSample::insertInManagedObjectContext(context_);
    ASSERT_TRUE(context_.save());
    EXPECT_EQ(sample->picture(), std::nullopt);
    EXPECT_EQ(sample->elapsed(), std::nullopt);
    fill(*sample);
    expectFilled(*sample);
    context_.processPendingChanges();
    sample->setPicture(std::nullopt);
    sample->setRatio(std::nullopt);
    sample->setURL("file:///b");
    context_.processPendingChanges();
    context_.undoManager()->undo();
    expectFilled(*sample);
    ASSERT_TRUE(context_.save());
    context_.reset();
    const auto read = context_.fetch<KindsSample>({"Sample"});
    ASSERT_EQ(read.size(), 1U);
    expectFilled(*read[0]);
}

TEST_F(GeneratedClass, keysReachTheSameValues) {
    const auto sample = KindsSample::insertInManagedObjectContext(context_);
    fill(*sample);
    const auto other = KindsSample::insertInManagedObjectContext(context_);
    for (const orvane::Key& key : sample->keyTable().keys()) {
        if (key.name == KindsSampleRelationships.parts) continue;
        other->setValueForKey(sample->valueForKey(key.name), key.name);
    }
    expectFilled(*other);
    EXPECT_EQ(other->valueForKey(KindsSampleAttributes.picture), Value(orvane::Data{0, 255, 0}));
    EXPECT_THROW(other->setValueForKey(Value("one"), KindsSampleAttributes.large), orvane::WrongValueError);
    EXPECT_THROW(other->setValueForKey(Value(0.5), KindsSampleAttributes.small), orvane::WrongValueError);

    int told = 0;
    const auto token = observe(*other, "flagValue", [&](const orvane::Change&) { ++told; });
    other->setFlag(std::nullopt);
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(other->flagValue());
}

TEST_F(GeneratedClass, relationshipsLeadToTypedObjectsAndToPlainOnes) {
    const auto whole = KindsSample::insertInManagedObjectContext(context_);
    const auto part = KindsSample::insertInManagedObjectContext(context_);
    part->setWhole(whole);
    EXPECT_EQ(whole->parts(), std::vector{part});
    EXPECT_TRUE(whole->partsSet().contains(*part));
    const orvane::Ref<orvane::ManagedObject> origin = context_.insertNewObject("Origin");
    origin->setValueForKey("here", "place");
    part->setOrigin(origin);
    EXPECT_EQ(part->valueForKeyPath("origin.place"), Value("here"));
    EXPECT_EQ(origin->valueForKeyPath("samples.@count"), Value(1));
    EXPECT_EQ(KindsSample::entityInManagedObjectContext(context_)->className, "KindsSample");
    EXPECT_EQ(KindsSample::entityInManagedObjectContext(orvane::ManagedObjectContext()), nullptr);
}

}  // namespace
}  // namespace kinds
