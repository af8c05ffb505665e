// A window of ours as the content of another program's.
#pragma once

#include "kits/support/SupportDefs.h"

#include <QWidget>

namespace kits {

/// On an X server: makes the widget a child of the window `host`, gives that its size, and keeps to
/// the size that others give it, as far as the widget's limits go. On another display nothing
/// happens. Window thread.
class Embedding {
  public:
    Embedding(QWidget& widget, uint32 host);

    /// To be called some ten times a second.
    void Follow();

  private:
    QWidget& widget;
    const uint32 host;
};

} // namespace kits
