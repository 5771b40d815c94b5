// The product: Tidewake's descriptor, processor and parameter text behind the
// product-independent factory interface.
#pragma once

#include "model/ModelFactory.h"

namespace tw {

class TidewakeFactory : public ModelFactory {
public:
    const ModelDescriptor& getDescriptor() const override;
    std::unique_ptr<Processor> createProcessor(int instanceNumber) const override;
};

}  // namespace tw
