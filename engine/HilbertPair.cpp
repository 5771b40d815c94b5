#include "engine/HilbertPair.h"

#include <cstring>

namespace tw {

alignas(16) const float HilbertPair::kCoefficients[kStages][4] = {
    {0.98279536f, 0.98279536f, 0.99520773f, 0.99520773f},
    {0.91543084f, 0.91543084f, 0.96030170f, 0.96030170f},
    {0.66452849f, 0.66452849f, 0.82685614f, 0.82685614f},
    {0.13199975f, 0.13199975f, 0.41205746f, 0.41205746f},
};

void HilbertPair::clear() { std::memset(static_cast<void*>(this), 0, sizeof(*this)); }

}  // namespace tw
