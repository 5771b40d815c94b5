// Reading and writing audio files for the tools (WAV, FLAC, AIFF and whatever else
// libsndfile knows), as interleaved floats.
#pragma once

#include <string>

#include "tools/common/AudioBuffer.h"

namespace tw {

// Throws std::runtime_error with libsndfile's message when the file cannot be read.
AudioBuffer readAudioFile(const std::string& path);
// The format follows the extension (.wav, .flac, .aif/.aiff, .ogg); WAV holds 32-bit floats,
// the others 24-bit integers where they have them.
void writeAudioFile(const std::string& path, const AudioBuffer& audio);

}  // namespace tw
