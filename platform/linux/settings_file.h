#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/settings_json.h"
#include "platform/linux/settings_watch.h"
#include "platform/log_sink.h"
#include "platform/user_defaults.h"

namespace orvane {

/// User defaults in a JSON file that people can edit. While anything is bound, changes to the file by others
/// are noticed through the default main context. A file that cannot be read or understood is told to the log
/// once and left alone: the values from before stay, and nothing can be set until it is repaired.
class SettingsFile : public UserDefaults {
  public:
    /// `$XDG_CONFIG_HOME/orvane/settings.json`.
    static std::filesystem::path defaultPath();

    SettingsFile(std::filesystem::path file, LogSink& log);
    ~SettingsFile() override;

    Value objectForKey(std::string_view key) override;
    /// Writes the file anew as a whole, for this user alone; its folder is made when it is missing.
    bool setObject(const Value& value, std::string_view key, Error* error) override;
    [[nodiscard]] std::shared_ptr<void> bind(std::string_view key, Handler handler) override;

    const std::filesystem::path& path() const { return file_; }
    /// Why the file could not be used when it was last read; empty when it could.
    const std::string& problem() const { return problem_; }

  private:
    struct Binding {
        std::string key;
        Handler handler;
        Value delivered;
        bool isBound = true;
    };
    using Bindings = std::vector<std::shared_ptr<Binding>>;

    /// Takes over the file's values. None, and nothing changes, when the file cannot be used.
    std::optional<SettingsDocument> reload();
    void reportProblem(const std::string& problem);
    bool write(const std::string& text, Error* error);
    void deliverChanges();
    void watch();
    /// The file itself where the path is a link to one.
    std::filesystem::path target() const;

    std::filesystem::path file_;
    LogSink& log_;
    Dictionary values_;
    std::string problem_;
    std::shared_ptr<Bindings> bindings_ = std::make_shared<Bindings>();
    std::unique_ptr<SettingsWatch> watch_;
};

}  // namespace orvane
