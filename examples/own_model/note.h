#pragma once

#include "_note.h"

namespace notes {

class Note : public _Note {};

}  // namespace notes
