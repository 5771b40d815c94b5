// An open file and its path, closed when the object goes. Reads and writes go to a
// position that the caller gives. Patch files, the shared store and the safe writer use it.
#pragma once

#include "platform/Path.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace tw {

class FileObject {
public:
    // Opens an existing plain file for reading: "Error opening file".
    static FileObject open(const Path& path);

    FileObject(FileObject&& other) noexcept;
    FileObject& operator=(FileObject&& other) noexcept;
    FileObject(const FileObject&) = delete;
    FileObject& operator=(const FileObject&) = delete;
    virtual ~FileObject();

    const Path& path() const { return path_; }

    // "Error obtaining size of file".
    std::uint64_t size() const;
    // Reads up to `count` bytes at `position` and answers how many came; fewer only at
    // the end of the file. "Error reading from file".
    std::size_t read(std::uint64_t position, void* buffer, std::size_t count) const;
    // Writes all `count` bytes at `position`. "Error writing to file".
    void write(std::uint64_t position, const void* data, std::size_t count);
    // Brings the written data to the disk. "Error writing to file".
    void flush();

protected:
    FileObject(int descriptor, Path path) : descriptor_(descriptor), path_(std::move(path)) {}
    void close();

    int descriptor_ = -1;
    Path path_;
};

// The whole content of a file, its bytes as they stand.
std::string readWholeFile(const Path& path);

}  // namespace tw
