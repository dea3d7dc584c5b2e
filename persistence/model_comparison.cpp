#include "persistence/model_comparison.h"

#include <algorithm>
#include <map>

#include "persistence/model_writer.h"

namespace orvane {

namespace {

using Kind = ModelChange::Kind;

template <class Description>
struct Pairing {
    std::map<const Description*, const Description*> newOfOld;
    std::map<const Description*, const Description*> oldOfNew;
};

template <class Description>
Pairing<Description> pair(const std::vector<Description>& olds, const std::vector<Description>& news) {
    Pairing<Description> result;
    const auto pairWhere = [&](const auto& belongTogether) {
        for (const Description& current : news)
            for (const Description& old : olds)
                if (!result.oldOfNew.contains(&current) && !result.newOfOld.contains(&old) &&
                    belongTogether(old, current)) {
                    result.oldOfNew[&current] = &old;
                    result.newOfOld[&old] = &current;
                }
    };
    // The strongest sign first, over all of them, so that two that changed names are not mistaken for each
    // other.
    pairWhere([](const auto& old, const auto& current) {
        return old.renamingIdentifier == current.renamingIdentifier;
    });
    pairWhere([](const auto& old, const auto& current) { return old.name == current.renamingIdentifier; });
    pairWhere([](const auto& old, const auto& current) { return old.name == current.name; });
    return result;
}

class Comparison {
  public:
    Comparison(const ManagedObjectModel& oldModel, const ManagedObjectModel& newModel)
        : oldModel_(oldModel),
          newModel_(newModel),
          entities_(pair(oldModel.entities(), newModel.entities())) {}

    std::vector<ModelChange> run() {
        for (const auto& [old, current] : entities_.newOfOld) {
            const auto pairs = pair(old->relationships, current->relationships);
            relationships_.newOfOld.insert(pairs.newOfOld.begin(), pairs.newOfOld.end());
            relationships_.oldOfNew.insert(pairs.oldOfNew.begin(), pairs.oldOfNew.end());
        }
        for (const EntityDescription& old : oldModel_.entities())
            if (!entities_.newOfOld.contains(&old)) add({.kind = Kind::entityRemoved, .oldEntity = &old});
        for (const EntityDescription& current : newModel_.entities()) {
            const auto old = entities_.oldOfNew.find(&current);
            if (old == entities_.oldOfNew.end()) {
                add({.kind = Kind::entityAdded, .newEntity = &current});
                continue;
            }
            oldEntity_ = old->second;
            newEntity_ = &current;
            if (oldEntity_->name != newEntity_->name) addHere({.kind = Kind::entityRenamed});
            compareAttributes();
            compareRelationships();
        }
        return std::move(changes_);
    }

  private:
    void add(const ModelChange& change) { changes_.push_back(change); }
    void addHere(ModelChange change) {
        change.oldEntity = oldEntity_;
        change.newEntity = newEntity_;
        add(change);
    }

    void compareAttributes() {
        const auto pairs = pair(oldEntity_->attributes, newEntity_->attributes);
        for (const AttributeDescription& old : oldEntity_->attributes)
            if (!pairs.newOfOld.contains(&old))
                addHere({.kind = Kind::attributeRemoved, .oldAttribute = &old});
        for (const AttributeDescription& current : newEntity_->attributes) {
            const auto found = pairs.oldOfNew.find(&current);
            if (found == pairs.oldOfNew.end()) {
                addHere({.kind = Kind::attributeAdded, .newAttribute = &current});
                continue;
            }
            const AttributeDescription& old = *found->second;
            const auto note = [&](bool changed, Kind kind) {
                if (changed) addHere({.kind = kind, .oldAttribute = &old, .newAttribute = &current});
            };
            note(old.name != current.name, Kind::attributeRenamed);
            note(old.type != current.type, Kind::attributeRetyped);
            note(old.optional && !current.optional, Kind::attributeBecameRequired);
            note(!old.optional && current.optional, Kind::attributeBecameOptional);
        }
    }

    void compareRelationships() {
        for (const RelationshipDescription& old : oldEntity_->relationships)
            if (!relationships_.newOfOld.contains(&old))
                addHere({.kind = Kind::relationshipRemoved, .oldRelationship = &old});
        for (const RelationshipDescription& current : newEntity_->relationships) {
            const auto found = relationships_.oldOfNew.find(&current);
            if (found == relationships_.oldOfNew.end()) {
                addHere({.kind = Kind::relationshipAdded, .newRelationship = &current});
                continue;
            }
            const RelationshipDescription& old = *found->second;
            const auto note = [&](bool changed, Kind kind) {
                if (changed) addHere({.kind = kind, .oldRelationship = &old, .newRelationship = &current});
            };
            note(old.name != current.name, Kind::relationshipRenamed);
            note(isRedirected(old, current), Kind::relationshipRedirected);
            note(!old.toMany && current.toMany, Kind::relationshipBecameToMany);
            note(old.toMany && !current.toMany, Kind::relationshipBecameToOne);
            note(old.optional && !current.optional, Kind::relationshipBecameRequired);
            note(!old.optional && current.optional, Kind::relationshipBecameOptional);
        }
    }

    bool isRedirected(const RelationshipDescription& old, const RelationshipDescription& current) const {
        const EntityDescription& oldDestination = destinationOf(oldModel_, old);
        const EntityDescription& newDestination = destinationOf(newModel_, current);
        const auto destination = entities_.newOfOld.find(&oldDestination);
        if (destination == entities_.newOfOld.end() || destination->second != &newDestination) return true;
        const auto inverse = relationships_.newOfOld.find(oldDestination.relationship(old.inverse));
        return inverse == relationships_.newOfOld.end() ||
               inverse->second != newDestination.relationship(current.inverse);
    }

    const ManagedObjectModel& oldModel_;
    const ManagedObjectModel& newModel_;
    Pairing<EntityDescription> entities_;
    Pairing<RelationshipDescription> relationships_;  // of all entities that belong together
    const EntityDescription* oldEntity_ = nullptr;
    const EntityDescription* newEntity_ = nullptr;
    std::vector<ModelChange> changes_;
};

}  // namespace

std::vector<ModelChange> compareModels(const ManagedObjectModel& oldModel,
                                       const ManagedObjectModel& newModel) {
    return Comparison(oldModel, newModel).run();
}

bool isWidening(AttributeType from, AttributeType to) {
    switch (from) {
        case AttributeType::boolean:
            return to == AttributeType::integer32 || to == AttributeType::integer64 ||
                   to == AttributeType::real || to == AttributeType::decimal;
        case AttributeType::integer32:
            return to == AttributeType::integer64 || to == AttributeType::real ||
                   to == AttributeType::decimal;
        default:
            return false;
    }
}

std::string obstacleTo(const ModelChange& change) {
    switch (change.kind) {
        case Kind::attributeAdded:
            return change.newAttribute->optional || !change.newAttribute->defaultValue.isNone()
                       ? ""
                       : "it is new and must have a value, but has no default value for old objects";
        case Kind::attributeBecameRequired:
            return change.newAttribute->defaultValue.isNone()
                       ? "it must have a value now, but has no default value for objects without one"
                       : "";
        case Kind::attributeRetyped:
            return isWidening(change.oldAttribute->type, change.newAttribute->type)
                       ? ""
                       : std::string("values of type ") + nameOfType(change.oldAttribute->type) +
                             " cannot all become values of type " + nameOfType(change.newAttribute->type);
        case Kind::relationshipAdded:
            return change.newRelationship->optional || change.newRelationship->toMany
                       ? ""
                       : "it is new and must lead to an object, but for old objects there is none";
        case Kind::relationshipBecameRequired:
            return change.newRelationship->toMany
                       ? ""
                       : "it must lead to an object now, and old ones may have none";
        case Kind::relationshipRedirected:
            return "it leads elsewhere now";
        case Kind::relationshipBecameToOne:
            return "it may lead to several objects and shall lead to one";
        case Kind::relationshipBecameToMany:
        case Kind::relationshipBecameOptional:
        case Kind::relationshipRemoved:
        case Kind::relationshipRenamed:
        case Kind::attributeBecameOptional:
        case Kind::attributeRemoved:
        case Kind::attributeRenamed:
        case Kind::entityAdded:
        case Kind::entityRemoved:
        case Kind::entityRenamed:
            return "";
    }
    return "";
}

}  // namespace orvane
