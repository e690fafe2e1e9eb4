#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

// A connection to the message bus of the session. Starts no program, neither a bus nor a service.
class TWSessionBus final {
public:
    using Answer = std::unique_ptr<GVariant, void (*)(GVariant*)>;

    struct Call {
        std::string name;
        std::string object;
        const char* interface;
        const char* method;
    };
    enum class Result { Done, Refused, NoAnswer };

    // The patience is that with one call, in milliseconds.
    explicit TWSessionBus(int patience = 300);

    // Tells these processes to quit. False if none of them offers that. Nothing if there is a bus that cannot be asked.
    std::optional<bool> quit(const std::set<std::int64_t>& processes) const;

    // The unique name of who has the name now.
    std::optional<std::string> ownerOf(const char* name) const;

    // Takes over floating arguments. The problem is set in one line if the call is refused.
    Result call(const Call&, GVariant* arguments, Answer&, std::string* problem = nullptr) const;

private:
    std::optional<std::vector<std::string>> namesOf(const std::set<std::int64_t>& processes) const;
    Result processOf(const std::string& name, std::int64_t& process) const;
    Result activateQuit(const std::string& name) const;
    Result quitMainApplication(const std::string& name) const;

    const int patience_;
    const std::unique_ptr<GDBusConnection, void (*)(gpointer)> connection_;
};
