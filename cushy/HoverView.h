// The view type "hover": a roll-over area without clicks. Entering and leaving run actions,
// and each move over it writes its variables, so that a status line can follow the pointer.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cushy/HintedView.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;

class HoverView : public HintedView {
public:
    // Reads `enterAction`, `enterParams`, `leaveAction`, `leaveParams`, `variable` with
    // `value`, and the list `variables` of `{ variable, value }` pairs.
    HoverView(CushyView& layout, const SpecMap& spec);

    void mouseEnter(std::uint32_t time) override;
    void mouseLeave(std::uint32_t time) override;
    void mouseMove(const MouseEvent& event) override;
    // Writes the variables as a move over it does: the keyboard focus on a control under
    // it names the control in the status line too.
    void writeVariables();

private:
    CushyView& layout_;
    std::string enterAction_, enterParams_, leaveAction_, leaveParams_;
    std::vector<std::pair<std::string, std::string>> writes_;
};

}  // namespace tw
