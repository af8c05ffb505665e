// SPDX-License-Identifier: GPL-3.0-or-later
// The main view as the host of the gestures on its plane.
#pragma once

#include "app/plane/PreviewNote.h"
#include "views/plane/PlaneHost.h"

namespace vexa {

class VexaView;

/// Puts texts into the main view's fields, where they take effect as if typed and confirmed, and
/// plays preview notes. Window thread.
class PlaneDesk : public PlaneHost {
  public:
    /// Makes the desk of `mainView`, which outlives it.
    explicit PlaneDesk(VexaView& mainView);

    const SoundRecords& Records() const override;
    void SetCoefficient(ParameterId id, const std::string& text) override;
    void SetView(const std::string& width, const std::string& linkX,
                 const std::string& linkY) override;
    void Strike(std::optional<BPoint> start) override;
    void LetGo() override { preview.LetGo(); }
    void Watch() override { preview.Watch(); }
    /// See PreviewNote::SendTo.
    void SendTo(HandSource::Player next) { preview.SendTo(std::move(next)); }

  private:
    VexaView& mainView;
    PreviewNote preview;
};

} // namespace vexa
