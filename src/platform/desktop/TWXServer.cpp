#include "platform/desktop/TWXServer.h"

#include <unistd.h>
#include <xcb/res.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>

namespace {

constexpr int DeepestClient = 4; // below the root: managers put a window into one or more frames
constexpr std::uint32_t MostWords = 1024; // in units of four bytes
constexpr std::uint32_t Withdrawn = 0; // the state of a window that is no longer managed
constexpr std::uint32_t ByUser = 2; // tells the manager that not the application itself asks

template <typename Reply>
using Owned = std::unique_ptr<Reply, void (*)(void*)>;

// Errors are not told apart from missing answers: the window may have been closed meanwhile.
template <typename Reply>
Owned<Reply> owned(Reply* reply)
{
    return { reply, std::free };
}

Owned<xcb_get_property_reply_t> property(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t name)
{
    const auto cookie = xcb_get_property(connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, MostWords);
    return owned(xcb_get_property_reply(connection, cookie, nullptr));
}

bool isManaged(const xcb_get_property_reply_t* state)
{
    return state && state->format == 4 * CHAR_BIT && state->value_len == 1
        && *static_cast<const std::uint32_t*>(xcb_get_property_value(state)) != Withdrawn;
}

std::string hostName()
{
    char name[HOST_NAME_MAX + 1] = {};
    gethostname(name, HOST_NAME_MAX);
    return name;
}

// As a process in a container may have.
bool hasOtherHostName(std::int64_t process)
{
    std::error_code error;
    const auto theirs = std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/ns/uts", error);
    return !error && theirs != std::filesystem::read_symlink("/proc/self/ns/uts", error);
}

}

TWXServer::TWXServer()
    : connection_(xcb_connect(nullptr, nullptr), xcb_disconnect)
{
}

xcb_atom_t TWXServer::atom(const std::string& name) const
{
    auto& known = atoms_[name];
    if (known == XCB_ATOM_NONE) {
        const auto asked = xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
        if (const auto reply = owned(xcb_intern_atom_reply(connection_.get(), asked, nullptr)))
            known = reply->atom;
    }
    return known;
}

std::string TWXServer::text(xcb_window_t window, const char* name) const
{
    const auto reply = property(connection_.get(), window, atom(name));
    if (!reply || reply->format != CHAR_BIT)
        return "";
    const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
    return { static_cast<const char*>(xcb_get_property_value(reply.get())), length };
}

std::vector<std::uint32_t> TWXServer::numbers(xcb_window_t window, const char* name) const
{
    const auto reply = property(connection_.get(), window, atom(name));
    if (!reply || reply->format != 4 * CHAR_BIT)
        return {};
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return { first, first + reply->value_len };
}

bool TWXServer::supports(xcb_window_t window, const char* list, const char* name) const
{
    const auto supported = numbers(window, list);
    return std::find(supported.begin(), supported.end(), atom(name)) != supported.end();
}

// A manager that has ended leaves the name of its window, but not the window.
bool TWXServer::hasManager(xcb_window_t root) const
{
    constexpr auto Check = "_NET_SUPPORTING_WM_CHECK";
    const auto window = numbers(root, Check);
    return window.size() == 1 && numbers(window.front(), Check) == window;
}

bool TWXServer::isVisible(xcb_window_t window) const
{
    const auto reply = owned(xcb_get_window_attributes_reply(
        connection_.get(), xcb_get_window_attributes(connection_.get(), window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE && !reply->override_redirect;
}

std::vector<TWXWindow> TWXServer::windows() const
{
    std::vector<TWXWindow> windows;
    if (!isConnected())
        return windows;
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())); screen.rem > 0;
         xcb_screen_next(&screen)) {
        const auto root = screen.data->root;
        addBelow(root, 1, { root, hasManager(root), windows });
    }
    return windows;
}

// Programs have many windows that are never shown; only a managed one has a state. All states are asked for at once,
// because waiting for each would take most of the time.
void TWXServer::addBelow(xcb_window_t parent, int depth, const Found& found) const
{
    const auto tree
        = owned(xcb_query_tree_reply(connection_.get(), xcb_query_tree(connection_.get(), parent), nullptr));
    if (!tree)
        return;
    const auto* children = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    std::vector<xcb_get_property_cookie_t> states;
    states.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index)
        states.push_back(
            xcb_get_property(connection_.get(), 0, children[index], atom("WM_STATE"), XCB_GET_PROPERTY_TYPE_ANY, 0, 1));
    for (std::size_t index = 0; index < states.size(); ++index) {
        const auto window = children[index];
        const auto state = owned(xcb_get_property_reply(connection_.get(), states[index], nullptr));
        if (isManaged(state.get()) || (!found.hasManager && depth == 1 && isVisible(window)))
            found.windows.push_back({ window, found.root, processOf(window) });
        else if (depth < DeepestClient)
            addBelow(window, depth + 1, found);
    }
}

// What the window says about its process is not believed if the server knows better: in a container, identifiers mean
// other processes. To the server, the window of a program on another machine belongs to the one that passes it on.
std::int64_t TWXServer::processOf(xcb_window_t window) const
{
    const auto machine = text(window, "WM_CLIENT_MACHINE");
    const bool isHere = machine == hostName();
    const auto* extension = xcb_get_extension_data(connection_.get(), &xcb_res_id);
    if (extension && extension->present) {
        const xcb_res_client_id_spec_t asked{ window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID };
        const auto reply = owned(xcb_res_query_client_ids_reply(
            connection_.get(), xcb_res_query_client_ids(connection_.get(), 1, &asked), nullptr));
        if (reply && reply->num_ids == 1) {
            const auto* answer = xcb_res_query_client_ids_ids_iterator(reply.get()).data;
            const std::int64_t process
                = xcb_res_client_id_value_value_length(answer) == 1 ? *xcb_res_client_id_value_value(answer) : 0;
            return isHere || machine.empty() || hasOtherHostName(process) ? process : 0;
        }
    }
    const auto process = numbers(window, "_NET_WM_PID");
    return process.size() == 1 && isHere ? process.front() : 0;
}

std::vector<std::string> TWXServer::names(const TWXWindow& window) const
{
    std::vector<std::string> names{ text(window.identifier, "_GTK_APPLICATION_ID") };
    const auto instanceAndClass = text(window.identifier, "WM_CLASS");
    for (std::size_t begin = 0; begin < instanceAndClass.size(); begin += names.back().size() + 1)
        names.emplace_back(&instanceAndClass[begin]); // each ends with a NUL
    return names;
}

bool TWXServer::close(const TWXWindow& window) const
{
    constexpr auto Close = "_NET_CLOSE_WINDOW";
    constexpr auto Delete = "WM_DELETE_WINDOW";
    if (hasManager(window.root) && supports(window.root, "_NET_SUPPORTED", Close))
        send(window.root, window.identifier, Close, XCB_CURRENT_TIME, ByUser);
    else if (supports(window.identifier, "WM_PROTOCOLS", Delete))
        send(window.identifier, window.identifier, "WM_PROTOCOLS", atom(Delete), XCB_CURRENT_TIME);
    else
        return false;
    // Returns when the server has got it, because a closed connection could take it along.
    owned(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
    return true;
}

void TWXServer::send(
    xcb_window_t destination, xcb_window_t about, const char* type, std::uint32_t first, std::uint32_t second) const
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 4 * CHAR_BIT;
    event.window = about;
    event.type = atom(type);
    event.data.data32[0] = first;
    event.data.data32[1] = second;
    const std::uint32_t toManager = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    xcb_send_event(
        connection_.get(), 0, destination, destination == about ? 0 : toManager, reinterpret_cast<const char*>(&event));
}
