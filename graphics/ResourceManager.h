// The process's store of pictures and fonts: it finds their bytes (in the resource folder
// beside the binary, else among the embedded resources), builds them once and keeps them
// for the life of the process. Views reach it through the Cushy host for every `image`,
// `film` and `font` of a layout. Every operation takes its lock.
#pragma once

#include "speclang/SpecLanguage.h"
#include "graphics/AngelCodeFont.h"
#include "graphics/Font.h"
#include "graphics/Image.h"
#include "graphics/ImageKey.h"
#include "platform/Mutex.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tw {

class ResourceManager {
public:
    // The resources of the product `modelName`, whose binary is in `binaryFolder` (ending
    // in '/'). The bitmap font "<modelName>_sans_11" stands in for the system's font.
    ResourceManager(std::string modelName, const std::string& binaryFolder);
    ResourceManager(const ResourceManager&) = delete;
    ResourceManager& operator=(const ResourceManager&) = delete;

    // The folder that getResourceFolder names for the product, when it is an existing
    // folder; else empty, and every lookup uses the embedded resources.
    static std::string findResourceDirectory(std::string_view modelName, const std::string& binaryFolder);
    const std::string& resourceDirectory() const { return resourceDirectory_; }

    // "<name>.<type>" in the resource folder, else the embedded resource of that type and
    // name. Throws FormatException "Resource not found: " when there is neither.
    std::vector<std::uint8_t> loadBinary(std::string_view type, std::string_view name);
    std::vector<std::uint8_t> loadPNG(std::string_view name);

    // The picture for a key, made on first use and kept when the key says so. A key with a
    // clip or an offset cuts from the picture of the same key without them.
    std::shared_ptr<Image> getImage(const ImageKey& key);

    // Reads an image spec; a `clip` is read against the picture's size.
    ImageKey parseImageSpec(const std::string& text);

    // The font for a font spec, made once per spec text: a map with `film` (a film font),
    // `fnt` (an AngelCode font) or neither (the system font, at the spec's `zoom` percent).
    std::shared_ptr<Font> getFont(const std::string& spec);

private:
    std::shared_ptr<Font> makeFilmFont(const SpecMap& spec);
    std::shared_ptr<Font> makeAngelCodeFont(const SpecMap& spec);
    std::shared_ptr<const AngelCodeFace> getFace(const std::string& name, double gamma);

    Mutex lock_;
    std::string modelName_;
    std::string resourceDirectory_;
    std::map<ImageKey, std::shared_ptr<Image>> images_;
    std::map<std::pair<std::string, double>, std::shared_ptr<const AngelCodeFace>> faces_;
    std::map<std::string, std::shared_ptr<Font>, std::less<>> fonts_;
};

}  // namespace tw
