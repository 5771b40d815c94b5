// The way every user file is saved: the new content goes to a temporary file in the
// target's folder and replaces the target in one rename at `commit`. Until then the
// target stays exactly as it was, and a failure or a killed process leaves no stray file.
#pragma once

#include "platform/FileObject.h"

namespace tw {

class SafeFileWriter : public FileObject {
public:
    // Makes the temporary file in the folder of `target` (or in `target` itself when it
    // is an existing folder): "Error creating temporary file".
    explicit SafeFileWriter(const Path& target);
    // Removes the temporary file unless `commit` has put it in place.
    ~SafeFileWriter() override;

    // Brings the data to disk, gives the new file the permissions of the file it
    // replaces and renames it over the target: "Error committing file". Afterwards this
    // object stands for the target, open for reading.
    void commit();

    const Path& targetPath() const { return targetPath_; }
    // The name of the file being written; empty while the file has no name yet, which is
    // how it is made where the file system allows, so that a process killed while writing
    // leaves nothing behind.
    const Path& temporaryPath() const { return temporaryPath_; }

private:
    Path targetPath_;
    Path temporaryPath_;
    Path folder_;
    bool committed_ = false;
};

}  // namespace tw
