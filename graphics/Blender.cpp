#include "graphics/Blender.h"

namespace tw {

template class Combiner<BlendPolicy<std::uint32_t>>;
template class Combiner<BlendPolicy<std::uint8_t>>;

}  // namespace tw
