#include "FileManager/FileContent.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <vector>

namespace stemvault {

namespace {

constexpr off_t stepSize = 8 << 20;
constexpr off_t bufferSize = 1 << 20;

bool isFull(int error)
{
    return error == ENOSPC || error == EDQUOT || error == EFBIG;
}

// The errors by which the kernel and file systems report that they cannot copy between two files by
// some method; CIFS has returned ENOENT. After any other error, no other method would succeed.
bool isRefusal(int error)
{
    constexpr int refusals[] = { EACCES, EBADF, EINVAL, ENOENT, ENOSYS, ENOTTY, EOPNOTSUPP, EPERM,
        ESPIPE, ETXTBSY, EXDEV };
    return std::ranges::find(refusals, error) != std::end(refusals);
}

class ContentCopy {
public:
    ContentCopy(int source, int destination, const CopyOptions& copyOptions)
        : in(source), out(destination), options(copyOptions)
    {
    }

    CopyOutcome copyAll(off_t size);
    CopyOutcome copyWithHoles(off_t size);

private:
    enum class Means { CopyFileRange, SendFile, ReadAndWrite };

    CopyOutcome copyRange(off_t at, off_t end);
    CopyOutcome reserve(off_t size) const;
    ssize_t step(off_t at, off_t count);
    ssize_t readAndWrite(off_t at, off_t count);
    CopyOutcome fault(ssize_t moved) const;
    CopyOutcome faultInKernel(off_t at, off_t count);
    void beginWriting(off_t at, off_t count) const;

    int in;
    int out;
    const CopyOptions& options;
    Means means = Means::CopyFileRange;
    bool isReadingAtFault = false;
    std::vector<char> buffer;
};

CopyOutcome ContentCopy::copyAll(off_t size)
{
    if (const auto fault = reserve(size))
        return fault;
    return copyRange(0, size);
}

// Detects a full disk before the first byte is written; contiguous blocks are also written faster.
CopyOutcome ContentCopy::reserve(off_t size) const
{
    if (options.calls.fallocate(out, FALLOC_FL_KEEP_SIZE, 0, size) != 0 && isFull(errno))
        return writingFault();
    return std::nullopt;
}

// Drives that only accept sequential writes cannot leave holes.
CopyOutcome ContentCopy::copyWithHoles(off_t size)
{
    if (options.calls.ftruncate(out, size) != 0)
        return isRefusal(errno) ? copyAll(size) : writingFault();
    for (off_t at = 0; at < size;) {
        off_t data = ::lseek(in, at, SEEK_DATA);
        if (data < 0 && errno == ENXIO)
            return std::nullopt;
        if (data < 0)
            data = at;
        const off_t hole = ::lseek(in, data, SEEK_HOLE);
        const off_t end = hole < 0 ? size : std::min(hole, size);
        if (const auto fault = copyRange(std::min(data, end), end))
            return fault;
        at = end;
    }
    return std::nullopt;
}

// Switches to the next method when one is refused for the first time. Only reading shows reliably
// where a file ends: the kernel's methods may copy nothing where they are not supported.
CopyOutcome ContentCopy::copyRange(off_t at, off_t end)
{
    while (at < end) {
        const ssize_t moved = step(at, std::min(end - at, stepSize));
        if (moved > 0) {
            beginWriting(at, moved);
            at += moved;
        } else if (moved < 0 && errno == EINTR) {
            continue;
        } else if (means == Means::ReadAndWrite) {
            return fault(moved);
        } else if (moved < 0 && !isRefusal(errno)) {
            return faultInKernel(at, std::min(end - at, stepSize));
        } else {
            means = means == Means::CopyFileRange ? Means::SendFile : Means::ReadAndWrite;
        }
    }
    return std::nullopt;
}

ssize_t ContentCopy::step(off_t at, off_t count)
{
    off_t inAt = at;
    off_t outAt = at;
    const auto size = static_cast<std::size_t>(count);
    switch (means) {
    case Means::CopyFileRange:
        return options.calls.copyFileRange(in, &inAt, out, &outAt, size, 0);
    case Means::SendFile:
        if (::lseek(out, at, SEEK_SET) < 0)
            return -1;
        return options.calls.sendfile(out, in, &inAt, size);
    case Means::ReadAndWrite:
        break;
    }
    return readAndWrite(at, count);
}

ssize_t ContentCopy::readAndWrite(off_t at, off_t count)
{
    buffer.resize(bufferSize);
    const auto size = static_cast<std::size_t>(std::min(count, bufferSize));
    const ssize_t got = ::pread(in, buffer.data(), size, at);
    isReadingAtFault = got <= 0;
    return got <= 0 ? got
                    : options.calls.pwrite(out, buffer.data(), static_cast<std::size_t>(got), at);
}

CopyOutcome ContentCopy::fault(ssize_t moved) const
{
    if (moved == 0)
        return CopyFault { isReadingAtFault ? CopyFault::Kind::Changing : CopyFault::Kind::Writing,
            isReadingAtFault ? 0 : EIO };
    return isReadingAtFault ? readingFault() : writingFault();
}

// The kernel does not report which of the two files failed; reading the same part shows it.
CopyOutcome ContentCopy::faultInKernel(off_t at, off_t count)
{
    const CopyFault written = writingFault();
    buffer.resize(bufferSize);
    for (const off_t end = at + count; at < end; at += bufferSize)
        if (::pread(in, buffer.data(), buffer.size(), at) < 0)
            return readingFault();
    return written;
}

// Starts to write to the disk while the rest is still being copied, not only at the final fsync.
void ContentCopy::beginWriting(off_t at, off_t count) const
{
    if (options.durability == Durability::OnDisk)
        ::sync_file_range(out, at, count, SYNC_FILE_RANGE_WRITE);
}

} // namespace

CopyOutcome copyContent(int in, int out, const struct stat& source, const CopyOptions& options)
{
    constexpr off_t blockSize = 512;
    if (source.st_size == 0 || options.calls.clone(out, in) == 0)
        return std::nullopt;
    ::posix_fadvise(in, 0, 0, POSIX_FADV_SEQUENTIAL);
    ContentCopy copy(in, out, options);
    return source.st_blocks * blockSize < source.st_size ? copy.copyWithHoles(source.st_size)
                                                         : copy.copyAll(source.st_size);
}

} // namespace stemvault
