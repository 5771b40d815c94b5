#include "engine/NoteRatios.h"

namespace tw {

const int kNoteNumerators[kNoteRatioCount] = {32, 24, 32, 16, 12, 16, 8, 6, 8, 4, 3, 4, 2, 3, 2,
                                              1,  3,  1,  1,  3,  1,  1, 1, 1, 1, 1, 1, 1, 1, 1};
const int kNoteDenominators[kNoteRatioCount] = {2, 2, 3, 2,  2, 3, 2, 2,  3,  2,  2,  3,  2,  4,  3,
                                                2, 8, 3, 4, 16, 6, 8, 12, 16, 24, 32, 48, 64, 96, 128};

}  // namespace tw
