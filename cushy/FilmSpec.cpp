#include "cushy/FilmSpec.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "graphics/Image.h"
#include "graphics/InterpolatedFilm.h"
#include "speclang/SpecExpression.h"

#include <algorithm>

namespace tw {

std::unique_ptr<Film> readFilm(CushyView& layout, const SpecMap& film) {
    std::shared_ptr<Image> image = layout.host().image(layout, lookup(film, "image"));
    const std::int32_t frames = evaluateInt(lookup(film, "frames"), 1);
    if (toBool(lookup(film, "interpolate"), false))
        return std::make_unique<InterpolatedFilm>(std::move(image), std::clamp(frames, 1, 0x7FFFFF));
    return std::make_unique<Film>(std::move(image), frames);
}

}  // namespace tw
