#include "graphics/Multiplier.h"

namespace tw {

template class Combiner<MultiplyPolicy<std::uint32_t, std::uint32_t>>;
template class Combiner<MultiplyPolicy<std::uint8_t, std::uint32_t>>;
template class Combiner<MultiplyPolicy<std::uint8_t, std::uint8_t>>;

}  // namespace tw
