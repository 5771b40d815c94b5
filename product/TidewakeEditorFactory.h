// Tidewake's editor: its 525 by 475 face and its own controller.
#pragma once

#include "editor/EditorFactory.h"

namespace tw {

class TidewakeEditorFactory final : public EditorFactory {
public:
    IntRect getEditorSize() const override { return {0, 0, 525, 475}; }
    std::unique_ptr<ModelController> createController(ModelServices& services, ResourceManager& resources,
                                                      StringTable& translator) const override;
};

// The one every instance of the process shares.
const TidewakeEditorFactory& tidewakeEditor();

}  // namespace tw
