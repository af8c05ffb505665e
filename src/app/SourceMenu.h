// SPDX-License-Identifier: GPL-3.0-or-later
// The menu of MIDI sources, and the connection of the chosen one.
#pragma once

#include "kits/application/Messenger.h"
#include "kits/support/SupportDefs.h"

#include <string>

class BMenu;
class BMidiLocalConsumer;
class BMidiRoster;

namespace vexa {

class ComputerKeyboard;

/// Lists the sources, and keeps the one that the user has chosen connected to a consumer. A chosen
/// source that is not there has an item of its own, which says so. Window thread.
class SourceMenu {
  public:
    /// Makes the menu, whose items send their messages to `target`. The keys of `keyboard`, which
    /// outlives the object, are released before another source is connected.
    SourceMenu(const BMessenger& target, ComputerKeyboard& keyboard);

    /// Returns the menu, which belongs to the bar that it is added to.
    BMenu& Menu() { return *menu; }
    /// Rebuilds the list of sources, and reconnects the chosen source if it is there again. The
    /// last item says whether program changes choose sounds.
    void Fill(bool followsPrograms);

    /// Connects the chosen source to this consumer from now on, which outlives the object; until
    /// then none is connected.
    void ConnectTo(BMidiLocalConsumer& next);
    /// Chooses a source by its name, to be connected now or when it appears; empty for none.
    void Choose(const std::string& name);
    const std::string& Chosen() const { return chosen; }
    /// Chooses the source of an item. Returns false if the code is not that of a source's item.
    bool Take(uint32 code);

  private:
    void Show(BMidiRoster& roster);
    bool Connect(BMidiRoster& roster);

    const BMessenger target;
    ComputerKeyboard& keyboard;
    BMenu* const menu;
    BMidiLocalConsumer* consumer = nullptr;
    bool followsPrograms = false;
    /// The name of the source that the user has chosen, and the ID of the connected one (0 for
    /// none).
    std::string chosen;
    int32 connected = 0;
};

} // namespace vexa
