// What services on the buses answer: whole messages, and values of any type.

#include <gio/gio.h>

#include <memory>

#include "fuzz/common.h"
#include "platform/linux/accessibility/atspi.h"
#include "platform/linux/gnome/gnome_picture.h"
#include "platform/linux/kwin/kwin_picture.h"
#include "platform/linux/session/reply_values.h"
#include "platform/linux/session/variant.h"

namespace {

using namespace orvane;

void readAll(GVariant* values) {
    booleanIn(values);
    objectPathIn(values);
    removedSessionIn(values);
    sessionOfUser(values, 0);
    descriptorIndexIn(values);
    booleanPropertyIn(values);
    changedBooleanIn(values, "LockedHint");
    GnomePicture::parse(values);
    atspi::objectsIn(values);
    atspi::processIn(values);
    atspi::hasState(values, atspi::State::active);
    atspi::roleIn(values);
    atspi::textIn(values);
}

struct MessageRelease {
    void operator()(GDBusMessage* message) const { g_object_unref(message); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    readAll(nullptr);
    KwinPictureReader().read(fuzz::textOf(data, size));
    // As the connection takes them off the wire.
    std::string bytes(fuzz::textOf(data, size));
    const std::unique_ptr<GDBusMessage, MessageRelease> message(
        g_dbus_message_new_from_blob(reinterpret_cast<guchar*>(bytes.data()), bytes.size(),
                                     G_DBUS_CAPABILITY_FLAGS_UNIX_FD_PASSING, nullptr));
    if (message && g_dbus_message_get_body(message.get())) readAll(g_dbus_message_get_body(message.get()));

    // A type, a zero, and the bytes of a value of it.
    const std::size_t end = bytes.find('\0');
    if (end == std::string::npos || !g_variant_type_string_is_valid(bytes.c_str())) return 0;
    const auto* type = reinterpret_cast<const GVariantType*>(bytes.c_str());
    if (!g_variant_type_is_definite(type)) return 0;
    GBytes* content = g_bytes_new(bytes.data() + end + 1, bytes.size() - end - 1);
    const Variant values(g_variant_ref_sink(g_variant_new_from_bytes(type, content, FALSE)));
    g_bytes_unref(content);
    readAll(values.get());
    return 0;
}
