#include "product/TidewakeEditorFactory.h"

#include "product/TidewakeController.h"

namespace tw {

std::unique_ptr<ModelController> TidewakeEditorFactory::createController(ModelServices& services,
                                                                         ResourceManager& resources,
                                                                         StringTable& translator) const {
    return std::make_unique<TidewakeController>(services, resources, translator, getEditorSize());
}

const TidewakeEditorFactory& tidewakeEditor() {
    static const TidewakeEditorFactory factory;
    return factory;
}

}  // namespace tw
