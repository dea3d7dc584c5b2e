#include "host/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>

namespace orvane::host {

namespace {

/// Characters, counted as code points.
std::size_t lengthOf(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

/// Columns that the text takes on the screen: colour sequences take none.
std::size_t shownLength(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\033')
            i = std::min(text.find('m', i), text.size() - 1);
        else
            plain += text[i];
    }
    return lengthOf(plain);
}

int byteOf(double component) { return static_cast<int>(std::clamp(component, 0.0, 1.0) * 255); }

}  // namespace

bool isTerminal() { return ::isatty(STDOUT_FILENO) == 1; }

bool showsColors() {
    const char* refused = std::getenv("NO_COLOR");
    return isTerminal() && (!refused || !*refused);
}

std::size_t terminalWidth() {
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    return 80;
}

std::string swatch(const std::optional<Color>& color) {
    if (!color || !showsColors()) return {};
    char sequence[48];
    std::snprintf(sequence, sizeof sequence, "\033[48;2;%d;%d;%dm  \033[0m", byteOf(color->red),
                  byteOf(color->green), byteOf(color->blue));
    return sequence;
}

std::string clockText(DecimalSeconds duration) {
    const long long seconds = duration.count() / 1000000;
    char text[48];
    if (seconds >= 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld", seconds / 60, seconds % 60);
    return text;
}

std::string localText(const std::optional<Date>& date) {
    if (!date) return "-";
    const auto seconds = static_cast<std::time_t>(std::floor(secondsSinceEpoch(*date)));
    std::tm calendar{};
    char text[64];
    if (!::localtime_r(&seconds, &calendar) ||
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &calendar) == 0)
        return description(*date);
    return text;
}

std::string displayText(std::string_view text, std::size_t width) {
    std::string result;
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t next = i + 1;
        while (next < text.size() && (static_cast<unsigned char>(text[next]) & 0xC0) == 0x80) ++next;
        if (characters + 1 == width && next < text.size()) return result + "…";
        const auto first = static_cast<unsigned char>(text[i]);
        // Those of eight bits too, which terminals obey as they do escape sequences: C2 80 to C2 9F in UTF-8.
        const bool isLateControl = first == 0xC2 && static_cast<unsigned char>(text[next - 1]) < 0xA0;
        if (first < 0x20 || first == 0x7F || isLateControl)
            result += ' ';
        else
            result += text.substr(i, next - i);
        ++characters;
        i = next;
    }
    return result;
}

void printTable(const std::vector<std::string>& heading, const std::vector<std::vector<std::string>>& rows,
                const std::vector<std::size_t>& right) {
    std::vector<std::size_t> widths;
    for (const std::string& title : heading) widths.push_back(shownLength(title));
    for (const auto& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], shownLength(row[i]));
    const auto print = [&](const std::vector<std::string>& row) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string gap(widths[i] - shownLength(row[i]), ' ');
            const bool flushRight = std::find(right.begin(), right.end(), i) != right.end();
            line += flushRight ? gap + row[i] : row[i] + gap;
            if (i + 1 < row.size()) line += "  ";
        }
        line.erase(line.find_last_not_of(' ') + 1);
        std::cout << line << '\n';
    };
    print(heading);
    for (const auto& row : rows) print(row);
}

}  // namespace orvane::host
