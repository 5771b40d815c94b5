// The product: Tidewake's descriptor, processor and parameter text behind the
// product-independent factory interface.
#pragma once

#include "model/ModelFactory.h"

namespace tw {

class TidewakeFactory : public ModelFactory {
public:
    const ModelDescriptor& getDescriptor() const override;
    std::unique_ptr<Processor> createProcessor(int instanceNumber) const override;
    IntRect getEditorSize() const override { return {0, 0, 525, 475}; }
    std::unique_ptr<ModelController> createController(ModelServices& services, ResourceManager& resources,
                                                      StringTable& translator) const override;
    std::string valueToText(const Patch& patch, int id, float value, bool precise) const override;
    bool textToValue(const Patch& patch, int id, std::string_view text, float& out) const override;
    float constrainValue(const Patch& patch, int id, float value) const override;
};

}  // namespace tw
