// The main view's file panels.
#include "app/VexaView.h"

namespace vexa {

bool VexaView::TakePanelCommand(const BMessage&) {
    return false;
}

} // namespace vexa
