#pragma once

#include "host/exchange/exchange_item.h"

namespace orvane::host {

/// Takes what is exported, in this order: a group before its applications, an application before its
/// recordings. The index that others name them by is their place in the order of these calls.
class ExchangeWriter {
  public:
    virtual ~ExchangeWriter() = default;

    virtual void begin() = 0;
    virtual void group(const GroupItem& group) = 0;
    virtual void application(const ApplicationItem& application) = 0;
    virtual void recording(const RecordingItem& recording) = 0;
};

}  // namespace orvane::host
