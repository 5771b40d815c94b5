#include "vector/MaskTarget.h"

#include "graphics/Blender.h"
#include "vector/KetchException.h"

namespace tw {

void MaskTarget::drawMask(Renderer8& mask) {
    Blender8 sum(mask_, mask);
    RLERaster8 next(sum, bounds_);
    mask_.swap(next);
}

void MaskTarget::defineBounds(const IntRect&) { throw Ketch::RunTimeException("Bounds cannot be declared for mask"); }

}  // namespace tw
