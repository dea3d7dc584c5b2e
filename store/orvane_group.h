#pragma once

#include <optional>

#include "foundation/color.h"
#include "store/_orvane_group.h"

namespace orvane {

/// The user's own category of applications.
class ORVANE_EXPORT OrvaneGroup : public _OrvaneGroup {
  public:
    static const KeyTable& classKeyTable();

    /// Gives the group an identifier of its own and the name "New Group".
    void awakeFromInsert() override;

    /// The display colour: opaque white without a stored text, none for a text that is no colour.
    std::optional<Color> colorValue() const;
};

}  // namespace orvane
