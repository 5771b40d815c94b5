// Notes as text, for frequency-shift amounts that are shown and typed as notes: the twelve
// note names, and the reader of a note written as "A3", "c#4 -12" or "Bb-1 +3.5".
#pragma once

#include <array>

namespace tw {

// C, C#, D ... B; no flats.
extern const std::array<const char*, 12> noteNames;

// A note as typed: semitones above C (from -1 for "Cb" to 12 for "B#"), octave and cents.
struct NoteText {
    int note;
    int octave;
    double cents;
};

// Reads a note at `p`: a letter A to G in either case, an optional "#" (one up) or "b" (one
// down), white space, an octave number, which must be there, white space, and an optional
// number of cents. Answers the position behind it, or `p` itself when no note is there.
const char* scanNoteText(const char* p, NoteText& out);

}  // namespace tw
