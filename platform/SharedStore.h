// The per-user record of keyed blobs that all products of the family share: preferences,
// remembered folders and the startup bank. One file, read whole and replaced whole; a
// lock file beside it keeps processes from interleaving their updates.
#pragma once

#include "platform/Folders.h"
#include "platform/Path.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tw {

class SharedStore {
public:
    // How long an access waits for another process to finish its own.
    static constexpr int lockMilliseconds = 5000;
    // The wait of the read at an instance's start-up. Holders only read or replace one
    // small file, which takes milliseconds; a process that holds the lock far longer is
    // stuck, and a host scanning or loading plug-ins must not wait on it for seconds per
    // instance. The instance then starts with its factory programs.
    static constexpr int startupLockMilliseconds = 100;

    // Loads the store, or starts empty when there is none yet. A file that is not a store
    // raises FormatException or EOFException; a lock not obtained in time raises
    // "Time out when aquiring access to a shared resource"; file failures raise
    // QvxFiles::Exception.
    // Anything but a plain file in the store's place (a FIFO, a device) reads as a file
    // that can't be opened, without waiting on it.
    explicit SharedStore(Path file = sharedStoreFile(), int lockWait = lockMilliseconds);

    std::optional<std::string> get(std::string_view key) const;
    void set(std::string_view key, std::string blob);

    // Writes the blobs set through this object into the store as it stands now, so that
    // what other processes wrote since loading is kept. A store file that can't be read
    // is left alone and the failure raised.
    void commit();

    // The file's byte form: "MWst", format 1, the count, then each key and blob with its
    // length before it; all words 32-bit little-endian.
    static std::map<std::string, std::string, std::less<>> decode(std::string_view bytes);
    static std::string encode(const std::map<std::string, std::string, std::less<>>& entries);

private:
    std::map<std::string, std::string, std::less<>> read() const;

    Path file_;
    Path lockFile_;
    int lockWait_;
    std::map<std::string, std::string, std::less<>> entries_;
    std::map<std::string, std::string, std::less<>> changes_;
};

}  // namespace tw
