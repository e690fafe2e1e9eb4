#pragma once

#include <unistd.h>
#include <utility>

// Owns a file descriptor; -1 stands for none.
class TWDescriptor final {
public:
    explicit TWDescriptor(int number = -1)
        : number_(number)
    {
    }
    TWDescriptor(TWDescriptor&& other) noexcept
        : number_(std::exchange(other.number_, -1))
    {
    }
    TWDescriptor& operator=(TWDescriptor&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    ~TWDescriptor() { close(); }

    int number() const { return number_; }
    bool isOpen() const { return number_ >= 0; }
    void close()
    {
        if (isOpen())
            ::close(std::exchange(number_, -1));
    }

private:
    int number_;
};
