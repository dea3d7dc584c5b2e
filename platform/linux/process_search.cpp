#include "platform/linux/process_search.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/entry_matching.h"

namespace orvane {

namespace {

bool isOwn(const std::filesystem::path& folder) {
    struct stat facts {};
    return stat(folder.c_str(), &facts) == 0 && facts.st_uid == getuid();
}

bool bearsName(const ProcessInfo& process, const std::vector<std::string>& names) {
    std::vector<std::string> own{process.program.name, process.program.path.filename().string(),
                                 process.commandName, process.flatpak};
    // A whole terminal session lies in the unit of its terminal's application.
    if (!process.hasTerminal) own.insert(own.end(), process.launchedAs.begin(), process.launchedAs.end());
    return std::any_of(own.begin(), own.end(), [&](const auto& name) {
        return !name.empty() && std::find(names.begin(), names.end(), lowerCase(name)) != names.end();
    });
}

}  // namespace

ProcessSearch::ProcessSearch(std::filesystem::path procFolder)
    : folder_(std::move(procFolder)), reader_(folder_) {}

std::int32_t ProcessSearch::find(std::string_view applicationIdentifier) const {
    if (applicationIdentifier.empty()) return 0;
    std::vector<std::string> names{lowerCase(applicationIdentifier)};
    if (std::count(names[0].begin(), names[0].end(), '.') >= 2) {
        names.push_back(names[0].substr(names[0].rfind('.') + 1));
    }

    std::map<std::int32_t, std::int32_t> parentOfMatch;
    std::error_code error;
    for (std::filesystem::directory_iterator each(folder_, error), end; !error && each != end;
         each.increment(error)) {
        const std::string name = each->path().filename().string();
        std::int32_t number = 0;
        const auto parsed = std::from_chars(name.data(), name.data() + name.size(), number);
        if (parsed.ec != std::errc() || parsed.ptr != name.data() + name.size() || !isOwn(each->path()))
            continue;
        const auto process = reader_.read(number);
        if (process && bearsName(*process, names)) parentOfMatch.emplace(number, process->parent);
    }
    std::erase_if(parentOfMatch,
                  [&, all = parentOfMatch](const auto& each) { return all.contains(each.second); });
    return parentOfMatch.size() == 1 ? parentOfMatch.begin()->first : 0;
}

}  // namespace orvane
