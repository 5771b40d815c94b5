#include "patch/NoteText.h"

#include "patch/ParameterText.h"

namespace tw {

const std::array<const char*, 12> noteNames = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};

namespace {

// The white space of the spec language.
const char* skipBlanks(const char* p) {
    while (*p == ' ' || *p == '\t' || *p == '\v' || *p == '\r' || *p == '\n') ++p;
    return p;
}

}  // namespace

const char* scanNoteText(const char* p, NoteText& out) {
    static const int letterNotes[7] = {9, 11, 0, 2, 4, 5, 7};  // A to G
    const char letter = static_cast<char>(*p & ~0x20);
    if (letter < 'A' || letter > 'G') return p;
    int note = letterNotes[letter - 'A'];
    const char* q = p + 1;
    if (*q == '#') {
        ++note;
        ++q;
    } else if (*q == 'b') {
        --note;
        ++q;
    }
    q = skipBlanks(q);
    const bool below = *q == '-';
    if (*q == '-' || *q == '+') ++q;
    if (*q < '0' || *q > '9') return p;
    int octave = 0;
    // Far beyond any audible octave; the limit only keeps the count from overflowing.
    for (; *q >= '0' && *q <= '9'; ++q) octave = octave < 100000 ? octave * 10 + (*q - '0') : octave;
    double cents = 0;
    q = scanNumber(q, cents);
    out = {note, below ? -octave : octave, cents};
    return q;
}

}  // namespace tw
