#pragma once

#include <unistd.h>

#include <utility>

// Owns a file descriptor and closes it; -1 stands for none.
class TWDescriptor final {
public:
    explicit TWDescriptor(int descriptor = -1)
        : descriptor_(descriptor)
    {
    }
    TWDescriptor(TWDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1))
    {
    }
    TWDescriptor& operator=(TWDescriptor&& other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~TWDescriptor() { close(); }

    int get() const { return descriptor_; }
    bool isOpen() const { return descriptor_ >= 0; }

    // Returns 0, or -1 with errno set: some file systems report a lost write only here.
    int close()
    {
        const int old = std::exchange(descriptor_, -1);
        return old >= 0 ? ::close(old) : 0;
    }

private:
    int descriptor_;
};
