// The demo input that the tools render when no audio file is given: a short plucked
// phrase over a soft kick at 120 beats per minute, with silence at the end so that
// echoes can ring out. Made by code, the same every time.
#pragma once

#include "tools/common/AudioBuffer.h"

namespace tw {

AudioBuffer makeDemoSignal(int sampleRate = 48000);

}  // namespace tw
