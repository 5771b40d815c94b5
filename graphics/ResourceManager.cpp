#include "graphics/ResourceManager.h"

#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"
#include "speclang/SpecColor.h"
#include "graphics/FilmFont.h"
#include "graphics/ImageDecoder.h"
#include "graphics/InterpolatedFilm.h"
#include "graphics/SubImage.h"
#include "graphics/SystemFont.h"
#include "platform/Exception.h"
#include "platform/Path.h"
#include "platform/Resources.h"

namespace tw {

namespace {

// A font's gamma is read as an image spec's: at most 4, and 0 (as in the file) for none.
double boundedGamma(const std::string& raw) {
    const double gamma = evaluateDouble(raw, 0);
    return gamma > 4 ? 4 : gamma > 0 ? gamma : 0;
}

// right - left, in 64 bits; a clip too wide for 32 bits is as wide as can be.
std::int32_t extent(std::int32_t low, std::int32_t high) {
    const std::int64_t size = std::int64_t(high) - low;
    return size > 0x7FFFFFFF ? 0x7FFFFFFF : std::int32_t(size);
}

}  // namespace

ResourceManager::ResourceManager(std::string modelName, const std::string& binaryFolder)
    : modelName_(std::move(modelName)), resourceDirectory_(findResourceDirectory(modelName_, binaryFolder)) {}

std::string ResourceManager::findResourceDirectory(std::string_view modelName, const std::string& binaryFolder) {
    const std::string folder = getResourceFolder(modelName, binaryFolder);
    try {
        if (Path::parse(folder).kind() == Path::Kind::folder) return folder;
    } catch (const Exception&) {
        // A folder that cannot be looked at is no folder: the embedded resources serve.
    }
    return "";
}

std::vector<std::uint8_t> ResourceManager::loadBinary(std::string_view type, std::string_view name) {
    Mutex::Guard guard(lock_);
    std::optional<std::vector<std::uint8_t>> bytes = loadResource(resourceDirectory_, type, name);
    if (!bytes) throw FormatException("Resource not found: " + quote(std::string(name) + "." + std::string(type)));
    return std::move(*bytes);
}

std::vector<std::uint8_t> ResourceManager::loadPNG(std::string_view name) {
    return loadBinary("png", name);
}

std::shared_ptr<Image> ResourceManager::getImage(const ImageKey& key) {
    Mutex::Guard guard(lock_);
    if (const auto found = images_.find(key); found != images_.end()) return found->second;
    std::shared_ptr<Image> image;
    if (key.hasClip() || key.hasOffset()) {
        std::shared_ptr<Image> whole = getImage(key.whole());
        const IntRect rect = key.hasClip() ? IntRect{key.clip.left, key.clip.top,
                                                     extent(key.clip.left, key.clip.right),
                                                     extent(key.clip.top, key.clip.bottom)}
                                           : whole->getBounds();
        image = std::make_shared<SubImage>(std::move(whole), rect, key.offsetX, key.offsetY);
    } else {
        const std::vector<std::uint8_t> bytes = loadPNG(key.name);
        image = decodeImage(bytes.data(), bytes.size(), key);
    }
    if (key.keep) images_.emplace(key, image);
    return image;
}

ImageKey ResourceManager::parseImageSpec(const std::string& text) {
    Mutex::Guard guard(lock_);
    return tw::parseImageSpec(text, [this](const ImageKey& whole) {
        const IntRect bounds = getImage(whole)->getBounds();
        return std::pair<std::int32_t, std::int32_t>(bounds.width, bounds.height);
    });
}

std::shared_ptr<Font> ResourceManager::getFont(const std::string& spec) {
    Mutex::Guard guard(lock_);
    if (const auto found = fonts_.find(spec); found != fonts_.end()) return found->second;
    const SpecMap map = parseMap(spec);
    std::shared_ptr<Font> font;
    if (!lookup(map, "film").empty()) {
        font = makeFilmFont(map);
    } else if (!lookup(map, "fnt").empty()) {
        font = makeAngelCodeFont(map);
    } else {
        // The product's small font; at a zoom (`zoom: 150`), its face made at that size,
        // named as the build names every zoomed resource.
        const std::string zoom = unquote(lookup(map, "zoom"));
        const std::string face = modelName_ + "_sans_11" + (zoom.empty() || zoom == "100" ? "" : "_x" + zoom);
        font = std::make_shared<SystemFont>(getFace(face, 0),
                                            parseColor(lookup(map, "color"), 0xFF000000));
    }
    fonts_.emplace(spec, font);
    return font;
}

std::shared_ptr<Font> ResourceManager::makeFilmFont(const SpecMap& spec) {
    std::shared_ptr<Image> image = getImage(parseImageSpec(lookup(spec, "film")));
    const std::string charsetText = unquote(lookup(spec, "charset"));
    std::optional<FilmFont::Charset> charset;
    std::int32_t frames;
    std::uint8_t first = 0;
    if (!charsetText.empty()) {
        charset.emplace();
        charset->fill(-1);
        for (std::size_t i = charsetText.size(); i-- > 0;)
            (*charset)[static_cast<unsigned char>(charsetText[i])] = std::int32_t(i);
        frames = std::int32_t(std::min<std::size_t>(charsetText.size(), 0x7FFFFFFF));
    } else {
        first = std::uint8_t(evaluateInt(lookup(spec, "first"), 32));
        frames = evaluateInt(lookup(spec, "chars"), 256);
    }
    auto film = std::make_shared<Film>(std::move(image), frames);

    const std::string unknownText = unquote(lookup(spec, "unknown"));
    const std::uint8_t unknown = unknownText.empty() ? 0 : static_cast<unsigned char>(unknownText[0]);
    if (charset && unknown != 0 && (*charset)[unknown] < 0)
        throw FormatException("Replacement char not found in charset");
    const std::int32_t ascent = evaluateInt(lookup(spec, "ascent"), film->frameHeight());
    const std::int32_t advance = evaluateInt(lookup(spec, "advance"), film->frameWidth());
    return std::make_shared<FilmFont>(std::move(film), ascent, advance, first, unknown, charset);
}

std::shared_ptr<Font> ResourceManager::makeAngelCodeFont(const SpecMap& spec) {
    std::shared_ptr<const AngelCodeFace> face = getFace(unquote(lookup(spec, "fnt")), boundedGamma(lookup(spec, "gamma")));
    const std::u16string unknown = unquoteWide(lookup(spec, "unknown"));
    return std::make_shared<AngelCodeFont>(std::move(face), unknown.empty() ? u'\0' : unknown[0],
                                           parseColor(lookup(spec, "color"), 0xFF000000));
}

std::shared_ptr<const AngelCodeFace> ResourceManager::getFace(const std::string& name, double gamma) {
    const auto key = std::pair(name, gamma);
    if (const auto found = faces_.find(key); found != faces_.end()) return found->second;
    const std::vector<std::uint8_t> text = loadBinary("fnt", name);
    auto face = std::make_shared<AngelCodeFace>();
    face->file = readAngelCodeFont(std::string_view(reinterpret_cast<const char*>(text.data()), text.size()));
    // Pages are coverage masks kept compressed, with the font's gamma baked in.
    for (const auto& [id, file] : face->file.pages) {
        ImageKey page;
        page.name = file.substr(0, file.rfind('.'));
        page.rle = true;
        page.mask = true;
        page.gamma = gamma;
        face->pages.emplace(id, getImage(page));
    }
    faces_.emplace(key, face);
    return face;
}

}  // namespace tw
