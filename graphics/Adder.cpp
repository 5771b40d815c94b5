#include "graphics/Adder.h"

namespace tw {

template class Combiner<AddPolicy<std::uint32_t>>;
template class Combiner<AddPolicy<std::uint8_t>>;

}  // namespace tw
