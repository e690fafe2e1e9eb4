#include "platform/desktop/TWSessionBus.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace {

constexpr auto Bus = "org.freedesktop.DBus";
constexpr auto BusObject = "/org/freedesktop/DBus";
constexpr auto Actions = "org.gtk.Actions";

std::string value(const char* variable)
{
    const char* found = std::getenv(variable);
    return found ? found : "";
}

// GIO's own search would start a bus if there is none.
std::string address()
{
    const auto given = value("DBUS_SESSION_BUS_ADDRESS");
    if (!given.empty() || value("XDG_RUNTIME_DIR").empty())
        return given.starts_with("autolaunch:") ? "" : given;
    return "unix:path=" + value("XDG_RUNTIME_DIR") + "/bus";
}

// Whether there should be a bus. The address of the user's own one is known even if nobody has started it.
bool isExpected()
{
    constexpr std::string_view Prefix = "unix:path=";
    const auto where = address();
    const auto path = where.substr(std::min(Prefix.size(), where.size()), where.find(',') - Prefix.size());
    return !where.empty() && (!where.starts_with(Prefix) || access(path.c_str(), F_OK) == 0);
}

GDBusConnection* connect()
{
    const auto flags = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    const auto where = address();
    return where.empty() ? nullptr
                         : g_dbus_connection_new_for_address_sync(where.c_str(), flags, nullptr, nullptr, nullptr);
}

void disconnect(gpointer connection)
{
    if (!connection)
        return;
    g_dbus_connection_close_sync(G_DBUS_CONNECTION(connection), nullptr, nullptr);
    g_object_unref(connection);
}

// Where programs put the object of an application with this name.
std::string objectOf(std::string name)
{
    std::replace(name.begin(), name.end(), '.', '/');
    std::replace(name.begin(), name.end(), '-', '_');
    return "/" + name;
}

}

TWSessionBus::TWSessionBus(int patience)
    : patience_(patience)
    , connection_(connect(), disconnect)
{
}

TWSessionBus::Result TWSessionBus::call(
    const Call& what, GVariant* arguments, Answer& answer, std::string* problem) const
{
    const Answer kept(arguments ? g_variant_ref_sink(arguments) : nullptr, g_variant_unref);
    if (!connection_)
        return Result::NoAnswer;
    GError* error = nullptr;
    answer.reset(g_dbus_connection_call_sync(connection_.get(), what.name.c_str(), what.object.c_str(), what.interface,
        what.method, arguments, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, patience_, nullptr, &error));
    if (answer)
        return Result::Done;
    const bool isRefused = g_dbus_error_is_remote_error(error);
    if (isRefused && problem) {
        g_dbus_error_strip_remote_error(error);
        *problem = error->message;
    }
    g_error_free(error);
    return isRefused ? Result::Refused : Result::NoAnswer;
}

std::optional<std::string> TWSessionBus::ownerOf(const char* name) const
{
    Answer answer(nullptr, g_variant_unref);
    if (call({ Bus, BusObject, Bus, "GetNameOwner" }, g_variant_new("(s)", name), answer) != Result::Done)
        return std::nullopt;
    const char* owner = nullptr;
    g_variant_get(answer.get(), "(&s)", &owner);
    return owner;
}

// Nothing if the bus does not answer.
std::optional<std::vector<std::string>> TWSessionBus::namesOf(const std::set<std::int64_t>& processes) const
{
    Answer answer(nullptr, g_variant_unref);
    if (call({ Bus, BusObject, Bus, "ListNames" }, nullptr, answer) != Result::Done)
        return std::nullopt;
    const Answer list(g_variant_get_child_value(answer.get(), 0), g_variant_unref);
    const std::unique_ptr<const char*, void (*)(gpointer)> all(g_variant_get_strv(list.get(), nullptr), g_free);
    std::vector<std::string> names;
    for (const char* const* name = all.get(); *name; ++name) {
        std::int64_t process = 0;
        const auto found = processOf(*name, process);
        if (found == Result::NoAnswer)
            return std::nullopt;
        if (found == Result::Done && processes.contains(process))
            names.emplace_back(*name);
    }
    return names;
}

// Refused if nobody has the name any more.
TWSessionBus::Result TWSessionBus::processOf(const std::string& name, std::int64_t& process) const
{
    Answer answer(nullptr, g_variant_unref);
    guint32 found = 0;
    const auto result
        = call({ Bus, BusObject, Bus, "GetConnectionUnixProcessID" }, g_variant_new("(s)", name.c_str()), answer);
    if (result == Result::Done)
        g_variant_get(answer.get(), "(u)", &found);
    process = found;
    return result;
}

// Without such an action the call would do nothing and yet succeed, so its description is asked for first.
TWSessionBus::Result TWSessionBus::activateQuit(const std::string& name) const
{
    Answer answer(nullptr, g_variant_unref);
    gboolean isEnabled = FALSE;
    const auto object = objectOf(name);
    const auto described = call({ name, object, Actions, "Describe" }, g_variant_new("(s)", "quit"), answer);
    if (described != Result::Done)
        return described;
    if (g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("((bgav))")))
        g_variant_get(answer.get(), "((bgav))", &isEnabled, nullptr, nullptr);
    if (!isEnabled)
        return Result::Refused;
    return call({ name, object, Actions, "Activate" }, g_variant_new("(sava{sv})", "quit", nullptr, nullptr), answer);
}

// Programs made with Qt or KDE's libraries have it.
TWSessionBus::Result TWSessionBus::quitMainApplication(const std::string& name) const
{
    Answer answer(nullptr, g_variant_unref);
    return call({ name, "/MainApplication", "org.qtproject.Qt.QCoreApplication", "quit" }, nullptr, answer);
}

// A program that does not answer may have quit before it could, and is not asked in a second way.
std::optional<bool> TWSessionBus::quit(const std::set<std::int64_t>& processes) const
{
    if (!connection_)
        return isExpected() ? std::nullopt : std::optional(false);
    const auto theirs = namesOf(processes);
    if (!theirs)
        return std::nullopt;
    for (const auto& name : *theirs) {
        if (!name.starts_with(':') && activateQuit(name) != Result::Refused)
            return true;
    }
    return std::any_of(theirs->begin(), theirs->end(),
        [this](const auto& name) { return name.starts_with(':') && quitMainApplication(name) != Result::Refused; });
}
