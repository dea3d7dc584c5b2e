#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "tests/desktops/test_desktop.h"

namespace orvane {

/// A desktop that the tests run on.
struct DesktopKind {
    std::string name;
    /// Programs without which it cannot be had here.
    std::vector<std::string> programs;
    std::function<std::unique_ptr<TestDesktop>()> make;
    /// The backend that has to be chosen on it.
    std::string backend;

    /// The first program that is not installed; empty when all are.
    std::string missingProgram() const;
};

std::ostream& operator<<(std::ostream& stream, const DesktopKind& kind);

std::vector<DesktopKind> desktopKinds();

}  // namespace orvane
