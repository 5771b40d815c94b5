// The font of a spec that names neither a film nor an AngelCode file. On Linux the
// system has no font calls of ours to lean on, so it draws with a bitmap font built into
// the product, in the spec's colour, so that such text still shows.
#pragma once

#include "graphics/AngelCodeFont.h"

namespace tw {

class SystemFont : public AngelCodeFont {
public:
    SystemFont(std::shared_ptr<const AngelCodeFace> face, std::uint32_t color) : AngelCodeFont(std::move(face), u'?', color) {}
};

}  // namespace tw
