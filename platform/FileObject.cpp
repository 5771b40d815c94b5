#include "platform/FileObject.h"

#include "platform/QvxFiles.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

FileObject FileObject::open(const Path& path) {
    // Without waiting: opening a FIFO for reading would block until a writer comes.
    int descriptor = ::open(path.toString().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) throw QvxFiles::Exception("Error opening file", errno, path.toString());
    FileObject file(descriptor, path);
    // Only plain files: a folder or a device is nothing the program could read as a whole.
    struct stat info {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode))
        throw QvxFiles::Exception("Error opening file", S_ISDIR(info.st_mode) ? EISDIR : EINVAL, path.toString());
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    return file;
}

FileObject::FileObject(FileObject&& other) noexcept : descriptor_(other.descriptor_), path_(std::move(other.path_)) {
    other.descriptor_ = -1;
}

FileObject& FileObject::operator=(FileObject&& other) noexcept {
    if (this != &other) {
        close();
        descriptor_ = other.descriptor_;
        path_ = std::move(other.path_);
        other.descriptor_ = -1;
    }
    return *this;
}

FileObject::~FileObject() { close(); }

void FileObject::close() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

std::uint64_t FileObject::size() const {
    struct stat info {};
    if (::fstat(descriptor_, &info) != 0)
        throw QvxFiles::Exception("Error obtaining size of file", errno, path_.toString());
    return static_cast<std::uint64_t>(info.st_size);
}

std::size_t FileObject::read(std::uint64_t position, void* buffer, std::size_t count) const {
    std::size_t done = 0;
    while (done < count) {
        ssize_t n = ::pread(descriptor_, static_cast<char*>(buffer) + done, count - done,
                            static_cast<off_t>(position + done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) throw QvxFiles::Exception("Error reading from file", errno, path_.toString());
        if (n == 0) break;
        done += static_cast<std::size_t>(n);
    }
    return done;
}

void FileObject::write(std::uint64_t position, const void* data, std::size_t count) {
    std::size_t done = 0;
    while (done < count) {
        ssize_t n = ::pwrite(descriptor_, static_cast<const char*>(data) + done, count - done,
                             static_cast<off_t>(position + done));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) throw QvxFiles::Exception("Error writing to file", n < 0 ? errno : ENOSPC, path_.toString());
        done += static_cast<std::size_t>(n);
    }
}

void FileObject::flush() {
    if (::fsync(descriptor_) != 0) throw QvxFiles::Exception("Error writing to file", errno, path_.toString());
}

std::string readWholeFile(const Path& path) {
    FileObject file = FileObject::open(path);
    std::string bytes(static_cast<std::size_t>(file.size()), '\0');
    bytes.resize(file.read(0, bytes.data(), bytes.size()));
    // A file that grew since its size was read is read to its end.
    char more[4096];
    for (std::size_t n; (n = file.read(bytes.size(), more, sizeof more)) > 0;) bytes.append(more, n);
    return bytes;
}

}  // namespace tw
