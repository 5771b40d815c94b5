// The ring that shows which control has the keyboard focus: the accent colour of the face
// around the control's outline, with a faint glow, as the lit switches wear their edge.
// Its gap and width come from the control's own rectangle, so that the ring grows with
// the layout when the editor is drawn larger.
#pragma once

#include "graphics/IntRect.h"
#include "graphics/Raster.h"

namespace tw {

struct FocusRingGeometry {
    double gap = 0;    // between the outline and the ring's middle
    double width = 0;  // of the ring's line
    double glow = 0;   // of the glow's line, centred on the ring
};

FocusRingGeometry focusRingGeometry(const IntRect& outline);
// Every pixel the ring may touch, for invalidation.
IntRect focusRingBounds(const IntRect& outline);
// Paints the ring around `outline` (corner radius `radius`) in the canvas's coordinates.
void paintFocusRing(Raster32& canvas, const IntRect& outline, double radius);

}  // namespace tw
