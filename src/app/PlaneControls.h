// SPDX-License-Identifier: GPL-3.0-or-later
// The fields that set how the plane is shown: the display width and the link.
#pragma once

#include "documents/Function.h"
#include "kits/support/SupportDefs.h"

namespace vexa {

class FieldSet;
class History;
class R2RFView;

/// Ties the fields to the plane's view. A text that changes nothing in the view leaves it as it is.
/// Window thread.
class PlaneControls {
  public:
    /// The fields and the view outlive the object.
    PlaneControls(FieldSet& fields, R2RFView& plane) : fields(fields), plane(plane) {}

    /// Applies the text of the field whose message has this code; returns false if there is none.
    bool Take(uint32 code);
    /// Puts the function's texts into the fields and applies those that differ.
    void Put(Function function);
    /// Shows the plane as it was at the present step, whose texts are in the fields: where a text
    /// changes nothing, as the last other one before it has set.
    void Restore(const History& steps);
    /// Gives the function the confirmed texts of the fields.
    void GetConfirmed(Function& function) const;

  private:
    FieldSet& fields;
    R2RFView& plane;
};

} // namespace vexa
