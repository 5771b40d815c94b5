#include "tools/common/AudioFile.h"

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace tw {

AudioBuffer readAudioFile(const std::string& path) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr) throw std::runtime_error("cannot read " + path + ": " + sf_strerror(nullptr));
    AudioBuffer audio;
    audio.sampleRate = info.samplerate;
    audio.channels = info.channels;
    audio.samples.resize(static_cast<std::size_t>(info.frames) * static_cast<std::size_t>(info.channels));
    sf_count_t read = sf_readf_float(file, audio.samples.data(), info.frames);
    sf_close(file);
    audio.samples.resize(static_cast<std::size_t>(read) * static_cast<std::size_t>(info.channels));
    return audio;
}

void writeAudioFile(const std::string& path, const AudioBuffer& audio) {
    std::string extension = path.substr(path.rfind('.') == std::string::npos ? path.size() : path.rfind('.') + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char c) { return std::tolower(c); });
    SF_INFO info{};
    info.samplerate = audio.sampleRate;
    info.channels = audio.channels;
    if (extension == "flac")
        info.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    else if (extension == "aif" || extension == "aiff")
        info.format = SF_FORMAT_AIFF | SF_FORMAT_PCM_24;
    else if (extension == "ogg")
        info.format = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    else
        info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (file == nullptr) throw std::runtime_error("cannot write " + path + ": " + sf_strerror(nullptr));
    sf_writef_float(file, audio.samples.data(), audio.frames());
    sf_close(file);
}

}  // namespace tw
