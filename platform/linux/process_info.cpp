#include "platform/linux/process_info.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

namespace orvane {

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const auto end = std::min(text.find(separator), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

std::string joined(const std::vector<std::string>& parts, std::size_t from) {
    std::string text;
    for (std::size_t i = from; i < parts.size(); ++i) (text += i == from ? "" : "-") += parts[i];
    return text;
}

bool isInterpreter(std::string_view name) {
    // "python3.11" is "python".
    name = name.substr(0, name.find_last_not_of("0123456789.-") + 1);
    static constexpr std::array<std::string_view, 22> interpreters{
        "bash",   "dash", "electron", "fish", "gjs",    "guile", "java", "ksh", "lua",   "mono", "node",
        "nodejs", "perl", "php",      "pypy", "python", "qml",   "ruby", "sh",  "tclsh", "wish", "zsh"};
    return std::find(interpreters.begin(), interpreters.end(), name) != interpreters.end();
}

/// Options of an interpreter that matter for finding its script.
struct InterpreterOptions {
    std::string_view interpreter;
    /// Followed by code in place of a script.
    std::vector<std::string_view> code;
    /// Followed by what is run.
    std::vector<std::string_view> program;
    /// Followed by a value of their own.
    std::vector<std::string_view> valued;
};

const InterpreterOptions& optionsOf(std::string_view interpreter) {
    static const std::vector<InterpreterOptions> known{
        {"java", {}, {"-jar", "-m"}, {"-cp", "-classpath", "--class-path", "-p", "--module-path"}},
        {"perl", {"-e", "-E"}, {}, {}},
        {"pypy", {"-c"}, {"-m"}, {"-W", "-X"}},
        {"python", {"-c"}, {"-m"}, {"-W", "-X"}},
        {"", {"-c", "-e", "--eval"}, {}, {"-o", "-O"}}};
    return *std::find_if(known.begin(), known.end(),
                         [=](const auto& options) { return interpreter.starts_with(options.interpreter); });
}

/// Where in an interpreter's command line the script stands; the size when it runs none.
std::size_t scriptPosition(const std::vector<std::string>& command, std::string_view interpreter) {
    const auto& options = optionsOf(interpreter);
    const auto isOneOf = [](const std::string& word, const auto& words) {
        return std::find(words.begin(), words.end(), word) != words.end();
    };
    for (std::size_t i = 1; i < command.size(); ++i) {
        const auto& word = command[i];
        if (isOneOf(word, options.code)) return command.size();
        if (word == "--" || isOneOf(word, options.program)) return std::min(i + 1, command.size());
        if (isOneOf(word, options.valued)) {
            ++i;
        } else if (!word.starts_with('-')) {
            return i;
        }
    }
    return command.size();
}

fs::path resolved(const fs::path& file, const fs::path& folder) {
    std::error_code failure;
    if (!file.has_parent_path()) {
        const std::unique_ptr<char, decltype(&g_free)> found(g_find_program_in_path(file.c_str()), g_free);
        if (!found) return file;
        auto path = fs::canonical(found.get(), failure);
        return failure ? file : path;
    }
    auto path = fs::canonical(folder / file, failure);
    return failure ? file : path;
}

/// The numbers of a process's "stat" line from the fourth field on (see proc(5)); the name before them may
/// hold any character, closing brackets included.
std::vector<std::string> statFields(const fs::path& folder) {
    const std::string text = contentOf(folder / "stat");
    const auto end = text.rfind(')');
    return end == std::string::npos || end + 4 > text.size()
               ? std::vector<std::string>{}
               : split(std::string_view(text).substr(end + 4), ' ');
}

template <class Number>
Number numberAt(const std::vector<std::string>& fields, std::size_t index) {
    Number number{};
    if (index < fields.size())
        std::from_chars(fields[index].data(), fields[index].data() + fields[index].size(), number);
    return number;
}

std::string flatpakName(const fs::path& folder) {
    const std::string text = contentOf(folder / "root/.flatpak-info");
    if (text.empty()) return {};
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(), g_key_file_unref);
    if (!g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr)) return {};
    const std::unique_ptr<char, decltype(&g_free)> name(
        g_key_file_get_string(file.get(), "Application", "name", nullptr), g_free);
    return name ? name.get() : std::string();
}

/// Snap's units are called snap.NAME.APPLICATION, followed by "-" or "." and an id of 36 characters.
void readSnapUnit(std::string_view unit, ProcessInfo& info) {
    const auto parts = split(unit, '.');
    if (parts.size() < 4 || parts[0] != "snap") return;
    constexpr std::size_t idLength = 36;
    info.snap = parts[1];
    info.snapApplication = parts[2];
    const auto dash = info.snapApplication.size() - std::min(info.snapApplication.size(), idLength + 1);
    if (dash > 0 && info.snapApplication[dash] == '-') info.snapApplication.resize(dash);
}

void readControlGroups(const fs::path& folder, ProcessInfo& info) {
    for (const auto& line : split(contentOf(folder / "cgroup"), '\n')) {
        for (const auto& unit : split(line, '/')) {
            if (unit.ends_with(".slice")) continue;
            readSnapUnit(unit, info);
            auto names = applicationNamesOfUnit(unit);
            // The sandbox's own file may be unreadable; its unit is named by Flatpak itself.
            if (info.flatpak.empty() && unit.starts_with("app-flatpak-") && names.size() > 1)
                info.flatpak = names[1];
            if (!names.empty()) info.launchedAs = std::move(names);
        }
    }
}

/// Undoes systemd's way of writing special characters: "\x2d" is "-".
std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned code = 0;
        if (text.substr(i).starts_with("\\x") && i + 4 <= text.size() &&
            std::from_chars(&text[i + 2], &text[i + 2] + 2, code, 16).ptr == &text[i + 2] + 2) {
            result += static_cast<char>(code);
            i += 3;
        } else {
            result += text[i];
        }
    }
    return result;
}

}  // namespace

Program Program::ofCommand(const std::vector<std::string>& command, const fs::path& folder) {
    Program program;
    if (command.empty()) return program;
    std::size_t position = 0;
    if (const auto name = fs::path(command[0]).filename().string(); isInterpreter(name)) {
        position = scriptPosition(command, name);
        program.isScript = position < command.size();
        if (!program.isScript) position = 0;
    }
    const fs::path called = command[position];
    program.name = called.filename().string();
    // Electron's archives all have one name, and lie in the folder of their application.
    if (program.name == "app.asar") {
        auto folderName = called.parent_path();
        if (folderName.filename() == "resources") folderName = folderName.parent_path();
        if (folderName.has_filename()) program.name = folderName.filename().string();
    }
    // A script named without a folder lies in the current one, not in the search path.
    program.path = program.isScript && !called.has_parent_path() ? resolved(folder / called, folder)
                                                                 : resolved(called, folder);
    program.arguments.assign(command.begin() + static_cast<std::ptrdiff_t>(position) + 1, command.end());
    return program;
}

std::vector<std::string> applicationNamesOfUnit(std::string_view unit) {
    // app[-LAUNCHER]-NAME-RANDOM.scope and app[-LAUNCHER]-NAME[@RANDOM].service, after systemd's conventions
    // for desktop environments. Some launchers forget to escape the dashes in a name.
    if (!unit.starts_with("app-")) return {};
    const bool isScope = unit.ends_with(".scope");
    if (!isScope && !unit.ends_with(".service")) return {};
    auto stem = unit.substr(4, unit.rfind('.') - 4);
    if (!isScope) stem = stem.substr(0, stem.find('@'));
    auto parts = split(stem, '-');
    if (isScope && parts.size() > 1) parts.pop_back();
    for (auto& part : parts) part = unescaped(part);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < parts.size(); ++i) names.push_back(joined(parts, i));
    return names;
}

ProcessReader::ProcessReader(fs::path folder) : folder_(std::move(folder)) {}

std::optional<std::uint64_t> ProcessReader::startTime(std::int32_t process) const {
    const auto fields = statFields(folder_ / std::to_string(process));
    if (fields.empty()) return std::nullopt;
    return numberAt<std::uint64_t>(fields, 22 - 4);
}

std::optional<ProcessInfo> ProcessReader::read(std::int32_t process) const {
    const fs::path folder = folder_ / std::to_string(process);
    const auto fields = statFields(folder);
    if (fields.empty()) return std::nullopt;

    ProcessInfo info;
    info.parent = numberAt<std::int32_t>(fields, 4 - 4);
    info.processGroup = numberAt<std::int32_t>(fields, 5 - 4);
    info.hasTerminal = numberAt<std::int32_t>(fields, 7 - 4) != 0;
    info.commandName = contentOf(folder / "comm");
    if (info.commandName.ends_with('\n')) info.commandName.pop_back();

    auto command = split(contentOf(folder / "cmdline"), '\0');
    std::error_code failure;
    std::string executable = fs::read_symlink(folder / "exe", failure).string();
    // The kernel's mark for a program that was replaced while it runs.
    constexpr std::string_view deleted = " (deleted)";
    if (executable.ends_with(deleted)) executable.resize(executable.size() - deleted.size());
    const fs::path workingFolder = fs::read_symlink(folder / "cwd", failure);
    // Processes may rewrite their command line, into one text or into nothing.
    if (command.empty() && !executable.empty()) command.push_back(executable);
    if (!command.empty() && !executable.empty() && isInterpreter(fs::path(executable).filename().string()))
        command[0] = executable;
    info.program = Program::ofCommand(command, workingFolder);
    if (!info.program.isScript && !executable.empty()) info.program.path = executable;

    info.flatpak = flatpakName(folder);
    readControlGroups(folder, info);
    return info;
}

}  // namespace orvane
