#include "platform/linux/system_log.h"

#include <glib.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>

namespace orvane {

namespace {

void appendByte(std::string& text, unsigned char byte) {
    char escape[5];
    std::snprintf(escape, sizeof escape, "\\x%02x", byte);
    text += escape;
}

}  // namespace

std::string SystemLog::visibleLine(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const gunichar character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        const bool isCharacter = character != 0 && character < static_cast<gunichar>(-2);
        const auto length =
            isCharacter ? static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr)) : std::size_t{1};
        if (character == '\n') {
            result += "\\n";
        } else if (character == '\t') {
            result += "\\t";
        } else if (!isCharacter || g_unichar_iscntrl(character)) {
            for (const char byte : text.substr(0, length))
                appendByte(result, static_cast<unsigned char>(byte));
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return result;
}

void SystemLog::log(std::string_view line) {
    const std::string visible = visibleLine(line);
    // The name and options of the connection belong to the whole process, so they are left to the host.
    syslog(LOG_USER | LOG_INFO, "%s", visible.c_str());
    // One call for the line, so that lines of several threads do not mix.
    if (isatty(STDERR_FILENO) != 0) std::fprintf(stderr, "%s\n", visible.c_str());
}

}  // namespace orvane
