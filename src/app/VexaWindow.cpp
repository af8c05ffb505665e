// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VexaWindow.h"

#include "app/About.h"
#include "app/Alerts.h"
#include "app/DescriptionWindow.h"
#include "app/FieldId.h"
#include "app/MainMenu.h"
#include "app/MessageCodes.h"
#include "app/Shortcuts.h"
#include "app/VexaView.h"
#include "app/bar/BarView.h"
#include "app/drawer/Drawer.h"
#include "app/strip/Strip.h"
#include "kits/interface/Alert.h"
#include "kits/interface/Application.h"
#include "kits/interface/Desktop.h"
#include "kits/interface/Menu.h"
#include "kits/interface/ScrollView.h"
#include "kits/translation/TranslationUtils.h"
#include "views/BitmapBarView.h"
#include "views/Theme.h"
#include "views/plane/PlaneOverlay.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <system_error>
#include <utility>

namespace vexa {

namespace {

/// The pulse period in microseconds; the orbits move ten times a second.
constexpr bigtime_t kPulseRate = 100000;
constexpr float kWidest = 10000;
/// The minimum size of the window, in pixels; the main view then scrolls.
constexpr float kLeastWidth = 480;
constexpr float kLeastHeight = 240;

constexpr float kMainTop = 41;

/// The gap between the logo bar's pictures and the views between them, in pixels.
constexpr float kBarGap = 6;
constexpr float kMenuWidth = 34;

/// Returns whether the code is that of a control of the main view.
bool IsCommand(uint32 code) {
    static constexpr uint32 kCommands[] = {
        kExpressionTypedCode, kLoadFunctionCode, kSaveFunctionCode, kLoadSoundCode,
        kSaveSoundCode,       kSaveAgainCode,    kLoadSampleCode,   kAllChannelsCode,
        B_SIMPLE_DATA,        kUndoCode,         kRedoCode,         kInitialSoundCode,
        kMutateCode,          kSwitchSlotCode,   kCopySlotCode,
    };
    const auto between = [code](uint32 first, uint32 last) {
        return first <= code && code <= last;
    };
    const auto isRow = [code](const auto& row) { return row.code == code; };
    return std::find(std::begin(kCommands), std::end(kCommands), code) != std::end(kCommands) ||
           between(ChannelCode(1), ChannelCode(9)) || between(ChannelCode(10), ChannelCode(16)) ||
           between(VoicesCode(1), VoicesCode(9)) || between(VoicesCode(10), VoicesCode(20)) ||
           std::ranges::any_of(Parameters(), isRow) || std::ranges::any_of(FunctionFields(), isRow);
}

/// Asks the desktop to show a file or folder. If it cannot, an alert shows `otherwise` with the
/// path.
void ShowOnDesktop(const std::filesystem::path& path, const std::string& otherwise) {
    kits::ShowFile(path, [text = otherwise + path.string()](const std::string& reason) {
        auto* alert = new BAlert("Show", text.c_str(), "Ok", nullptr, nullptr, B_WIDTH_AS_USUAL,
                                 B_WARNING_ALERT);
        alert->SetDetails(reason);
        alert->Show();
    });
}

TuningChoice RememberedTuning(const Settings& settings) {
    TuningChoice choice;
    if (const std::string scale = settings.Get(kScaleSetting); !scale.empty())
        choice.scale = scale;
    if (const std::string keymap = settings.Get(kKeymapSetting); !keymap.empty())
        choice.keymap = keymap;
    const double a4 = settings.Get(kA4Setting);
    if (a4 >= kLeastA4 && a4 <= kMostA4)
        choice.a4 = a4;
    else if (a4 != 0)
        settings.TellWrong(kA4Setting, "a frequency from 1 to 20000, or 0");
    return choice;
}

/// Returns the frame at the remembered position, or the frame itself.
BRect Placed(BRect frame, const WindowChoices& choices) {
    const Settings& settings = *choices.settings;
    if (choices.plugin || choices.classic || settings.Get(kWindowWidthSetting) <= 0)
        return frame;
    return frame.OffsetToCopy(static_cast<float>(settings.Get(kWindowLeftSetting)),
                              static_cast<float>(settings.Get(kWindowTopSetting)));
}

/// Chooses the item of a menu whose message has that code.
void Choose(BMenu& menu, uint32 code) {
    if (BMenuItem* item = menu.FindItem(code))
        item->Choose();
}

} // namespace

VexaWindow::VexaWindow(BRect frame, const kits::ProgramFolders& folders,
                       const WindowChoices& choices)
    : BWindow(Placed(frame, choices), "Vexa", B_TITLED_WINDOW, B_NOT_ZOOMABLE, B_CURRENT_WORKSPACE),
      attached(choices.plugin != nullptr),
      mainHeight(frame.Height()),
      classic(choices.classic) {
    SetPulseRate(kPulseRate);
    TakeDrops();
    ApplyColors();
    AddBar();
    mainView = new VexaView({0, kMainTop, frame.Width(), frame.Height()}, "VexaView", folders,
                            choices.plugin, choices.settings);
    mainView->SetClassic(classic);
    mainPane = new BScrollView(mainView->Frame(), "main pane");
    AddChild(mainPane);
    mainPane->SetTarget(mainView, mainView->LeastWidth(), mainView->Frame().Height());
    bar = new BarView({0, 2, frame.Width(), logoBar->Bounds().bottom - 5}, *mainView);
    logoBar->AddChild(bar);
    AddDrawer();
    const float bottom = frame.Height() + 1;
    stripView = new vexa::Strip({0, bottom, frame.Width(), bottom + Strip::PreferredHeight()},
                                *mainView, [this] { Arrange(); });
    strip.view = stripView;
    AddChild(strip.view);
    Remembered();
    FoldWhatDoesNotFit();
    const Settings& settings = mainView->Remembered();
    const auto width = static_cast<float>(settings.Get(kWindowWidthSetting));
    if (KeepsFrame() && width > 0)
        Fit(width - RoomOf(drawer), static_cast<float>(settings.Get(kWindowHeightSetting)));
    else
        Fit(frame.Width());
    if (choices.withDefaultSound && !attached)
        mainView->LoadDefaultSound();
}

VexaWindow::~VexaWindow() {
    delete Description();
    // The bar uses the main view, but would be destroyed after it.
    delete bar;
}

void VexaWindow::AddBar() {
    BBitmap* left = BTranslationUtils::GetBitmap("orvo.png");
    BBitmap* middle = BTranslationUtils::GetBitmap("orvobar.png");
    BBitmap* right = BTranslationUtils::GetBitmap("vexa.png");
    BRect bar = Bounds();
    bar.top = -2;
    bar.bottom = 45;
    logoBar = new BitmapBarView(left, middle, right, bar, "orvo logo", B_FOLLOW_LEFT_RIGHT,
                                B_WILL_DRAW | B_FRAME_EVENTS);
    AddChild(logoBar);
    auto* items = new BPopUpMenu("☰", false, false);
    items->SetOpening([this](BMenu& opened) { FillMainMenu(opened, *this); });
    menu = new BMenuField({0, 0, kMenuWidth, BMenuField::PreferredHeight()}, "main menu", nullptr,
                          items);
    menu->SetOnDark();
    menu->SetAccessibleName("main menu");
    menu->SetToolTip("Files, tuning, help");
    logoBar->AddChild(menu);
}

/// Places the menu and the bar between the logos, which give way to what is in the bar: first the
/// left one, then the other.
void VexaWindow::ArrangeBar() {
    const float room = Bounds().Width() - kMenuWidth - 3 * kBarGap - bar->PreferredWidth();
    const float leftLogo = logoBar->LeftWidth(), rightLogo = logoBar->RightWidth();
    const bool hasLeft = classic || room >= leftLogo + rightLogo;
    const bool hasRight = classic || room >= rightLogo;
    logoBar->ShowEnds(hasLeft, hasRight);
    float left = (hasLeft ? leftLogo : 0) + kBarGap;
    menu->MoveTo(left, std::floor((logoBar->Bounds().Height() - menu->Bounds().Height()) / 2));
    left += kMenuWidth + kBarGap;
    bar->MoveTo(left, bar->Frame().top);
    bar->ResizeTo(Bounds().right - (hasRight ? rightLogo : 0) - kBarGap - left,
                  bar->Bounds().Height());
}

/// Adds the drawer, or none if the system has no thread left to read sounds.
void VexaWindow::AddDrawer() {
    try {
        sounds = new Drawer({0, kMainTop, Drawer::kWidth, Bounds().bottom}, *mainView);
    } catch (const std::system_error& fault) {
        std::fprintf(stderr, "vexa: there is no list of sounds: %s\n", fault.what());
        return;
    }
    drawer.view = sounds;
    drawer.room = Drawer::kWidth + 1;
    AddChild(sounds);
}

/// Returns the least width that is enough for all parts.
float VexaWindow::NeededWidth() const {
    const float beside = RoomOf(drawer);
    const float strips = Takes(strip) ? Strip::LeastWidth() : 0;
    return std::max(beside + mainView->PreferredWidth(), strips);
}

float VexaWindow::FullHeight() const {
    return mainHeight + (Takes(strip) ? Strip::PreferredHeight() + 1 : 0);
}

/// Sizes the window for its parts: with a main view `mainWidth` wide, or wider if that is too
/// narrow, and at most `wantedHeight` high, as far as the screen has room.
void VexaWindow::Fit(float mainWidth, float wantedHeight) {
    const BRect room = Room();
    const float most = std::min(FullHeight(), room.Height());
    const float least = std::min(most, kLeastHeight);
    const float height = std::clamp(wantedHeight, least, most);
    const float needed = std::min(NeededWidth(), room.Width());
    SetSizeLimits(std::min(needed, kLeastWidth), kWidest, least, FullHeight());
    const float width = std::clamp(RoomOf(drawer) + mainWidth, needed, room.Width());
    ResizeTo(width, height);
    const BPoint place = {std::clamp(Frame().left, room.left, room.right - width),
                          std::clamp(Frame().top, room.top, room.bottom - height)};
    if (place != Frame().LeftTop())
        MoveTo(place.x, place.y);
    Arrange();
}

/// Places the parts in the window's present size.
void VexaWindow::Arrange() {
    const BRect bounds = Bounds();
    const float left = RoomOf(drawer);
    const float missing = std::max(FullHeight() - bounds.Height(), 0.0F);
    const bool low = missing > kRounding;
    stripView->SetLow(low);
    strip.room = Strip::PreferredHeight() + 1 - (low ? 0 : missing);
    if (low) {
        const bool scrolls = bounds.Width() - left < mainView->LeastWidth() - kRounding;
        const float main = mainHeight + (scrolls ? BScrollView::BarWidth() : 0);
        strip.room = std::clamp(bounds.Height() - main, stripView->LeastHeight() + 1, strip.room);
    }
    const float bottom = bounds.bottom - RoomOf(strip);
    const auto place = [](BView& view, float x, float y, float width, float height) {
        view.MoveTo(x, y);
        view.ResizeTo(width, height);
    };
    place(*mainPane, left, kMainTop, bounds.right - left, bottom - kMainTop);
    for (const Pane* pane : {&drawer, &strip}) {
        if (pane->view && Takes(*pane) == pane->view->IsHidden())
            Takes(*pane) ? pane->view->Show() : pane->view->Hide();
    }
    if (drawer.view)
        place(*drawer.view, 0, kMainTop, drawer.room - 1, bottom - kMainTop);
    if (strip.view)
        place(*strip.view, 0, bottom + 1, bounds.right, strip.room - 1);
    ArrangeBar();
    if (classic != bar->IsHidden())
        classic ? bar->Hide() : bar->Show();
    if (classic != menu->IsHidden())
        classic ? menu->Hide() : menu->Show();
}

/// Applies the remembered settings.
void VexaWindow::Remembered() {
    const Settings& settings = mainView->Remembered();
    drawer.wanted = settings.Get(kDrawerSetting);
    strip.wanted = settings.Get(kStripSetting);
    const std::string colors = settings.Get(kColorsSetting);
    if (!colors.empty() && colors != kLightColors && colors != kDarkColors)
        settings.TellWrong(kColorsSetting, "light, dark or nothing");
    dark = colors == kDarkColors || (colors != kLightColors && kits::DesktopIsDark());
    ApplyColors();
    if (!sounds)
        return;
    const TextList names = settings.Get(kFavouritesSetting);
    sounds->SetFavourites({names.begin(), names.end()}, [this](const Favourites& next) {
        mainView->Remembered().Set(kFavouritesSetting, TextList(next.begin(), next.end()));
    });
}

/// Remembers a changed frame for the next start.
void VexaWindow::RememberFrame() {
    if (!KeepsFrame() || IsHidden() || Frame() == knownFrame)
        return;
    const bool first = !knownFrame;
    knownFrame = Frame();
    if (first)
        return;
    Settings& settings = mainView->Remembered();
    const auto remember = [&settings](const SettingKey<int>& key, float pixels) {
        settings.Set(key, static_cast<int>(std::lround(pixels)));
    };
    remember(kWindowLeftSetting, knownFrame->left);
    remember(kWindowTopSetting, knownFrame->top);
    remember(kWindowWidthSetting, knownFrame->Width());
    remember(kWindowHeightSetting, knownFrame->Height());
}

/// Hides the parts that leave too little of the screen for the main view.
void VexaWindow::FoldWhatDoesNotFit() {
    const BRect room = Room();
    if (Takes(strip) && mainHeight + stripView->LeastHeight() + 1 > room.Height())
        strip.wanted = false;
    if (Takes(drawer) && NeededWidth() > room.Width())
        drawer.wanted = false;
}

void VexaWindow::FrameResized(float, float) {
    if (mainView)
        Arrange();
}

void VexaWindow::ShowPart(Part part, bool show) {
    const float width = mainPane->Frame().Width();
    PaneOf(part).wanted = show;
    Fit(width, part == Part::Drawer ? Bounds().Height() : kHighest);
}

bool VexaWindow::IsShown(Part part) const {
    return Takes(PaneOf(part));
}

void VexaWindow::ApplyColors() {
    ChooseColors(classic ? ColorSet::Classic : dark ? ColorSet::Dark : ColorSet::Light);
}

void VexaWindow::SetClassic(bool on) {
    const float width = mainPane->Frame().Width();
    classic = on;
    mainView->SetClassic(on);
    ApplyColors();
    Fit(width);
}

void VexaWindow::SetDark(bool on) {
    dark = on;
    ApplyColors();
}

/// Makes the window classic, or no longer, and remembers the choice.
void VexaWindow::ChooseClassic(bool on) {
    SetClassic(on);
    mainView->Remembered().Set(kClassicSetting, on);
}

/// Shows or hides a part, and remembers the choice. A classic window has no parts.
void VexaWindow::TogglePart(Part part) {
    if (classic)
        return;
    const bool show = !IsShown(part);
    ShowPart(part, show);
    mainView->Remembered().Set(part == Part::Drawer ? kDrawerSetting : kStripSetting, show);
}

void VexaWindow::ChooseDark(bool on) {
    SetDark(on);
    mainView->Remembered().Set(kColorsSetting, std::string(on ? kDarkColors : kLightColors));
}

/// Remembers the size in the message for the next start, because the toolkit keeps the size with
/// which it has begun.
void VexaWindow::ChooseSize(const BMessage& message) {
    int32 percent = 0;
    Settings& settings = mainView->Remembered();
    if (message.FindInt32("percent", &percent) != B_OK || percent == settings.Get(kSizeSetting))
        return;
    settings.Set(kSizeSetting, int(percent));
    const std::string text = "The size is " + std::to_string(percent) + " % when " +
                             (attached ? "this window is opened" : "Vexa is started") + " again.";
    (new BAlert("Size", text.c_str(), "Ok"))->Show();
}

void VexaWindow::ShowDescription() {
    if (!Description()) {
        description = new DescriptionWindow(*this, *mainView);
        descriptionWindow = BMessenger(description);
    }
    description->Open();
}

void VexaWindow::ShowManual() {
    const auto page = FindManual();
    if (!page)
        return ErrorAlert("The manual is not installed.", "It is in docs/manual of the source.");
    ShowOnDesktop(*page, "The manual cannot be shown. It is\n");
}

void VexaWindow::ShowSounds() {
    const std::filesystem::path folder = mainView->Folders().Own("sounds");
    std::error_code fault;
    std::filesystem::create_directories(folder, fault);
    if (fault)
        return ErrorAlert(folder.string(), fault.message());
    ShowOnDesktop(folder, "The folder cannot be shown. It is\n");
}

bool VexaWindow::TakeShortcut(const kits::KeyPress& press) {
    if (const auto code = ShortcutCode(press)) {
        BMessage message(*code);
        MessageReceived(&message);
        return true;
    }
    return mainView->Overlay().TakeShortcut(press);
}

void VexaWindow::MessageReceived(BMessage* message) {
    if (!mainView)
        return BWindow::MessageReceived(message);
    switch (message->what) {
    case B_KEY_DOWN: {
        int32 character = 0;
        if (message->FindInt32("raw_char", &character) == B_OK && character == B_ESCAPE)
            mainView->SilenceAll();
        else
            mainView->Keyboard().Take(*message);
        break;
    }
    case kSilenceCode:
        mainView->SilenceAll();
        break;
    case kClassicCode:
        ChooseClassic(!classic);
        break;
    case kShowDrawerCode:
        TogglePart(Part::Drawer);
        break;
    case kShowStripCode:
        TogglePart(Part::Strip);
        break;
    case kDarkCode:
        ChooseDark(!dark);
        break;
    case kSizeCode:
        ChooseSize(*message);
        break;
    case kDescribeCode:
        ShowDescription();
        break;
    case kShowSoundsCode:
        ShowSounds();
        break;
    case kHelpCode:
        ShowManual();
        break;
    case kAboutCode: {
        auto* alert = new BAlert("About Vexa", AboutText().c_str(), "Ok");
        alert->SetDetails(LibrariesText());
        alert->Show();
        break;
    }
    case B_KEY_UP:
    case B_WINDOW_ACTIVATED:
        mainView->Keyboard().Take(*message);
        break;
    case B_PULSE:
        mainView->WatchSound();
        FollowSession();
        RememberFrame();
        bar->Refresh();
        if (sounds)
            sounds->Refresh();
        break;
    case kPreviousSoundCode:
    case kNextSoundCode:
        if (sounds)
            sounds->Step(message->what == kNextSoundCode ? 1 : -1);
        break;
    default:
        if (IsCommand(message->what))
            mainView->MessageReceived(message);
        else
            BWindow::MessageReceived(message);
    }
}

void VexaWindow::Begin(const AppOptions& options, kits::Recording* recording) {
    VexaView& view = *mainView;
    if (options.mpe)
        view.Engine().consumer.ExpectMpe();
    view.FollowPrograms(options.programs);
    view.Prefer(options.playing);
    if (savedProject.windowShown)
        Show();
    // What a remembered tuning lacks is told above the window.
    const bool asks = options.tuning.scale || options.tuning.keymap || options.tuning.a4;
    view.KeyTuning().Restore(asks || session ? options.tuning
                                             : RememberedTuning(view.Remembered()));
    view.Record(recording);
    if (options.sound)
        view.LoadSound(*options.sound);
    if (options.file)
        view.Open(*options.file);
    // The options of the command line do not count as changes of the sound.
    view.BeginHistory();
    if (options.voices)
        Choose(view.VoicesMenu(), VoicesCode(*options.voices));
    if (options.channel)
        Choose(view.ChannelMenu(),
               *options.channel < 0 ? kAllChannelsCode : ChannelCode(*options.channel + 1));
    // By default the source is the computer's keyboard, so a newcomer can play without any device.
    view.ChooseSource(options.midi.value_or(view.Remembered().Get(kSourceSetting)));
}

void VexaWindow::BeginAttached() {
    Show();
    mainView->FollowPlugin();
}

bool VexaWindow::QuitRequested() {
    RememberFrame();
    if (session) {
        ShowWindow(false);
        return false;
    }
    // Once all is saved, the request is posted again and finds nothing unsaved.
    if (!attached && !mainView->MayGiveUpAll([this] { PostMessage(B_QUIT_REQUESTED); }))
        return false;
    be_app->PostMessage(B_QUIT_REQUESTED);
    return true;
}

} // namespace vexa
