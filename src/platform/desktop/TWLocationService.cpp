#include "platform/desktop/TWLocationService.h"

namespace {

// Of each location: owner, object, name, five texts about its kind, whether it is shown, its path, and two about where
// it really is.
constexpr auto ListType = "(a(sossssssbay(aya{sv})ay))";
constexpr auto LocationFormat = "(&s&o&s&s&s&s&s&sb@ay@(aya{sv})@ay)";

constexpr guint32 ForceFlag = 1;

std::string bytesOf(GVariant* text)
{
    return g_variant_get_bytestring(text);
}

// Returns false if no file manager shows it.
bool read(GVariant* described, TWLinuxLocation& location)
{
    const char* owner = nullptr;
    const char* object = nullptr;
    const char* name = nullptr;
    const char* unused = nullptr;
    gboolean isShown = FALSE;
    GVariant* path = nullptr;
    GVariant* place = nullptr;
    GVariant* start = nullptr;
    g_variant_get(described, LocationFormat, &owner, &object, &name, &unused, &unused, &unused, &unused, &unused,
        &isShown, &path, &place, &start);
    location = { owner, object, name, bytesOf(path) };
    for (auto* each : { path, place, start })
        g_variant_unref(each);
    return isShown;
}

}

std::optional<TWLinuxLocationList> TWLocationService::locations() const
{
    const auto service = bus_.ownerOf("org.gtk.vfs.Daemon");
    if (!service)
        return std::nullopt;
    TWSessionBus::Answer answer(nullptr, g_variant_unref);
    const auto result = bus_.call({ *service, "/org/gtk/vfs/mounttracker", "org.gtk.vfs.MountTracker", "ListMounts2" },
        g_variant_new("(b)", TRUE), answer);
    if (result != TWSessionBus::Result::Done || !g_variant_is_of_type(answer.get(), G_VARIANT_TYPE(ListType)))
        return std::nullopt;
    const TWSessionBus::Answer list(g_variant_get_child_value(answer.get(), 0), g_variant_unref);
    TWLinuxLocationList found{ *service, {} };
    for (gsize index = 0; index < g_variant_n_children(list.get()); ++index) {
        const TWSessionBus::Answer described(g_variant_get_child_value(list.get(), index), g_variant_unref);
        TWLinuxLocation location;
        if (read(described.get(), location))
            found.locations.push_back(std::move(location));
    }
    return found;
}

// The first two arguments would name an object that may ask the user.
std::optional<std::string> TWLocationService::close(const TWLinuxLocation& location, TWLinuxDesktop::Force force) const
{
    TWSessionBus::Answer answer(nullptr, g_variant_unref);
    std::string problem;
    const guint32 flags = force == TWLinuxDesktop::Force::Yes ? ForceFlag : 0;
    const auto result = bus_.call({ location.owner, location.object, "org.gtk.vfs.Mount", "Unmount" },
        g_variant_new("(sou)", "", "/", flags), answer, &problem);
    return result == TWSessionBus::Result::NoAnswer ? std::nullopt : std::optional(problem);
}
