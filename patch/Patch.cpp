#include "patch/Patch.h"

#include <algorithm>
#include <cstring>

namespace tw {

std::uint32_t nextPatchStamp() {
    static std::atomic<std::uint32_t> counter{0};
    return counter.fetch_add(1) + 1;
}

Patch::NameRecord Patch::makeRecord(std::string_view name, Path path) {
    NameRecord r;
    std::size_t n = std::min(name.size(), maxNameLength);
    std::memcpy(r.name, name.data(), n);
    r.name[n] = 0;
    r.path = std::move(path);
    return r;
}

Patch::Patch(int parameterCount)
    : count_(parameterCount), values_(new std::atomic<float>[static_cast<std::size_t>(parameterCount)]), names_(NameRecord{}) {
    for (int i = 0; i < count_; ++i) values_[i].store(0.0f);
}

std::unique_ptr<Patch> Patch::clone() const {
    auto copy = std::make_unique<Patch>(count_);
    for (int i = 0; i < count_; ++i) copy->values_[i].store(getParameter(i));
    {
        auto r = names_.acquire();
        copy->names_.publish(*r);
    }
    copy->changeStamp_.store(changeStamp_.load());
    copy->savedStamp_.store(savedStamp_.load());
    return copy;
}

void Patch::setPath(const Path& path) {
    if (path.empty()) {
        auto r = names_.acquire();
        names_.publish(makeRecord(r->name, Path()));
    } else {
        names_.publish(makeRecord(path.stem(), path));
    }
    touch();
}

Path Patch::getPath() const {
    auto r = names_.acquire();
    return r->path;
}

bool Patch::setName(std::string_view text) {
    std::string_view cut = text.substr(0, std::min(text.size(), maxNameLength));
    {
        auto r = names_.acquire();
        if (cut == std::string_view(r->name)) return false;
        names_.publish(makeRecord(cut, r->path));
    }
    touch();
    return true;
}

std::string Patch::getName() const {
    auto r = names_.acquire();
    return r->name;
}

void Patch::getName(std::size_t maxLength, char* buffer) const {
    auto r = names_.acquire();
    std::size_t n = std::min(std::strlen(r->name), maxLength);
    std::memcpy(buffer, r->name, n);
    buffer[n] = 0;
}

void Patch::touch() { changeStamp_.store(nextPatchStamp()); }

void Patch::markClean() {
    touch();
    savedStamp_.store(changeStamp_.load());
}

void Patch::getParameters(int first, int count, float* out) const {
    for (int i = 0; i < count; ++i) out[i] = getParameter(first + i);
}

bool Patch::storeParameter(int index, float value) {
    float old = values_[index].exchange(value);
    if (old == value) return false;
    touch();
    return true;
}

bool Patch::setParameters(int first, int count, const float* values) {
    bool changed = false;
    for (int i = 0; i < count; ++i)
        if (values_[first + i].exchange(values[i]) != values[i]) changed = true;
    if (changed) touch();
    return changed;
}

}  // namespace tw
