// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/plane/PlaneDesk.h"

#include "app/VexaView.h"

namespace vexa {

PlaneDesk::PlaneDesk(VexaView& mainView) : mainView(mainView), preview(mainView.Engine()) {}

const SoundRecords& PlaneDesk::Records() const {
    return mainView.Engine();
}

void PlaneDesk::SetCoefficient(ParameterId id, const std::string& text) {
    mainView.EnterNow(id, ParameterOf(id).code, text);
}

void PlaneDesk::SetView(const std::string& width, const std::string& linkX,
                        const std::string& linkY) {
    const std::pair<FunctionField, const std::string&> texts[] = {
        {FunctionField::Width, width},
        {FunctionField::LinkFunctionX, linkX},
        {FunctionField::LinkFunctionY, linkY},
    };
    for (const auto& [field, text] : texts)
        mainView.EnterNow(field, RowOf(field).code, text);
}

void PlaneDesk::Strike(std::optional<BPoint> start) {
    preview.Strike(mainView.Keyboard().Channel(), start);
}

} // namespace vexa
