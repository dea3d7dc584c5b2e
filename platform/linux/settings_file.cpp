#include "platform/linux/settings_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "foundation/file_descriptor.h"
#include "platform/linux/linux_file_manager.h"
#include "platform/linux/xdg_folders.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t largestFile = 1 << 20;

/// Keeps other processes from setting values while this one does. Gives up after a moment, rather than
/// hanging with a process that was stopped in the middle.
void lockFolder(const FileDescriptor& folder) {
    constexpr int attempts = 20;
    constexpr useconds_t pause = 5000;
    for (int i = 0; i < attempts && flock(folder.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
         ++i)
        usleep(pause);
}

/// The whole text; none, with the system's error, when it cannot be read.
std::optional<std::string> readFile(const fs::path& file, int& systemError) {
    // A fifo in the file's place must not stop the host.
    const FileDescriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!descriptor.isOpen() || fstat(descriptor.number(), &status) != 0) {
        systemError = errno;
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        systemError = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return std::nullopt;
    }
    std::string text;
    char buffer[4096];
    while (text.size() <= largestFile) {
        const ssize_t size = read(descriptor.number(), buffer, sizeof buffer);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) {
            systemError = errno;
            return std::nullopt;
        }
        if (size == 0) return text;
        text.append(buffer, static_cast<std::size_t>(size));
    }
    systemError = EFBIG;
    return std::nullopt;
}

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t size = write(descriptor, text.data(), text.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

}  // namespace

fs::path SettingsFile::defaultPath() { return configFolder() / "orvane/settings.json"; }

SettingsFile::SettingsFile(fs::path file, LogSink& log) : file_(std::move(file)), log_(log) { reload(); }

SettingsFile::~SettingsFile() = default;

fs::path SettingsFile::target() const {
    std::error_code failure;
    auto path = fs::canonical(file_, failure);
    if (!failure) return path;
    const auto folder = fs::canonical(file_.parent_path(), failure);
    return failure ? file_ : folder / file_.filename();
}

void SettingsFile::reportProblem(const std::string& problem) {
    if (problem == problem_) return;
    problem_ = problem;
    log_.log("The settings file " + file_.string() + " is not used: " + problem +
             ". The settings from before stay in force.");
}

std::optional<SettingsDocument> SettingsFile::reload() {
    int systemError = 0;
    const auto text = readFile(file_, systemError);
    std::optional<SettingsDocument> document;
    if (text) {
        std::string problem;
        document = SettingsDocument::parse(*text, problem);
        if (!document) reportProblem(problem);
    } else if (systemError == ENOENT || systemError == ENOTDIR) {
        document.emplace();
    } else {
        reportProblem("it cannot be read (" + std::generic_category().message(systemError) + ")");
    }
    if (document) {
        problem_.clear();
        values_ = document->values();
    }
    return document;
}

Value SettingsFile::objectForKey(std::string_view key) {
    if (!watch_) reload();
    return values_[key];
}

bool SettingsFile::setObject(const Value& value, std::string_view key, Error* error) {
    const fs::path folder = target().parent_path();
    if (!LinuxFileManager().createDirectory(folder, error)) return false;
    bool kept = true;
    {
        const FileDescriptor lock(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        lockFolder(lock);
        auto document = reload();
        if (!document) {
            assignError(error,
                        {fileErrorDomain, fileReadUnknownError,
                         "The settings file " + file_.string() + " cannot be changed: " + problem_ + "."});
            kept = false;
        } else if (!(values_[key] == value)) {
            kept = document->set(key, value);
            if (!kept) {
                assignError(error, {fileErrorDomain, fileWriteUnknownError,
                                    "The settings file cannot hold this value: " + value.description()});
            } else if ((kept = write(document->text(), error))) {
                values_ = document->values();
            }
        }
    }
    deliverChanges();
    return kept;
}

bool SettingsFile::write(const std::string& text, Error* error) {
    const fs::path file = target();
    const fs::path folder = file.parent_path();
    std::string temporary = (folder / ".settings.json.XXXXXX").string();
    const FileDescriptor descriptor(mkostemp(temporary.data(), O_CLOEXEC));  // mode 0600
    if (!descriptor.isOpen()) {
        assignError(error, fileWriteError(file, errno));
        return false;
    }
    fchmod(descriptor.number(), 0600);  // a umask may have taken rights from us
    if (!writeAll(descriptor.number(), text) || fsync(descriptor.number()) != 0 ||
        rename(temporary.c_str(), file.c_str()) != 0) {
        assignError(error, fileWriteError(file, errno));
        unlink(temporary.c_str());
        return false;
    }
    // The new name has to outlast a power cut as well.
    const FileDescriptor directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) fsync(directory.number());
    return true;
}

std::shared_ptr<void> SettingsFile::bind(std::string_view key, Handler handler) {
    if (!watch_) watch();
    const auto binding = std::make_shared<Binding>(Binding{std::string(key), std::move(handler), {}});
    binding->delivered = values_[key];
    bindings_->push_back(binding);
    // Only marks the end: the handler may be running, and this object may be gone.
    const auto unbind = [binding, owner = std::weak_ptr(bindings_)](void*) {
        binding->isBound = false;
        if (const auto bindings = owner.lock()) std::erase(*bindings, binding);
    };
    std::shared_ptr<void> token(binding.get(), unbind);
    const Value now = binding->delivered;
    binding->handler(now);
    return token;
}

void SettingsFile::deliverChanges() {
    const Bindings bindings = *bindings_;
    for (const auto& binding : bindings) {
        // Read afresh each time: a handler may set values or end bindings.
        const Value value = values_[binding->key];
        if (!binding->isBound || value == binding->delivered) continue;
        binding->delivered = value;
        binding->handler(value);
    }
}

void SettingsFile::watch() {
    // Only a folder that exists can be watched without looking at it again and again.
    Error error;
    if (!LinuxFileManager().createDirectory(file_.parent_path(), &error)) {
        log_.log("Changes to the settings file will not be noticed. " + error.localizedDescription());
        return;
    }
    std::error_code failure;
    std::vector<fs::path> folders{fs::canonical(file_.parent_path(), failure)};
    if (auto folder = target().parent_path(); folder != folders.front()) folders.push_back(std::move(folder));
    const auto changed = [this](bool lost) {
        reload();
        if (lost || target().parent_path() != watch_->folders().back()) {
            watch_.reset();
            watch();
        }
        deliverChanges();
    };
    watch_ = std::make_unique<SettingsWatch>(std::move(folders), changed);
    if (!watch_->isComplete()) {
        watch_.reset();
        log_.log("Changes to the settings file will not be noticed: its folder cannot be watched.");
    }
    // What happened before the watch began.
    reload();
}

}  // namespace orvane
