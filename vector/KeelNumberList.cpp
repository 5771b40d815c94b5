#include "vector/KeelNumberList.h"

#include "vector/KetchList.h"
#include "vector/KetchNumber.h"

namespace tw {

int readNumberList(Ketch::Frame& frame, std::string_view text, int min, int max, double* out) {
    const std::vector<std::string> items = Ketch::parseList(frame, text, true, false, min, max);
    for (std::size_t i = 0; i < items.size(); ++i) out[i] = Ketch::toNumber(items[i]);
    return int(items.size());
}

}  // namespace tw
