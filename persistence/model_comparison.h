#pragma once

#include <string>
#include <vector>

#include "foundation/internal.h"
#include "persistence/model.h"

namespace orvane {

/// One difference between two versions of a model that matters to stored rows. Class names, delete rules,
/// default values and indexes do not: they are taken from the new version as they are.
struct ModelChange {
    enum class Kind {
        entityAdded,
        entityRemoved,
        entityRenamed,
        attributeAdded,
        attributeRemoved,
        attributeRenamed,
        attributeRetyped,
        attributeBecameRequired,
        attributeBecameOptional,
        relationshipAdded,
        relationshipRemoved,
        relationshipRenamed,
        relationshipRedirected,  ///< leads to another entity, or back by another relationship
        relationshipBecameToMany,
        relationshipBecameToOne,
        relationshipBecameRequired,
        relationshipBecameOptional,
    };

    Kind kind;
    // What there is of it on either side, in the models that were compared.
    const EntityDescription* oldEntity = nullptr;
    const EntityDescription* newEntity = nullptr;
    const AttributeDescription* oldAttribute = nullptr;
    const AttributeDescription* newAttribute = nullptr;
    const RelationshipDescription* oldRelationship = nullptr;
    const RelationshipDescription* newRelationship = nullptr;
};

/// All changes that lead from one version to the other. Entities and properties of the two belong together
/// when they have the same renaming identifier; else when the new one's renaming identifier is the old one's
/// name; else when the names are the same. So a later version that keeps the identifiers brings files of
/// every version up to date. An attribute and a relationship never belong together.
std::vector<ModelChange> compareModels(const ManagedObjectModel& oldModel,
                                       const ManagedObjectModel& newModel);

/// Whether every value of the one type is a value of the other: booleans and integers widen to larger
/// integers and, up to 32 bits, to reals and decimals.
bool isWidening(AttributeType from, AttributeType to);

/// Why rows cannot be carried over through this change; empty when they can.
std::string obstacleTo(const ModelChange& change);

}  // namespace orvane
