// Where a layout under construction records the views that carry an `edit` key, with their
// rectangles, so that a layout editor can find them. The plug-in makes it with the root;
// no layout of this product uses the key, and it paints nothing.
#pragma once

#include <string>
#include <vector>

#include "cushy/View.h"

namespace tw {

class DebugOverlay : public View {
public:
    struct Entry {
        std::string edit;
        const View* view;
        IntRect rect;   // in the window's coordinates
    };

    DebugOverlay() { resize(IntRect{0, 0, 32000, 32000}); }

    void add(std::string edit, const View& view) { entries_.push_back({std::move(edit), &view, view.screenFrame()}); }
    const std::vector<Entry>& entries() const { return entries_; }

private:
    std::vector<Entry> entries_;
};

}  // namespace tw
