#include "tests/fuzz/mutator.h"

#include <algorithm>
#include <string_view>

namespace orvane::test {

namespace {

constexpr std::size_t longest = 1 << 16;
constexpr std::string_view interesting[] = {std::string_view("\0", 1),
                                            "\xff",
                                            "\xff\xff\xff\xff",
                                            "\x80",
                                            "\x7f",
                                            "\xc3\x28",
                                            "\"",
                                            "\\",
                                            "\n",
                                            ",",
                                            "{",
                                            "}",
                                            "[",
                                            "]",
                                            "(",
                                            ")",
                                            "null",
                                            "true",
                                            "-1",
                                            "0",
                                            "1e308",
                                            "9223372036854775808",
                                            "%@",
                                            "%K",
                                            "base64:",
                                            "\\ud800"};

}  // namespace

std::string Mutator::next() {
    std::string input = any();
    for (std::size_t changes = 1 + below(4); changes > 0; --changes) change(input);
    input.resize(std::min(input.size(), longest));
    return input;
}

void Mutator::change(std::string& input) {
    const std::size_t place = below(input.size() + 1);
    const std::size_t count = std::min(input.size() - place, 1 + below(8));
    switch (below(8)) {
        case 0:
            if (place < input.size()) input[place] = static_cast<char>(input[place] ^ (1U << below(8)));
            break;
        case 1:
            if (place < input.size()) input[place] = static_cast<char>(below(256));
            break;
        case 2:
            input.insert(place, 1 + below(3), static_cast<char>(below(256)));
            break;
        case 3:
            input.erase(place, count);
            break;
        case 4:
            input.insert(place, interesting[below(std::size(interesting))]);
            break;
        case 5:
            input.insert(below(input.size() + 1), input.substr(place, count));
            break;
        case 6:
            input.resize(place);
            break;
        default: {
            // The end of another one.
            const std::string& other = any();
            input.replace(place, input.size() - place, other, below(other.size() + 1), other.size());
        }
    }
}

}  // namespace orvane::test
