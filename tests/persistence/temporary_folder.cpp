#include "tests/persistence/temporary_folder.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <linux/capability.h>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orvane::test {

namespace {

/// Replaces the thread's effective capabilities (the first 32 of them) and returns what they were;
/// capabilities(7).
unsigned setEffective(unsigned keep, unsigned add) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    if (::syscall(SYS_capget, &header, data) != 0) throw std::runtime_error("capget");
    const unsigned before = data[0].effective;
    data[0].effective = (before & keep) | (add & data[0].permitted);
    if (::syscall(SYS_capset, &header, data) != 0) throw std::runtime_error("capset");
    return before;
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "store-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
}

std::string bytesOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeBytes(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string runSQL(const std::filesystem::path& file, const std::string& statements) {
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    std::string result;
    const auto takeRow = [](void* context, int count, char** values, char**) {
        auto& text = *static_cast<std::string*>(context);
        if (!text.empty()) text += ' ';
        for (int i = 0; i < count; ++i) {
            if (i > 0) text += '|';
            text += values[i] ? values[i] : "-";
        }
        return 0;
    };
    const int code = sqlite3_exec(database, statements.c_str(), takeRow, &result, nullptr);
    const std::string message = sqlite3_errmsg(database);
    sqlite3_close(database);
    if (code != SQLITE_OK) throw std::runtime_error(message + " in " + statements);
    return result;
}

PermissionsBind::PermissionsBind()
    : effective_(setEffective(~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH), 0)) {}

PermissionsBind::~PermissionsBind() { setEffective(~0U, effective_); }

}  // namespace orvane::test
