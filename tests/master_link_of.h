// The link of a view to its master.
#pragma once

#include "view/master_link.h"
#include "view/wavo_view.h"

namespace wavo::testing {

inline const MasterLink& MasterLinkOf(CWavoView& view) {
    return dynamic_cast<const MasterLink&>(view.Work().LiveSource());
}

}  // namespace wavo::testing
