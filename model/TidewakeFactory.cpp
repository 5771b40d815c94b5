#include "model/TidewakeFactory.h"

#include "model/ShifterProcessor.h"
#include "model/TidewakeDescriptor.h"

namespace tw {

const ModelDescriptor& TidewakeFactory::getDescriptor() const { return tidewakeDescriptor(); }

std::unique_ptr<Processor> TidewakeFactory::createProcessor(int) const {
    return std::make_unique<ShifterProcessor>();
}

}  // namespace tw
