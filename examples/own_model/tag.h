#pragma once

#include "_tag.h"

namespace notes {

class Tag : public _Tag {};

}  // namespace notes
