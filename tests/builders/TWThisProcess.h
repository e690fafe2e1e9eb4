#pragma once

#include <sys/resource.h>
#include <unistd.h>

// Lowers a limit of this process until the end of the scope.
class TWLowerLimit final {
public:
    TWLowerLimit(__rlimit_resource resource, rlim_t value)
        : resource_(resource)
    {
        getrlimit(resource, &before_);
        const rlimit lower{ value, before_.rlim_max };
        setrlimit(resource, &lower);
    }
    ~TWLowerLimit() { setrlimit(resource_, &before_); }

private:
    const __rlimit_resource resource_;
    rlimit before_{};
};

// Root may read everything, so a test that runs as root becomes another user until the end of the scope.
class TWWithoutPrivileges final {
public:
    TWWithoutPrivileges() { [[maybe_unused]] const int done = user_ == 0 ? seteuid(65534) : 0; }
    ~TWWithoutPrivileges() { [[maybe_unused]] const int done = seteuid(user_); }

private:
    const uid_t user_ = geteuid();
};
