#include "TWUDisks.h"

#include <gio/gio.h>

#include <memory>
#include <string_view>
#include <unistd.h>

namespace {

constexpr char Service[] = "org.freedesktop.UDisks2";
constexpr char Manager[] = "/org/freedesktop/UDisks2";

struct Free {
    void operator()(GVariant* value) const { g_variant_unref(value); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Free>;

// The bus of the system; GIO makes one connection and keeps it.
Owned<GDBusConnection> systemBus(Owned<GError>& error)
{
    GError* problem = nullptr;
    Owned<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &problem));
    error.reset(problem);
    if (bus)
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    return bus;
}

Owned<GVariant> callOnBus(const std::string& object, const char* interface, const char* method, GVariant* arguments,
    TWDeadline::Duration limit, Owned<GError>& error)
{
    const Owned<GVariant> kept(g_variant_ref_sink(arguments));
    const auto bus = systemBus(error);
    if (!bus)
        return nullptr;
    GError* problem = nullptr;
    Owned<GVariant> answer(g_dbus_connection_call_sync(bus.get(), Service, object.c_str(), interface, method,
        kept.get(), nullptr, G_DBUS_CALL_FLAGS_NONE, static_cast<int>(limit.count()), nullptr, &problem));
    error.reset(problem);
    return answer;
}

// "" also for "/", which stands for no object.
std::string objectIn(GVariant* properties, const char* name)
{
    const char* path = "";
    g_variant_lookup(properties, name, "&o", &path);
    return std::string(path) == "/" ? "" : path;
}

bool flagIn(GVariant* properties, const char* name)
{
    gboolean flag = FALSE;
    g_variant_lookup(properties, name, "b", &flag);
    return flag;
}

std::vector<std::string> bytesIn(GVariant* properties, const char* name)
{
    const Owned<GVariant> list(g_variant_lookup_value(properties, name, G_VARIANT_TYPE_BYTESTRING_ARRAY));
    std::vector<std::string> texts;
    for (gsize index = 0; list && index < g_variant_n_children(list.get()); ++index) {
        const Owned<GVariant> text(g_variant_get_child_value(list.get(), index));
        texts.emplace_back(g_variant_get_bytestring(text.get()));
    }
    return texts;
}

void read(const std::string& interface, GVariant* properties, TWUDisksObject& object)
{
    if (interface == "org.freedesktop.UDisks2.Block") {
        guint64 number = 0;
        g_variant_lookup(properties, "DeviceNumber", "t", &number);
        object.deviceNumber = number;
        object.encrypted = objectIn(properties, "CryptoBackingDevice");
        object.drive = objectIn(properties, "Drive");
    } else if (interface == "org.freedesktop.UDisks2.Partition") {
        object.partitioned = objectIn(properties, "Table");
    } else if (interface == "org.freedesktop.UDisks2.Filesystem") {
        object.mountPoints = bytesIn(properties, "MountPoints");
    } else if (interface == "org.freedesktop.UDisks2.Loop") {
        object.isLoop = true;
    } else if (interface == "org.freedesktop.UDisks2.Drive") {
        object.isEjectable = flagIn(properties, "Ejectable");
        object.isRemovable = flagIn(properties, "Removable");
        object.canPowerOff = flagIn(properties, "CanPowerOff");
    }
}

TWUDisksObject readObject(GVariant* interfaces)
{
    TWUDisksObject object;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, interfaces);
    const char* name = nullptr;
    GVariant* properties = nullptr;
    while (g_variant_iter_next(&iterator, "{&s@a{sv}}", &name, &properties)) {
        const Owned<GVariant> owned(properties);
        read(name, properties, object);
    }
    return object;
}

// Without a session nobody could answer a question.
bool somebodyIsLoggedIn()
{
    return access(("/run/user/" + std::to_string(getuid()) + "/bus").c_str(), F_OK) == 0;
}

TWUDisks::Answer answerOf(const Owned<GError>& error)
{
    if (!error)
        return {};
    gchar* name = g_dbus_error_get_remote_error(error.get());
    const bool isRefusal = name && std::string_view(name).starts_with("org.freedesktop.UDisks2.Error.NotAuthorized");
    g_free(name);
    g_dbus_error_strip_remote_error(error.get());
    return { error->message, isRefusal };
}

}

TWUDisksObjects TWUDisks::objects(TWDeadline::Duration limit)
{
    Owned<GError> error;
    const auto answer = callOnBus(
        Manager, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", g_variant_new("()"), limit, error);
    TWUDisksObjects objects;
    if (!answer || !g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(a{oa{sa{sv}}})")))
        return objects;
    const Owned<GVariant> list(g_variant_get_child_value(answer.get(), 0));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, list.get());
    const char* path = nullptr;
    GVariant* interfaces = nullptr;
    while (g_variant_iter_next(&iterator, "{&o@a{sa{sv}}}", &path, &interfaces)) {
        const Owned<GVariant> owned(interfaces);
        objects[path] = readObject(interfaces);
    }
    return objects;
}

TWUDisks::Answer TWUDisks::call(
    const std::string& object, const char* interface, const char* method, TWDeadline::Duration limit, Force force)
{
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    const bool asks = mayAsk_ && somebodyIsLoggedIn();
    g_variant_builder_add(&options, "{sv}", "auth.no_user_interaction", g_variant_new_boolean(asks ? FALSE : TRUE));
    if (force == Force::Yes)
        g_variant_builder_add(&options, "{sv}", "force", g_variant_new_boolean(TRUE));
    Owned<GError> error;
    callOnBus(object, (std::string(Service) + "." + interface).c_str(), method, g_variant_new("(a{sv})", &options),
        limit, error);
    mayAsk_ = mayAsk_ && !g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT);
    return answerOf(error);
}
