#include "patch/ModelFactory.h"

#include "patch/ParameterText.h"

namespace tw {

std::unique_ptr<Patch> ModelFactory::createInitPatch() const {
    const ModelDescriptor& d = getDescriptor();
    auto patch = std::make_unique<Patch>(static_cast<int>(d.parameters.size()));
    for (std::size_t i = 0; i < d.parameters.size(); ++i)
        patch->storeParameter(static_cast<int>(i), d.parameters[i].defaultValue);
    patch->markClean();
    return patch;
}

std::unique_ptr<FeedbackSink> ModelFactory::createFeedbackSink() const { return std::make_unique<FeedbackSink>(); }

std::string ModelFactory::valueToText(const Patch&, int id, float value, bool precise) const {
    return formatGeneric(getDescriptor().parameters[static_cast<std::size_t>(id)], value, precise);
}

bool ModelFactory::textToValue(const Patch&, int id, std::string_view text, float& out) const {
    return parseGeneric(getDescriptor().parameters[static_cast<std::size_t>(id)], text, out);
}

float ModelFactory::constrainValue(const Patch&, int id, float value) const {
    return quantiseGeneric(getDescriptor().parameters[static_cast<std::size_t>(id)], value);
}

}  // namespace tw
