// Tidewake's vocabulary: the 19 parameters, their host order, buses and feedback names,
// and the descriptor that hands them to the product-independent layers. Static data,
// built at library load.
#pragma once

#include <array>
#include <string_view>

#include "patch/ModelDescriptor.h"

namespace tw {

// Parameter ids, in table order. The host sees another order (see hostOrder).
namespace Param {
enum Id : int {
    freqShiftRange = 0,
    freqShiftAmount,
    antiReflection,
    phaseShift,
    sidebandMix,
    delaySync,
    delayTime,
    feedbackAmount,
    crossChannels,
    highPassFreq,
    lowPassFreq,
    smearAmount,
    wetMix,
    lfoShape,
    lfoSync,
    lfoRate,
    lfoTarget,
    lfoStereo,
    lfoAmount,
    count
};
}

// Steps of the three discrete rows.
enum class ShiftRange : int { fine = 0, wide = 1, sync = 2, midi = 3 };
enum class LfoShape : int { sine = 0, saw = 1, square = 2, random = 3 };
enum class LfoTarget : int { frequencyShift = 0, phaseShift = 1, lowPassFilter = 2, delayTime = 3 };

// Indices of the values the audio side reports to the editor.
namespace Feedback {
enum Id : int { lfoOutputLevel = 0, measuredInputLevel, lfoNeedlePosition, midiActivity, lfoActive, count };
}

// The 27 note lengths, longest first ("8/1" ... "1/128").
constexpr int noteLengthCount = 27;
extern const std::array<std::string_view, noteLengthCount> noteLengthLabels;

// The discrete rows that stand for freqShiftAmount in the "Sync" range, delayTime with
// delaySync on, and lfoRate with lfoSync on. They serve only for text.
const ParameterSpec& freqShiftSyncRow();
const ParameterSpec& delayTimeSyncRow();
const ParameterSpec& lfoRateSyncRow();

const ModelDescriptor& tidewakeDescriptor();

}  // namespace tw
