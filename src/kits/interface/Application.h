// SPDX-License-Identifier: GPL-3.0-or-later
// The application object of the program, and its event loop.
#pragma once

#include "kits/application/Handler.h"
#include "kits/support/Result.h"

#include <memory>

namespace kits {
class Toolkit;

/// Checks that there is a display to show windows on; the error gives the reason if there is none.
/// It must be called before the application is created, which ends the process if it finds no
/// display. Main thread.
Result<void> FindDisplay();

/// Selects the X server for all windows, even if there is another display. It must be called before
/// FindDisplay. Main thread.
void ChooseXServer();

} // namespace kits

/// The application, of which there is one. The thread that creates it is the window thread.
class BApplication : public BLooper {
  public:
    /// The signature is the application's MIME type, "application/x-vnd.<vendor>-<name>". From it
    /// follows the name of the application's desktop entry, org.<vendor>.<name>.
    /// Everything in the windows is `scale` times as large as the desktop asks for, unless the
    /// variable QT_SCALE_FACTOR of the environment has another factor.
    explicit BApplication(const char* signature, double scale = 1);
    /// Deletes the windows that are still open.
    ~BApplication() override;

    /// Delivers events and messages until B_QUIT_REQUESTED is posted or a kits::Interrupt has noted
    /// a signal.
    void Run();

    /// B_QUIT_REQUESTED ends Run.
    void MessageReceived(BMessage* message) override;

  private:
    std::unique_ptr<kits::Toolkit> toolkit;
};

/// The running application, or null.
extern BApplication* be_app;
