// The text of a speech bubble's page as a run of items: words and blanks in their styles,
// line breaks, pauses, moves, actions fired by the typing, and clickable runs. The bubble
// view lays the items out and types them; the scan knows only tags, entities and breaks.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tw {

struct BubbleItem {
    enum Kind { word, blank, lineBreak, pause, move, doAction, clickStart, clickEnd };
    Kind kind = word;
    std::u16string text;      // word: its characters, non-breaking blanks and hyphens in it
    std::int32_t style = 0;   // word and blank: the index of the style
    std::string action;       // do and click: the action and its params; move: the bounds
    std::string params;
    double seconds = 0;       // pause: the delay
    std::string time, curve;  // move: as written, empty for the bubble's own
    bool automatic = false;   // click and do: the `auto` attribute
};

// Names a style for a tag: its index, or -1 when there is no such style.
using BubbleStyleIndex = std::function<std::int32_t(const std::string& name)>;

// Reads the tags (br, click, /click, do, pause, move, a style's name and its closing tag)
// and the entities (amp, gt, lt, quot, nbsp, nbhp, #n); a blank and the byte after a '-'
// may break. `defaultStyle` is at the bottom of the style stack. Throws Exception "Missing
// action in click or do tag", "Unbalanced click tag", "Missing delay in pause tag",
// "Missing bounds in move tag", "Unbalanced style tags: " with the name on top, " and "
// and the closing name, or "Unrecognized style tag: " with the name.
std::vector<BubbleItem> scanBubbleText(const std::string& text, std::int32_t defaultStyle,
                                       const BubbleStyleIndex& styleIndex);

}  // namespace tw
