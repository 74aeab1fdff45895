#pragma once

#include "Foundation/FileDescriptor.h"
#include "Support/FakeDispatch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace stemvault {

/// A file that another program has open for writing, created if it does not exist. Its date comes
/// from the virtual clock.
class WrittenFile {
public:
    WrittenFile(const FakeDispatch& itsClock, const std::string& path)
        : clock(itsClock),
          file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR))
    {
        touch();
    }
    void write(const std::string& text) const
    {
        EXPECT_EQ(::pwrite(file.get(), text.data(), text.size(), 0), text.size());
        touch();
    }
    void resize(off_t size) const
    {
        EXPECT_EQ(::ftruncate(file.get(), size), 0);
        touch();
    }
    /// Sets the date, as overwriting it with content of the same size does.
    void touch() const
    {
        const auto now = clock.now().time_since_epoch();
        const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
        const timespec date { seconds.count(), std::chrono::nanoseconds(now - seconds).count() };
        const timespec times[] = { date, date };
        EXPECT_EQ(::futimens(file.get(), times), 0);
    }
    void close() { file.reset(); }

private:
    const FakeDispatch& clock;
    FileDescriptor file;
};

} // namespace stemvault
