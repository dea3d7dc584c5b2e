#include "store/orvane_group.h"

#include "foundation/key_conversion.h"
#include "platform/platform.h"
#include "util/color_text.h"
#include "util/text_encoding.h"
#include "util/unique_strings.h"

namespace orvane {

const KeyTable& OrvaneGroup::classKeyTable() {
    static const KeyTable table{"OrvaneGroup",
                                &_OrvaneGroup::classKeyTable(),
                                {keys::readOnly<"colorValue", &OrvaneGroup::colorValue>({"color"})}};
    return table;
}

void OrvaneGroup::awakeFromInsert() {
    setIdentifier(utf8(uniqueString(Platform::current().uuidSource())));
    setName("New Group");
}

std::optional<Color> OrvaneGroup::colorValue() const { return createColorFromHexTripletsString(color()); }

}  // namespace orvane
