#include "platform/simulated/simulated_platform.h"

namespace orvane {

SimulatedPlatform::SimulatedPlatform() : runLoop_(clock_), windowServer_(clock_), fileManager_(workspace_) {}
SimulatedPlatform::~SimulatedPlatform() = default;

}  // namespace orvane
