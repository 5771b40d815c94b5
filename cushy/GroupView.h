// The view type "group": a container of views that can be shown and hidden together by a
// variable, moved together by two variables, and rebuilt from a text with variables, so
// that a layout can hold a number of views that changes.
#pragma once

#include <string>

#include "cushy/ContainerView.h"
#include "cushy/VariableReading.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;

class GroupView : public ContainerView {
public:
    // Reads `visibility`, `offset` and `varExpansion`.
    // Throws FormatException "Invalid offset: " with the value, or a child's fault.
    GroupView(CushyView& layout, const IntRect& rect, const SpecMap& spec);

    // Follows the variables, then refreshes the children first to last.
    void refresh() override;
    void buildChildren() override;

    bool childrenShown() const { return shown_; }

private:
    void showChildren(bool shown);

    CushyView& layout_;
    std::string views_;
    WatchedVariable visibility_;
    WatchedVariable offsetX_, offsetY_;
    std::int32_t lastX_ = 0, lastY_ = 0;
    bool varExpansion_;
    std::string expanded_;
    bool shown_ = true;
};

}  // namespace tw
