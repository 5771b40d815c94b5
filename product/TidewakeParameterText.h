// Tidewake's parameter text: the rows whose text follows a curve of their own or depends
// on other parameters of the patch (the shift range, the two sync switches, the LFO
// target), and the value of the "Turn Off Sync" action. TidewakeFactory answers the host,
// the editor and the patch texts through these; every other row takes the generic text of
// its kind.
#pragma once

#include "patch/Patch.h"

#include <string>
#include <string_view>

namespace tw {

// The display form, or with `precise` the full form that reads back to the same value.
std::string tidewakeValueToText(const Patch& patch, int id, float value, bool precise);

// Answers false, leaving `out` alone, when the text does not read; results lie in 0..1.
bool tidewakeTextToValue(const Patch& patch, int id, std::string_view text, float& out);

// The nearest value the row allows with the patch's switches as they stand.
float tidewakeConstrainValue(const Patch& patch, int id, float value);

// The delayTime value that keeps a synced delay where it is in absolute time when the sync
// is turned off, at `tempo` beats a minute (the tempo the audio call last saw), less the
// smear's own delay.
float turnOffDelaySyncValue(const Patch& patch, double tempo);

}  // namespace tw
