#pragma once

#include <unistd.h>
#include <utility>

namespace stemvault {

/// Owns a descriptor and closes it.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int owned) : descriptor(owned) { }
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor(std::exchange(other.descriptor, -1))
    {
    }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        if (this != &other) {
            reset();
            descriptor = std::exchange(other.descriptor, -1);
        }
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { reset(); }

    [[nodiscard]] bool isOpen() const { return descriptor >= 0; }
    explicit operator bool() const { return isOpen(); }
    [[nodiscard]] int get() const { return descriptor; }
    [[nodiscard]] int release() { return std::exchange(descriptor, -1); }
    void reset()
    {
        if (isOpen())
            ::close(std::exchange(descriptor, -1));
    }

private:
    int descriptor = -1;
};

} // namespace stemvault
