// The step every view of a layout goes through: its type and bounds are read, the host and
// then Cushy's own factory make it, it joins its parent, and the keys that many types
// share (hint, cursor, autoRefresh) are read.
#pragma once

#include <string_view>

#include "cushy/View.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class ContainerView;
class CushyView;

// Throws FormatException "Missing view type", "View bounds has negative width and/or
// height", "Unrecognized view type : " with the quoted type, or the type's own faults.
ViewRef createView(CushyView& layout, ContainerView& parent, const SpecMap& spec);

// Whether the name is one of the view types of Cushy's factory, built or not.
bool isViewTypeName(std::string_view type);

}  // namespace tw
