#include "product/TidewakeLv2.h"

#include "product/TidewakeEditorFactory.h"
#include "product/TidewakeFactory.h"

namespace tw {

const lv2::Product& tidewakeLv2() {
    static const lv2::Product product{
        "Tidewake", "urn:marlinworks:tidewake", "urn:marlinworks:tidewake#ui",
        []() -> std::unique_ptr<ModelFactory> { return std::make_unique<TidewakeFactory>(); },
        []() -> const EditorFactory& { return tidewakeEditor(); }};
    return product;
}

}  // namespace tw
