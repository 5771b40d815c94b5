#include "product/TidewakeFactory.h"

#include "product/ShifterProcessor.h"
#include "product/TidewakeDescriptor.h"
#include "product/TidewakeParameterText.h"

namespace tw {

const ModelDescriptor& TidewakeFactory::getDescriptor() const { return tidewakeDescriptor(); }

std::unique_ptr<Processor> TidewakeFactory::createProcessor(int) const {
    return std::make_unique<ShifterProcessor>();
}

std::string TidewakeFactory::valueToText(const Patch& patch, int id, float value, bool precise) const {
    return tidewakeValueToText(patch, id, value, precise);
}

bool TidewakeFactory::textToValue(const Patch& patch, int id, std::string_view text, float& out) const {
    return tidewakeTextToValue(patch, id, text, out);
}

float TidewakeFactory::constrainValue(const Patch& patch, int id, float value) const {
    return tidewakeConstrainValue(patch, id, value);
}

}  // namespace tw
