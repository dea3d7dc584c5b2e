// What sway answers: messages cut from a stream of bytes, and trees of windows.

#include "fuzz/common.h"
#include "platform/linux/sway/sway_message.h"
#include "platform/linux/sway/sway_tree.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    const std::string_view bytes = fuzz::textOf(data, size);
    SwayTree::parse(bytes);
    canChangeSwayFocus(bytes);
    // As the socket hands them over, in pieces.
    SwayMessageReader reader;
    for (std::size_t start = 0; start < bytes.size(); start += 7) {
        reader.append(bytes.substr(start, 7));
        while (const auto message = reader.next()) {
            SwayTree::parse(message->payload);
            SwayMessageReader again;
            again.append(message->bytes());
            const auto same = again.next();
            fuzz::demand(same && same->payload == message->payload && same->type == message->type,
                         "a message's own bytes are that message");
        }
    }
    return 0;
}
