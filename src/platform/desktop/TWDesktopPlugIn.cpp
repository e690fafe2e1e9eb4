#include "platform/desktop/TWLocationService.h"
#include "platform/desktop/TWSessionBus.h"
#include "platform/desktop/TWXServer.h"
#include "platform/linux/TWLinuxDesktop.h"

namespace {

class Desktop final : public TWLinuxDesktop {
public:
    std::optional<std::vector<TWLinuxWindow>> windows() override
    {
        const TWXServer server;
        std::vector<TWLinuxWindow> windows;
        for (const auto& window : server.windows())
            windows.push_back({ window.process, server.names(window) });
        return server.isConnected() ? std::optional(windows) : std::nullopt;
    }

    std::optional<bool> closeWindows(const std::set<std::int64_t>& processes) override
    {
        const TWXServer server;
        bool isAsked = false;
        for (const auto& window : server.windows()) {
            if (processes.contains(window.process))
                isAsked = server.close(window) || isAsked;
        }
        return isAsked || server.isConnected() ? std::optional(isAsked) : std::nullopt;
    }

    std::optional<bool> quitOverBus(const std::set<std::int64_t>& processes) override
    {
        return TWSessionBus().quit(processes);
    }

    std::optional<TWLinuxLocationList> locations(std::chrono::milliseconds patience) override
    {
        return TWLocationService(patience).locations();
    }

    std::optional<std::string> close(
        const TWLinuxLocation& location, Force force, std::chrono::milliseconds patience) override
    {
        return TWLocationService(patience).close(location, force);
    }
};

}

TWLinuxDesktop* TWMakeLinuxDesktop()
{
    return new Desktop;
}
