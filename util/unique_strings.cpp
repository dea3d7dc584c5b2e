#include "util/unique_strings.h"

#include <glib.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

#include "util/text_encoding.h"

namespace orvane {

namespace {

using Uuid = std::array<std::uint8_t, 16>;

std::mutex sourceMutex;
UuidSource* installedSource = nullptr;

Uuid randomUuid() {
    Uuid uuid;
    // The kernel's numbers differ in a forked child too. A kernel without them leaves GLib's generator.
    if (getentropy(uuid.data(), uuid.size()) != 0) {
        std::generate(uuid.begin(), uuid.end(),
                      [] { return static_cast<std::uint8_t>(g_random_int_range(0, 256)); });
    }
    uuid[6] = static_cast<std::uint8_t>(0x40 | (uuid[6] & 0x0F));  // version 4
    uuid[8] = static_cast<std::uint8_t>(0x80 | (uuid[8] & 0x3F));  // variant of RFC 4122
    return uuid;
}

Uuid nextUuid() {
    const std::lock_guard lock(sourceMutex);
    return installedSource ? installedSource->next() : randomUuid();
}

std::u16string hyphenated(const Uuid& uuid) {
    constexpr std::u16string_view digits = u"0123456789ABCDEF";
    std::u16string text;
    for (std::size_t index = 0; index < uuid.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) text += u'-';
        text += {digits[uuid[index] >> 4], digits[uuid[index] & 0x0F]};
    }
    return text;
}

std::u16string base64(const Uuid& uuid) {
    const std::unique_ptr<gchar, decltype(&g_free)> encoded(g_base64_encode(uuid.data(), uuid.size()),
                                                            &g_free);
    std::u16string text = utf16(encoded.get());
    text.erase(text.find(u'='));
    std::replace(text.begin(), text.end(), u'/', u'_');
    std::replace(text.begin(), text.end(), u'+', u'-');
    return text;
}

}  // namespace

void setUuidSource(UuidSource* source) {
    const std::lock_guard lock(sourceMutex);
    installedSource = source;
}

std::u16string uniqueString() { return hyphenated(nextUuid()); }
std::u16string uniqueString(UuidSource& source) { return hyphenated(source.next()); }

std::u16string uniqueBase64String() { return base64(nextUuid()); }
std::u16string uniqueBase64String(UuidSource& source) { return base64(source.next()); }

}  // namespace orvane
