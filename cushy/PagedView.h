// The view type "paged": a set of pages, each a list of views under a label, of which the
// page labelled by a variable's value is shown. Every page is built at the start, so that
// switching pages is only showing and hiding.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cushy/ContainerView.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;

class PagedView : public ContainerView {
public:
    // Reads `index` and `pages`.
    PagedView(CushyView& layout, const IntRect& rect, const SpecMap& spec);

    void buildChildren() override;
    // Shows the page the variable names, then refreshes every child, shown or not.
    void refresh() override;

    // The label of the page shown, empty before the first refresh.
    const std::string& shownPage() const { return shown_ ? *shown_ : empty_; }

private:
    void showPage(const std::string& label, bool shown);

    CushyView& layout_;
    std::string index_;
    SpecMap pages_;
    std::vector<std::pair<std::string, View*>> pageOf_;
    std::optional<std::string> shown_;
    std::string empty_;
};

}  // namespace tw
