// Database files: a store of which bytes were changed, or any bytes at all. It is opened, read in full,
// checked and recovered.

#include <cstring>
#include <fstream>

#include "fuzz/common.h"
#include "persistence/store_check.h"
#include "persistence/store_recovery.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"
#include "store/orvane_recording.h"

namespace {

using namespace orvane;

std::string bytesOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeBytes(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// A store with trees of two levels and a text that takes pages of its own.
std::string pristineStore() {
    const fuzz::ScratchFolder folder;
    const auto file = folder.path() / "pristine.db";
    {
        ManagedObjectContext context;
        context.setPersistentStoreCoordinator(fuzz::openStore(file));
        const auto group = OrvaneGroup::insertInManagedObjectContext(context);
        group->setName("Work");
        const auto app = OrvaneApp::insertInManagedObjectContext(context);
        app->setIdentifier("org.example.Editor");
        app->setName("Editor");
        app->setGroup(group);
        for (int i = 0; i < 150; ++i) {
            const auto recording = OrvaneRecording::insertInManagedObjectContext(context);
            recording->setStartDate(dateFromSecondsSinceEpoch(1772438400 + i * 10));
            recording->setEndDate(dateFromSecondsSinceEpoch(1772438409.5 + i * 10));
            recording->setApplication(app);
            recording->setIdle(i % 7 == 0);
            recording->setWindowName(i == 60 ? std::string(9000, 'w') : "window " + std::to_string(i));
        }
        fuzz::demand(context.save(), "a store can be written");
    }
    return bytesOf(file);
}

/// The first byte tells what follows: a file (0), or changes to the pristine store (anything else), each an
/// offset of three bytes and a byte to write there, or, with a highest bit set, where the file ends.
std::string mutated(const std::uint8_t* data, std::size_t size) {
    static const std::string pristine = pristineStore();
    if (size == 0 || data[0] == 0) return std::string(fuzz::textOf(data, size).substr(size == 0 ? 0 : 1));
    std::string bytes = pristine;
    for (std::size_t i = 1; i + 4 <= size; i += 4) {
        const std::size_t offset = (data[i] & 0x7fU) << 16U | data[i + 1] << 8U | data[i + 2];
        if ((data[i] & 0x80U) != 0)
            bytes.resize(offset % pristine.size() + 1);
        else
            bytes[offset % bytes.size()] = static_cast<char>(data[i + 3]);
    }
    return bytes;
}

void readInFull(const std::filesystem::path& file) {
    const auto coordinator = fuzz::openStore(file);
    if (!coordinator) return;
    ManagedObjectContext context;
    context.setPersistentStoreCoordinator(coordinator);
    for (const auto& recording : context.fetch<OrvaneRecording>({"Recording"})) {
        recording->debugInfo();
        recording->duration();
    }
    for (const auto& app : context.fetch<OrvaneApp>({"Application"})) {
        app->duration();
        app->lastUsedDate();
        app->recordings();
    }
    for (const auto& group : context.fetch<OrvaneGroup>({"Group"})) group->applications();
    if (const auto app = OrvaneApp::insertInManagedObjectContext(context)) app->setName("new");
    context.save();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::ScratchFolder folder;
    const auto damaged = folder.path() / "damaged.db";
    const auto saved = folder.path() / "saved.db";
    const std::string bytes = mutated(data, size);
    writeBytes(damaged, bytes);
    const Date today = dateFromSecondsSinceEpoch(1800000000);
    const auto ignore = [](const std::string&) {};
    checkStore(damaged, *fuzz::libraryModel(), today, ignore, nullptr);
    fuzz::demand(bytesOf(damaged) == bytes, "a check leaves the file as it is");
    if (recoverStore(damaged, saved, *fuzz::libraryModel(), {}, nullptr)) {
        const auto check = checkStore(saved, *fuzz::libraryModel(), today, ignore, nullptr);
        fuzz::demand(check && check->isSound(), "a recovered store is sound");
        std::filesystem::remove(saved);
    }
    fuzz::demand(bytesOf(damaged) == bytes, "a recovery leaves the file as it is");
    readInFull(damaged);
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        std::filesystem::remove_all(entry.path());
    return 0;
}
