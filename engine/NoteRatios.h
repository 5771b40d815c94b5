// Note lengths in whole notes as integer ratios, longest first, for the synced delay, LFO
// and shift. A note-length index i uses entry i + 3; the first three entries are longer
// than any length a control can name.
#pragma once

namespace tw {

constexpr int kNoteRatioCount = 30;
extern const int kNoteNumerators[kNoteRatioCount];
extern const int kNoteDenominators[kNoteRatioCount];

}  // namespace tw
