// Notes with tags, kept in "notes.db" among the temporary files, on a model of this program's own.
#include <orvane/orvane.h>
#include <iostream>

#include "note.h"
#include "tag.h"

int main() {
    using namespace notes;
    orvane::Error error;
    auto model = orvane::ManagedObjectModel::modelWithContentsOfURL(NOTES_MODEL, &error);
    if (!model) return std::cerr << error.localizedDescription() << "\n", 1;
    auto coordinator = std::make_shared<orvane::PersistentStoreCoordinator>(
        model, std::vector{&orvane::entityClass<Note>(), &orvane::entityClass<Tag>()});
    const auto file = std::filesystem::temp_directory_path() / "notes.db";
    if (!coordinator->addPersistentStore(orvane::NSSQLiteStoreType, {}, file, {}, &error))
        return std::cerr << error.localizedDescription() << "\n", 1;

    orvane::ManagedObjectContext context;
    context.setPersistentStoreCoordinator(coordinator);
    const auto note = Note::insertInManagedObjectContext(context);
    note->setText("buy bread");
    note->setTag(Tag::insertInManagedObjectContext(context));
    note->tag()->setLabel("home");
    if (!context.save(&error)) return std::cerr << error.localizedDescription() << "\n", 1;

    const auto open = orvane::Predicate::withFormat("tag.label == 'home' AND done != TRUE");
    for (const auto& found : context.fetch<Note>({"Note", open}))
        std::cout << *found->text() << ": " << *found->tag()->label() << "\n";
    return 0;
}
