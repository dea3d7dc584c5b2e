#pragma once

#include <unistd.h>

#include "foundation/internal.h"

namespace orvane {

/// An open file, or none for a negative number; closed at the end of its life.
class FileDescriptor {
  public:
    explicit FileDescriptor(int number) : number_(number) {}
    ~FileDescriptor() {
        if (isOpen()) ::close(number_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int number() const { return number_; }
    bool isOpen() const { return number_ >= 0; }

  private:
    int number_;
};

}  // namespace orvane
