// SPDX-License-Identifier: GPL-3.0-or-later
// The program as the desktop sees it, and its event loop.
#pragma once

#include "kits/application/Handler.h"
#include "kits/support/Result.h"

#include <memory>

namespace kits {
class Toolkit;

/// Tells whether there is a display to show windows on; the error says why not. It must be called
/// before the application is made, which cannot go on without a display. Main thread.
Result<void> FindDisplay();

/// Has windows made on the X server, even where there is another display. It must be called before
/// FindDisplay. Main thread.
void ChooseXServer();

} // namespace kits

/// There is one; the thread that makes it is the window thread.
class BApplication : public BLooper {
  public:
    /// The signature is the application's MIME type, "application/x-vnd.<vendor>-<name>"; its
    /// entry in the desktop's menu is org.<vendor>.<name>.
    explicit BApplication(const char* signature);
    /// Windows that are still open go.
    ~BApplication() override;

    /// Delivers events and messages until B_QUIT_REQUESTED is posted. A signal that a
    /// kits::Interrupt has noted does the same.
    void Run();

    /// B_QUIT_REQUESTED ends Run.
    void MessageReceived(BMessage* message) override;

  private:
    std::unique_ptr<kits::Toolkit> toolkit;
};

/// The running application, null where there is none.
extern BApplication* be_app;
