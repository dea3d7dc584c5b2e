#include "platform/linux/x11/x11_text.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvane {

namespace {

std::string madeValid(std::string_view bytes) {
    char* valid = g_utf8_make_valid(bytes.data(), static_cast<gssize>(bytes.size()));
    std::string result(valid);
    g_free(valid);
    return result;
}

/// What cannot be converted becomes one replacement character.
std::string converted(std::string_view bytes, const char* charset) {
    gsize length = 0;
    char* text = g_convert(bytes.data(), static_cast<gssize>(bytes.size()), "UTF-8", charset, nullptr,
                           &length, nullptr);
    if (text == nullptr) return "\uFFFD";
    std::string result(text, length);
    g_free(text);
    return madeValid(result);
}

struct CharacterSet {
    char final;
    const char* name;
};

// Final characters of the escape sequences, from the Compound Text Encoding of the X Consortium.
constexpr std::array kSingleByteSets{
    CharacterSet{'A', "ISO-8859-1"},  CharacterSet{'B', "ISO-8859-2"},  CharacterSet{'C', "ISO-8859-3"},
    CharacterSet{'D', "ISO-8859-4"},  CharacterSet{'F', "ISO-8859-7"},  CharacterSet{'G', "ISO-8859-6"},
    CharacterSet{'H', "ISO-8859-8"},  CharacterSet{'L', "ISO-8859-5"},  CharacterSet{'M', "ISO-8859-9"},
    CharacterSet{'V', "ISO-8859-10"}, CharacterSet{'Y', "ISO-8859-13"}, CharacterSet{'_', "ISO-8859-14"},
    CharacterSet{'b', "ISO-8859-15"}, CharacterSet{'f', "ISO-8859-16"}};
// Each is the two-byte half of an EUC encoding, with both bytes' high bits set.
constexpr std::array kTwoByteSets{CharacterSet{'A', "EUC-CN"}, CharacterSet{'B', "EUC-JP"},
                                  CharacterSet{'C', "EUC-KR"}};

template <std::size_t size>
const char* find(const std::array<CharacterSet, size>& sets, char final) {
    for (const auto& set : sets) {
        if (set.final == final) return set.name;
    }
    return nullptr;
}

class CompoundTextReader {
  public:
    explicit CompoundTextReader(std::string_view bytes) : rest_(bytes) {}

    std::string read() {
        while (!rest_.empty()) {
            if (rest_.front() == '\x1b') {
                escape();
            } else if (rest_.front() == '\x9b') {
                // Control sequences tell only the direction of the text.
                take(rest_.find(']'));
            } else {
                segment();
            }
        }
        return text_;
    }

  private:
    /// Takes the bytes up to `end` and the one there.
    std::string_view take(std::size_t end) {
        const auto taken = rest_.substr(0, end);
        rest_.remove_prefix(std::min(rest_.size(), end == std::string_view::npos ? end : end + 1));
        return taken;
    }
    bool takePrefix(std::string_view prefix) {
        if (!rest_.starts_with(prefix)) return false;
        rest_.remove_prefix(prefix.size());
        return true;
    }
    char takeFinal() {
        if (rest_.empty()) return '\0';
        const char final = rest_.front();
        rest_.remove_prefix(1);
        return final;
    }

    void escape() {
        if (takePrefix("\x1b%G")) {
            text_ += madeValid(take(rest_.find("\x1b%@")));
            takePrefix("%@");
        } else if (takePrefix("\x1b%/")) {
            extendedSegment();
        } else if (takePrefix("\x1b$(")) {
            const char* set = find(kTwoByteSets, takeFinal());
            left_ = {set, true};
        } else if (takePrefix("\x1b$)")) {
            const char* set = find(kTwoByteSets, takeFinal());
            right_ = {set, true};
        } else if (takePrefix("\x1b-")) {
            right_ = {find(kSingleByteSets, takeFinal()), false};
        } else if (takePrefix("\x1b(")) {
            // B is ASCII; J is the Japanese variant, of which all but two characters are the same.
            takeFinal();
            left_ = {"ASCII", false};
        } else if (takePrefix("\x1b)")) {
            right_ = {takeFinal() == 'I' ? "JIS_X0201" : nullptr, false};
        } else {
            rest_.remove_prefix(1);
        }
    }

    /// A final byte, two bytes of length, the encoding's name, STX, the text.
    void extendedSegment() {
        if (rest_.size() < 3) {
            rest_ = {};
            return;
        }
        const auto digit = [this](std::size_t place) {
            return static_cast<std::size_t>(static_cast<unsigned char>(rest_[place]) & 0x7F);
        };
        const std::size_t length = digit(1) * 128 + digit(2);
        rest_.remove_prefix(3);
        const auto body = rest_.substr(0, length);
        rest_.remove_prefix(body.size());
        const auto separator = body.find('\x02');
        if (separator == std::string_view::npos) return;
        text_ += converted(body.substr(separator + 1), std::string(body.substr(0, separator)).c_str());
    }

    /// The bytes up to the next escape or control sequence that belong to one half of the code table.
    void segment() {
        const bool isRight = (rest_.front() & 0x80) != 0;
        std::size_t end = 0;
        while (end < rest_.size() && rest_[end] != '\x1b' && rest_[end] != '\x9b' &&
               ((rest_[end] & 0x80) != 0) == isRight) {
            ++end;
        }
        std::string bytes(rest_.substr(0, end));
        rest_.remove_prefix(end);
        const auto& set = isRight ? right_ : left_;
        if (set.isTwoByte) {
            for (char& byte : bytes) {
                // Spaces and line ends are control characters in every set.
                if (static_cast<unsigned char>(byte) > ' ') byte = static_cast<char>(byte | 0x80);
            }
        }
        text_ += set.name != nullptr ? converted(bytes, set.name) : std::string("\uFFFD");
    }

    struct Half {
        const char* name;
        bool isTwoByte;
    };

    std::string_view rest_;
    Half left_{"ASCII", false};
    Half right_{"ISO-8859-1", false};
    std::string text_;
};

}  // namespace

std::string decodeX11Text(std::string_view bytes, X11TextEncoding encoding) {
    bytes = bytes.substr(0, bytes.find('\0'));
    if (bytes.empty()) return {};
    switch (encoding) {
        case X11TextEncoding::utf8:
            return madeValid(bytes);
        case X11TextEncoding::latin1:
            return converted(bytes, "ISO-8859-1");
        case X11TextEncoding::compound:
            return CompoundTextReader(bytes).read();
        case X11TextEncoding::unknown:
            break;
    }
    const bool isUtf8 = g_utf8_validate(bytes.data(), static_cast<gssize>(bytes.size()), nullptr) != 0;
    return isUtf8 ? std::string(bytes) : converted(bytes, "ISO-8859-1");
}

}  // namespace orvane
