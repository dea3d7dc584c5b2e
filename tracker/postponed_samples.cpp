#include "tracker/postponed_samples.h"

namespace orvane {

namespace {

bool sameButForTheTime(const Sample& left, const Sample& right) {
    return left.kind == right.kind && left.identifier == right.identifier &&
           left.windowName == right.windowName && left.idle == right.idle;
}

}  // namespace

void PostponedSamples::add(Sample sample, const Ref<OrvaneRecording>& current) {
    if (samples_.empty()) current_ = current;
    // Between the first and the last of equal samples nothing happens. One without a title is never the same.
    const std::size_t count = samples_.size();
    if (count >= 2 && !sample.windowName.isNone() && sameButForTheTime(samples_[count - 1], sample) &&
        sameButForTheTime(samples_[count - 2], sample))
        samples_.pop_back();
    samples_.push_back(std::move(sample));
}

std::pair<Ref<OrvaneRecording>, std::vector<Sample>> PostponedSamples::take() {
    return {std::exchange(current_, nullptr), std::exchange(samples_, {})};
}

}  // namespace orvane
