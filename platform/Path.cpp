#include "platform/Path.h"

#include "platform/Ascii.h"
#include "platform/QvxFiles.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <dirent.h>
#include <fcntl.h>
#include <locale.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wchar.h>
#include <wctype.h>

namespace tw {

namespace {

bool isDotSegment(std::string_view segment) { return segment == "." || segment == ".."; }

std::string_view lastSegment(std::string_view text) {
    std::string_view::size_type slash = text.rfind('/');
    return slash == std::string_view::npos ? text : text.substr(slash + 1);
}

// The locale of the user's environment, for ordering names as the desktop does; the
// host may never have called setlocale, so the process locale is no guide. It is freed
// when the library is unloaded, as hosts do with plug-ins they no longer use.
class UserLocale {
public:
    UserLocale() {
        locale_ = newlocale(LC_COLLATE_MASK | LC_CTYPE_MASK, "", locale_t(0));
        if (locale_ == locale_t(0)) locale_ = newlocale(LC_COLLATE_MASK | LC_CTYPE_MASK, "C.UTF-8", locale_t(0));
        if (locale_ == locale_t(0)) locale_ = newlocale(LC_COLLATE_MASK | LC_CTYPE_MASK, "C", locale_t(0));
    }
    ~UserLocale() {
        if (locale_ != locale_t(0)) freelocale(locale_);
    }
    UserLocale(const UserLocale&) = delete;
    UserLocale& operator=(const UserLocale&) = delete;
    locale_t get() const { return locale_; }

private:
    locale_t locale_;
};

locale_t userLocale() {
    static const UserLocale locale;
    return locale.get();
}

// UTF-8 to wide characters, lowered in case. A byte that starts no valid sequence stands
// for itself in a private range, so that every text has an order.
std::wstring foldedWide(const std::string& text, locale_t locale) {
    std::wstring out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        int extra = c < 0x80 ? 0 : (c & 0xE0) == 0xC0 ? 1 : (c & 0xF0) == 0xE0 ? 2 : (c & 0xF8) == 0xF0 ? 3 : -1;
        std::uint32_t code = extra == 0 ? c : extra == 1 ? c & 0x1F : extra == 2 ? c & 0x0F : c & 0x07;
        bool valid = extra >= 0 && i + extra < text.size();
        for (int k = 1; valid && k <= extra; ++k) {
            unsigned char d = static_cast<unsigned char>(text[i + k]);
            valid = (d & 0xC0) == 0x80;
            code = (code << 6) | (d & 0x3F);
        }
        if (!valid || code == 0) {
            out.push_back(static_cast<wchar_t>(0xF700 + c));
            ++i;
            continue;
        }
        out.push_back(static_cast<wchar_t>(towlower_l(static_cast<wint_t>(code), locale)));
        i += static_cast<std::size_t>(extra) + 1;
    }
    return out;
}


const std::string emptyText;

}  // namespace

Path Path::parse(std::string_view text) {
    if (text.empty()) return Path();
    if (text.find('\0') != std::string_view::npos || text.size() >= PATH_MAX)
        throw QvxFiles::Exception("Error interpreting path : " + std::string(text), EINVAL, std::string(text));
    std::string stored(text);
    if (stored.back() != '/' && isDotSegment(lastSegment(stored))) stored.push_back('/');
    return Path(std::move(stored));
}

const std::string& Path::toString() const { return text_ ? *text_ : emptyText; }

bool Path::isFolder() const { return text_ && text_->back() == '/'; }

bool Path::isAbsolute() const { return text_ && text_->front() == '/'; }

Path Path::parent() const {
    if (!text_) return Path();
    std::string_view text = *text_;
    if (text.back() == '/') text.remove_suffix(1);
    std::string_view::size_type slash = text.rfind('/');
    if (slash == std::string_view::npos) return Path();
    return Path(std::string(text.substr(0, slash + 1)));
}

Path Path::join(std::string_view relative) const {
    if (relative.empty()) return *this;
    if (!text_ || relative.front() == '/') return parse(relative);
    std::string text = *text_;
    if (text.back() != '/') text.push_back('/');
    text += relative;
    return parse(text);
}

std::string Path::fileName() const {
    if (!text_) return std::string();
    std::string_view text = *text_;
    if (text.size() > 1 && text.back() == '/') text.remove_suffix(1);
    return std::string(lastSegment(text));
}

std::string Path::stem() const {
    std::string name = fileName();
    std::string::size_type dot = name.rfind('.');
    if (isFolder() || dot == std::string::npos || dot == 0) return name;
    return name.substr(0, dot);
}

std::string Path::extension() const {
    std::string name = fileName();
    std::string::size_type dot = name.rfind('.');
    if (isFolder() || dot == std::string::npos || dot == 0) return std::string();
    return name.substr(dot + 1);
}

int Path::compare(const Path& other) const {
    if (text_ == other.text_) return 0;
    locale_t locale = userLocale();
    std::wstring a = foldedWide(toString(), locale), b = foldedWide(other.toString(), locale);
    int order = wcscoll_l(a.c_str(), b.c_str(), locale);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

Path::Kind Path::kind() const {
    if (!text_) return Kind::absent;
    struct stat info {};
    if (::stat(text_->c_str(), &info) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return Kind::absent;
        throw QvxFiles::Exception("Error obtaining file or directory info", errno, *text_);
    }
    return S_ISDIR(info.st_mode) ? Kind::folder : Kind::file;
}

bool Path::canCreateIn() const {
    if (!text_ || ::access(text_->c_str(), W_OK | X_OK) != 0 || kind() != Kind::folder) return false;
    // The permission bits say yes to root everywhere: only a file made says it for sure.
    // One without a name where the file system can, else a hidden one removed at once.
    int descriptor = ::open(text_->c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (descriptor >= 0) {
        ::close(descriptor);
        return true;
    }
    if (errno != EOPNOTSUPP && errno != EISDIR) return false;
    const std::string probe = join(".write-probe-" + std::to_string(::getpid())).toString();
    descriptor = ::open(probe.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    if (descriptor < 0) return false;
    ::close(descriptor);
    ::unlink(probe.c_str());
    return true;
}

void Path::createFolder() const {
    if (!text_) return;
    const std::string& text = *text_;
    for (std::string::size_type end = text.find('/', 1);; end = text.find('/', end + 1)) {
        std::string prefix = text.substr(0, end);
        if (::mkdir(prefix.c_str(), 0777) != 0 && errno != EEXIST)
            throw QvxFiles::Exception("Error creating file", errno, prefix);
        if (end == std::string::npos || end + 1 >= text.size()) break;
    }
    if (kind() != Kind::folder)
        throw QvxFiles::Exception("Error creating file", ENOTDIR, text);
}

namespace {

// Entries of a folder whose names pass `wanted`, and which are plain files or folders
// as `folders` asks; links count as what they point to.
template <class Wanted>
std::vector<Path> listEntries(const std::string* text, bool folders, Wanted wanted) {
    std::vector<Path> files;
    if (text == nullptr) return files;
    std::string folder = *text;
    if (folder.back() != '/') folder.push_back('/');
    DIR* dir = ::opendir(folder.c_str());
    if (dir == nullptr) {
        if (errno == ENOENT || errno == ENOTDIR) return files;
        throw QvxFiles::Exception("Error listing file directory", errno, folder);
    }
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(dir);
        if (entry == nullptr) break;
        std::string_view name = entry->d_name;
        if (name.front() == '.' || !wanted(name)) continue;
        bool isWanted = entry->d_type == (folders ? DT_DIR : DT_REG);
        if (entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN) {
            struct stat info {};
            isWanted = ::fstatat(::dirfd(dir), entry->d_name, &info, 0) == 0 &&
                       (folders ? S_ISDIR(info.st_mode) : S_ISREG(info.st_mode));
        }
        if (isWanted) files.push_back(Path::parse(folder + std::string(name) + (folders ? "/" : "")));
    }
    int error = errno;
    ::closedir(dir);
    if (error != 0) throw QvxFiles::Exception("Error listing file directory", error, folder);
    return files;
}

}  // namespace

std::vector<Path> Path::list(std::string_view extension) const {
    const std::string suffix = extension.empty() ? std::string() : "." + std::string(extension);
    return listEntries(text_.get(), false, [&](std::string_view name) { return endsWithNoCase(name, suffix); });
}

std::vector<Path> Path::listFolders() const {
    return listEntries(text_.get(), true, [](std::string_view) { return true; });
}

}  // namespace tw
