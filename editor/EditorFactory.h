// What a product's editor is: the size of its main layout and the controller of each
// editor the host opens. The instance core's editor asks it; a product without an editor
// has none, and its formats then tell their hosts so.
#pragma once

#include <memory>

#include "editor/ModelController.h"
#include "graphics/IntRect.h"

namespace tw {

class EditorFactory {
public:
    virtual ~EditorFactory() = default;

    // The bounds of the main layout.
    virtual IntRect getEditorSize() const = 0;
    // The controller of one open editor: the generic one unless the product has actions
    // of its own.
    virtual std::unique_ptr<ModelController> createController(ModelServices& services, ResourceManager& resources,
                                                              StringTable& translator) const {
        return std::make_unique<ModelController>(services, resources, translator, getEditorSize());
    }
};

}  // namespace tw
