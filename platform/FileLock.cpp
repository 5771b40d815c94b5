#include "platform/FileLock.h"

#include "platform/Exception.h"
#include "platform/QvxFiles.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace tw {

FileLock::FileLock(const Path& lockFile, int milliseconds) {
    // Without waiting, whatever stands in the lock file's place.
    descriptor_ = ::open(lockFile.toString().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor_ < 0) throw QvxFiles::Exception("Error creating file", errno, lockFile.toString());
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    // flock has no time limit of its own: poll, briefly, since holders only read or
    // replace one small file.
    while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() >= deadline) {
            ::close(descriptor_);
            throw Exception("Time out when aquiring access to a shared resource");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

FileLock::~FileLock() { ::close(descriptor_); }

}  // namespace tw
