#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "foundation/export.h"

namespace orvane {

/// Steps back and forth through changes. What is registered outside an explicit group is gathered in one step
/// until `endStep`. Use on one thread.
class ORVANE_EXPORT UndoManager {
  public:
    using Action = std::function<void()>;

    /// Registers the action that takes back a change just made. Ignored while registration is suspended.
    /// While an undo runs, what is registered becomes the redo, and the other way round.
    void registerUndo(Action action);

    /// Suspensions count: each must be matched by one resumption. A resumption without suspension is ignored.
    void disableUndoRegistration() { ++suspensions_; }
    void enableUndoRegistration() {
        if (suspensions_ > 0) --suspensions_;
    }
    bool isUndoRegistrationEnabled() const { return suspensions_ == 0; }

    /// Explicit groups nest; the outermost is one step.
    void beginUndoGrouping();
    void endUndoGrouping();
    /// Ends the implicit group: what follows is another step.
    void endStep();

    bool canUndo() const { return !undoing_ && (!current_.empty() || !undoStack_.empty()); }
    bool canRedo() const { return !undoing_ && !redoStack_.empty(); }
    /// Takes back, or makes again, one whole step. Does nothing when there is none.
    void undo();
    void redo();

    /// Forgets every step; suspensions stay.
    void removeAllActions();
    /// How many steps are kept, the oldest going first; 0 (at first): no limit.
    void setLevelsOfUndo(std::size_t levels);

  private:
    using Group = std::vector<Action>;
    void close();
    void run(std::vector<Group>& from, std::vector<Group>& to);

    std::vector<Group> undoStack_;
    std::vector<Group> redoStack_;
    Group current_;
    std::size_t depth_ = 0;
    std::size_t suspensions_ = 0;
    std::size_t levels_ = 0;
    bool undoing_ = false;
};

}  // namespace orvane
