#include "platform/SharedStore.h"

#include "platform/Exception.h"
#include "platform/FileLock.h"
#include "platform/FileObject.h"
#include "platform/SafeFileWriter.h"

#include <cstdint>

namespace tw {

namespace {

constexpr std::string_view magic = "MWst";
constexpr std::uint32_t format = 1;

void putWord(std::string& out, std::uint32_t word) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((word >> (8 * i)) & 0xFF));
}

struct Reader {
    std::string_view bytes;

    std::string_view take(std::size_t count) {
        if (count > bytes.size()) throw EOFException("End of file error");
        std::string_view part = bytes.substr(0, count);
        bytes.remove_prefix(count);
        return part;
    }
    std::uint32_t word() {
        std::string_view w = take(4);
        std::uint32_t value = 0;
        for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(w[i]);
        return value;
    }
};

}  // namespace

SharedStore::SharedStore(Path file, int lockWait)
    : file_(std::move(file)), lockFile_(Path::parse(file_.toString() + ".lock")), lockWait_(lockWait) {
    entries_ = read();
}

std::map<std::string, std::string, std::less<>> SharedStore::read() const {
    // No folder yet means no store yet; there is nothing to lock either.
    if (file_.parent().kind() != Path::Kind::folder) return {};
    FileLock lock(lockFile_, lockWait_);
    if (file_.kind() == Path::Kind::absent) return {};
    return decode(readWholeFile(file_));
}

std::optional<std::string> SharedStore::get(std::string_view key) const {
    auto found = entries_.find(key);
    if (found == entries_.end()) return std::nullopt;
    return found->second;
}

void SharedStore::set(std::string_view key, std::string blob) {
    entries_.insert_or_assign(std::string(key), blob);
    changes_.insert_or_assign(std::string(key), std::move(blob));
}

void SharedStore::commit() {
    if (changes_.empty()) return;
    file_.parent().createFolder();
    FileLock lock(lockFile_, lockWait_);
    std::map<std::string, std::string, std::less<>> current;
    if (file_.kind() != Path::Kind::absent) current = decode(readWholeFile(file_));
    for (const auto& [key, blob] : changes_) current.insert_or_assign(key, blob);
    std::string bytes = encode(current);
    SafeFileWriter writer(file_);
    writer.write(0, bytes.data(), bytes.size());
    writer.commit();
    entries_ = std::move(current);
    changes_.clear();
}

std::map<std::string, std::string, std::less<>> SharedStore::decode(std::string_view bytes) {
    Reader in{bytes};
    if (in.take(magic.size()) != magic || in.word() != format) throw FormatException("Invalid data format");
    std::map<std::string, std::string, std::less<>> entries;
    for (std::uint32_t count = in.word(); count > 0; --count) {
        std::string_view key = in.take(in.word());
        std::string_view blob = in.take(in.word());
        entries.insert_or_assign(std::string(key), std::string(blob));
    }
    if (!in.bytes.empty()) throw FormatException("Invalid data format");
    return entries;
}

std::string SharedStore::encode(const std::map<std::string, std::string, std::less<>>& entries) {
    std::string out(magic);
    putWord(out, format);
    putWord(out, static_cast<std::uint32_t>(entries.size()));
    for (const auto& [key, blob] : entries) {
        putWord(out, static_cast<std::uint32_t>(key.size()));
        out += key;
        putWord(out, static_cast<std::uint32_t>(blob.size()));
        out += blob;
    }
    return out;
}

}  // namespace tw
