// The product: Tidewake's descriptor, processor and parameter text behind the
// product-independent factory interface.
#pragma once

#include "patch/ModelFactory.h"

namespace tw {

class TidewakeFactory : public ModelFactory {
public:
    const ModelDescriptor& getDescriptor() const override;
    std::unique_ptr<Processor> createProcessor(int instanceNumber) const override;
    std::string valueToText(const Patch& patch, int id, float value, bool precise) const override;
    bool textToValue(const Patch& patch, int id, std::string_view text, float& out) const override;
    float constrainValue(const Patch& patch, int id, float value) const override;
};

}  // namespace tw
