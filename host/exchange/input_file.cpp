#include "host/exchange/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/exchange/interruption.h"
#include "host/exchange/progress.h"

namespace orvane::host {

namespace {

constexpr std::size_t bufferSize = 1 << 18;

}  // namespace

InputFile::InputFile(const std::filesystem::path& file, Progress& progress)
    : name_(file == "-" ? "Standard input" : "The file \"" + file.string() + "\""), progress_(progress) {
    descriptor_ = file == "-" ? ::dup(STDIN_FILENO) : ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor_ < 0) {
        fail(errno);
        return;
    }
    struct stat status {};
    if (::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode))
        size_ = static_cast<std::uint64_t>(status.st_size);
}

InputFile::~InputFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

bool InputFile::readLine(std::string& line) {
    line.clear();
    if (peek() == end) return false;
    while (peek() != end) {
        const auto from = buffer_.begin() + static_cast<std::ptrdiff_t>(place_);
        const auto to = std::find(from, buffer_.end(), '\n');
        line.append(from, to);
        if (line.size() > longestPiece) throw InputProblem(line_, "the line is too long");
        place_ = static_cast<std::size_t>(to - buffer_.begin());
        if (to == buffer_.end()) continue;
        take();
        return true;
    }
    return true;
}

void InputFile::skipByteOrderMark() {
    constexpr char mark[] = "\xEF\xBB\xBF";
    if (peek() == end) return;
    if (buffer_.size() >= 3 && std::equal(mark, mark + 3, buffer_.begin())) place_ += 3;
}

bool InputFile::refill() {
    if (descriptor_ < 0 || !problem_.empty()) return false;
    buffer_.resize(bufferSize);
    place_ = 0;
    ssize_t count = 0;
    do {
        count = Interruption::requested() ? 0 : ::read(descriptor_, buffer_.data(), buffer_.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) fail(errno);
    buffer_.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    done_ += buffer_.size();
    progress_.show(done_, size_);
    return !buffer_.empty();
}

void InputFile::fail(int code) { problem_ = name_ + " cannot be read: " + std::strerror(code) + "."; }

}  // namespace orvane::host
