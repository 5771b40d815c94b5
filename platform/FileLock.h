// A lock shared between processes: an exclusive flock on a lock file, held while the
// object lives. Guards the shared store, which every instance of every product of the
// family may rewrite at any time.
#pragma once

#include "platform/Path.h"

namespace tw {

class FileLock {
public:
    // Waits at most `milliseconds` for the lock; then raises "Time out when aquiring
    // access to a shared resource". A lock file that cannot be made raises
    // "Error creating file".
    FileLock(const Path& lockFile, int milliseconds);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int descriptor_ = -1;
};

}  // namespace tw
