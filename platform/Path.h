// A file or folder path as the program passes it around: UTF-8 text with '/' separators,
// where a folder always ends in '/'. Patches, the patch browser and the resource lookup
// hold paths in this form; the same text is what patches and GUI variables store.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

class Path {
public:
    enum class Kind { absent, file, folder };

    // The empty path: no file at all.
    Path() = default;

    // Turns text into a path. Text ending in '/', or whose last segment is "." or "..",
    // is a folder and gets a closing '/'. The empty text gives the empty path. Text with
    // a NUL byte or longer than the system allows raises "Error interpreting path : ".
    static Path parse(std::string_view text);

    bool empty() const { return !text_; }
    const std::string& toString() const;
    bool isFolder() const;
    bool isAbsolute() const;

    // The folder of a file, or the folder above a folder; empty when there is none.
    Path parent() const;
    // `relative` appended to this folder; an absolute `relative` stands for itself.
    Path join(std::string_view relative) const;
    // The last segment, without the closing '/' of a folder.
    std::string fileName() const;
    // The file name without its extension. A leading dot does not start an extension.
    std::string stem() const;
    std::string extension() const;

    // The order for sorting and equality: the user's locale, ignoring case. Case-sensitive
    // file systems may hold two files that compare equal; listings still sort as users
    // of the product expect.
    int compare(const Path& other) const;
    bool equals(const Path& other) const { return compare(other) == 0; }

    // What is at the path on disk. "Error obtaining file or directory info" for anything
    // but absence.
    Kind kind() const;
    // Whether a file can be made in this folder by this process: false for anything that
    // is not a folder, and for a folder such as a system-wide install's that only root
    // may change.
    bool canCreateIn() const;
    // Creates this folder and any missing folder above it; no error when it exists.
    void createFolder() const;
    // The files in this folder whose extension is `extension` (ignoring case), or all
    // files when it is empty. Never ".", "..", folders or hidden files; unsorted. A folder
    // that does not exist answers with an empty list.
    std::vector<Path> list(std::string_view extension) const;
    // The folders in this folder, each ending in '/'; never ".", ".." or hidden ones;
    // unsorted. A folder that does not exist answers with an empty list.
    std::vector<Path> listFolders() const;

private:
    explicit Path(std::string text) : text_(std::make_shared<const std::string>(std::move(text))) {}

    // Shared, so that paths are cheap to copy and may cross threads; null when empty.
    std::shared_ptr<const std::string> text_;
};

}  // namespace tw
