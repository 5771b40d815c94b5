#include "platform/SafeFileWriter.h"

#include "platform/QvxFiles.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {

// A name for the temporary file that no other writer in any process picks at the same
// moment; creation with O_EXCL settles the rare collision by another try.
std::string temporaryName(const Path& target, int attempt) {
    static std::atomic<unsigned> counter{0};
    unsigned long long salt = static_cast<unsigned long long>(
        std::chrono::steady_clock::now().time_since_epoch().count());
    salt ^= static_cast<unsigned long long>(::getpid()) << 32;
    salt += counter.fetch_add(1) * 7919ull + static_cast<unsigned long long>(attempt);
    static const char digits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::string suffix;
    for (int i = 0; i < 8; ++i, salt /= 36) suffix.push_back(digits[salt % 36]);
    return "." + target.fileName() + "." + suffix + ".tmp";
}

constexpr int attempts = 100;

}  // namespace

SafeFileWriter::SafeFileWriter(const Path& target) : FileObject(-1, target), targetPath_(target) {
    if (target.isFolder())
        folder_ = target;
    else if (target.kind() == Path::Kind::folder)
        folder_ = Path::parse(target.toString() + "/");
    else
        folder_ = target.parent();
    if (folder_.empty()) folder_ = Path::parse("./");

    // Where the file system can, the file has no name until commit: nothing of it can
    // outlive this process.
    descriptor_ = ::open(folder_.toString().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (descriptor_ >= 0) return;

    int error = errno;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        Path candidate = folder_.join(temporaryName(target, attempt));
        descriptor_ = ::open(candidate.toString().c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666);
        if (descriptor_ >= 0) {
            temporaryPath_ = candidate;
            path_ = candidate;
            return;
        }
        error = errno;
        if (error != EEXIST) break;
    }
    throw QvxFiles::Exception("Error creating temporary file", error, target.toString());
}

SafeFileWriter::~SafeFileWriter() {
    close();
    if (!temporaryPath_.empty()) ::unlink(temporaryPath_.toString().c_str());
}

void SafeFileWriter::commit() {
    if (committed_) return;
    flush();

    // A file the user may not write is not replaced, although its folder would allow
    // it. The saved file keeps the permissions of the one it replaces; a new file has
    // the user's default permissions already.
    struct stat former {};
    if (::stat(targetPath_.toString().c_str(), &former) == 0 && S_ISREG(former.st_mode)) {
        if (::access(targetPath_.toString().c_str(), W_OK) != 0)
            throw QvxFiles::Exception("Error committing file", errno, targetPath_.toString());
        ::fchmod(descriptor_, former.st_mode & 07777);
    }

    bool anonymous = temporaryPath_.empty();
    if (anonymous) {
        // Give the file a name beside the target, since a rename needs one.
        std::string self = "/proc/self/fd/" + std::to_string(descriptor_);
        int error = 0;
        for (int attempt = 0; attempt < attempts && temporaryPath_.empty(); ++attempt) {
            Path candidate = folder_.join(temporaryName(targetPath_, attempt));
            const char* name = candidate.toString().c_str();
            int linked = ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW);
            if (linked != 0 && errno == ENOENT)  // no /proc: the direct form, where it is allowed
                linked = ::linkat(descriptor_, "", AT_FDCWD, name, AT_EMPTY_PATH);
            if (linked == 0)
                temporaryPath_ = candidate;
            else if ((error = errno) != EEXIST)
                break;
        }
        if (temporaryPath_.empty()) throw QvxFiles::Exception("Error committing file", error, targetPath_.toString());
    }

    if (::rename(temporaryPath_.toString().c_str(), targetPath_.toString().c_str()) != 0) {
        int error = errno;
        // The content stays readable through the open file; only a name made here for
        // the rename goes at once.
        if (anonymous) {
            ::unlink(temporaryPath_.toString().c_str());
            temporaryPath_ = Path();
        }
        throw QvxFiles::Exception("Error committing file", error, targetPath_.toString());
    }
    temporaryPath_ = Path();
    path_ = targetPath_;
    committed_ = true;

    // The rename itself reaches the disk with the folder's entries.
    int folder = ::open(folder_.toString().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
}

}  // namespace tw
