#include "persistence/undo_manager.h"

namespace orvane {

void UndoManager::registerUndo(Action action) {
    if (!isUndoRegistrationEnabled()) return;
    current_.push_back(std::move(action));
    if (!undoing_) redoStack_.clear();
}

void UndoManager::beginUndoGrouping() {
    if (depth_ == 0 && !undoing_) close();
    ++depth_;
}

void UndoManager::endUndoGrouping() {
    if (depth_ == 0) return;
    if (--depth_ == 0 && !undoing_) close();
}

void UndoManager::endStep() {
    if (depth_ == 0 && !undoing_) close();
}

void UndoManager::close() {
    if (current_.empty()) return;
    undoStack_.push_back(std::move(current_));
    current_.clear();
    if (levels_ > 0 && undoStack_.size() > levels_) undoStack_.erase(undoStack_.begin());
}

void UndoManager::run(std::vector<Group>& from, std::vector<Group>& to) {
    if (undoing_) return;
    depth_ = 0;
    close();
    if (from.empty()) return;
    Group group = std::move(from.back());
    from.pop_back();
    undoing_ = true;
    for (auto action = group.rbegin(); action != group.rend(); ++action) (*action)();
    undoing_ = false;
    if (!current_.empty()) to.push_back(std::move(current_));
    current_.clear();
}

void UndoManager::undo() { run(undoStack_, redoStack_); }

void UndoManager::redo() { run(redoStack_, undoStack_); }

void UndoManager::removeAllActions() {
    undoStack_.clear();
    redoStack_.clear();
    current_.clear();
}

void UndoManager::setLevelsOfUndo(std::size_t levels) {
    levels_ = levels;
    if (levels_ > 0 && undoStack_.size() > levels_)
        undoStack_.erase(undoStack_.begin(), undoStack_.end() - static_cast<std::ptrdiff_t>(levels_));
}

}  // namespace orvane
