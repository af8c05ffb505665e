// SPDX-License-Identifier: GPL-3.0-or-later
// The window in which a person says what a sound is.
#pragma once

#include "documents/Sound.h"
#include "kits/interface/Window.h"

#include <array>
#include <string>

class BMenuField;
class BMenuItem;
class BTextControl;

namespace kits {
class TextBox;
}

namespace vexa {

class VexaView;

/// Shows the present sound's name, author, category, tags and comment, and changes them: each
/// change is a step of the sound. A text that the sound should not have is refused, and its field
/// is marked. Closing the window hides it. Shortcuts that it does not know itself are those of the
/// main window. Window thread.
class DescriptionWindow : public BWindow {
  public:
    /// Makes a hidden window for the sound of a view and the window that it is in, which outlive
    /// it.
    DescriptionWindow(BWindow& main, VexaView& view);
    ~DescriptionWindow() override;

    /// Shows the window in front of others; the keyboard is in its first field.
    void Open();
    /// Enters what is typed, and hides the window.
    void Close();

    void MessageReceived(BMessage* message) override;
    bool TakeShortcut(const kits::KeyPress& press) override;
    bool QuitRequested() override;

  private:
    enum class Part { Name, Author, Category, Tags, Comment };
    static constexpr Part kParts[] = {Part::Name, Part::Author, Part::Category, Part::Tags,
                                      Part::Comment};
    /// All that is shown.
    struct Shown {
        std::string author;
        SoundInfo info;
        /// The name that lists show if the sound itself has none.
        std::string file;
    };

    static BMessage* MessageFor(Part part);
    Shown Present() const;
    static std::string TextOf(const Shown& description, Part part);
    void ShowAll();
    void Refresh();
    void AddCategory(const std::string& label, const std::string& word);
    BMenuItem& ItemOf(const std::string& word);
    BTextControl& Line(Part part) const { return *lines[static_cast<std::size_t>(part)]; }
    std::string Typed(Part part) const;
    void ShowText(Part part, const std::string& text);
    void Mark(Part part, const std::string& fault);
    void EnterTyped();
    void Enter(Part part);

    BWindow& main;
    VexaView& view;
    /// The fields of one line, by part; null for the others.
    std::array<BTextControl*, std::size(kParts)> lines{};
    BMenuField* category = nullptr;
    kits::TextBox* comment = nullptr;
    Shown shown;
};

} // namespace vexa
