#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/internal.h"
#include "foundation/value.h"
#include "store/orvane_recording.h"

namespace orvane {

/// What a poll saw.
struct Sample {
    enum class Kind {
        window,    ///< a normal window is in front
        noWindow,  ///< none is: what is recorded goes on
        end,       ///< sleep or termination: what is recorded ends
    };

    Kind kind = Kind::window;
    std::string identifier = {};  ///< of the application
    Value ownerName = {};
    Value windowName = {};
    bool idle = false;
    std::optional<Date> second = std::nullopt;  ///< when; absent for one that need not wait
};

/// Samples that wait, in order, because another program holds the store's lock: which application they belong
/// to cannot be told before it is free. Taken later they come to the same recordings.
class PostponedSamples {
  public:
    bool isEmpty() const { return samples_.empty(); }
    /// `current` is the recording that the first of the samples may go on with.
    void add(Sample sample, const Ref<OrvaneRecording>& current);
    /// Hands them out; then it is empty.
    std::pair<Ref<OrvaneRecording>, std::vector<Sample>> take();

  private:
    Ref<OrvaneRecording> current_;
    std::vector<Sample> samples_;
};

}  // namespace orvane
