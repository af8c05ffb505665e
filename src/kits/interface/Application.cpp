// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Application.h"

#include "kits/application/Interrupt.h"
#include "kits/application/MessageQueue.h"
#include "kits/interface/Alert.h"
#include "kits/interface/Window.h"
#include "kits/interface/backends/AccessibleView.h"
#include "kits/interface/backends/Appearance.h"
#include "kits/interface/backends/WindowWidget.h"
#include "kits/storage/ProgramFolder.h"

#include <QApplication>
#include <QIcon>
#include <QScopedValueRollback>
#include <QThreadPool>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

BApplication* be_app = nullptr;

namespace kits {

namespace {

/// The interval at which the event loop checks for signals, in milliseconds.
constexpr int kSignalInterval = 100;

constexpr const char* kXPlatform = "xcb";

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

bool WaylandAnswers() {
    std::string path = Environment("WAYLAND_DISPLAY");
    if (path.empty())
        return false;
    if (!path.starts_with('/'))
        path = Environment("XDG_RUNTIME_DIR") + '/' + path;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return false;
    path.copy(address.sun_path, path.size());
    const int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool answers =
        ::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(connection);
    return answers;
}

bool XAnswers() {
    xcb_connection_t* connection = ::xcb_connect(nullptr, nullptr);
    const bool answers = ::xcb_connection_has_error(connection) == 0;
    ::xcb_disconnect(connection);
    return answers;
}

} // namespace

Result<void> FindDisplay() {
    const std::string platform = Environment("QT_QPA_PLATFORM");
    if (platform.starts_with("offscreen") || platform == "minimal")
        return {};
    const std::string display = Environment("DISPLAY");
    if ((platform != kXPlatform && WaylandAnswers()) || (!display.empty() && XAnswers()))
        return {};
    if (display.empty() && Environment("WAYLAND_DISPLAY").empty())
        return Error{"there is no display (neither DISPLAY nor WAYLAND_DISPLAY is set)"};
    return Error{"the display does not answer (DISPLAY=" + display +
                 ", WAYLAND_DISPLAY=" + Environment("WAYLAND_DISPLAY") + ")"};
}

void ChooseXServer() {
    ::setenv("QT_QPA_PLATFORM", kXPlatform, 1);
}

/// Reports an exception that escapes from an event or a message handler instead of ending the
/// program: that action has failed, but everything else goes on.
class GuardedApplication : public QApplication {
  public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::bad_alloc&) {
            Tell("There is not enough memory for that.");
        } catch (const std::exception& fault) {
            Tell(fault.what());
        }
        return true;
    }

  private:
    void Tell(const char* text) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(applicationName()), text);
        // A failure while the alert is open, such as in drawing, would open another alert.
        if (telling)
            return;
        const QScopedValueRollback rollback(telling, true);
        try {
            (new BAlert("Error", text, "Ok", nullptr, nullptr, B_WIDTH_AS_USUAL, B_STOP_ALERT))
                ->Go();
        } catch (const std::bad_alloc&) {
            // There is no memory for the alert; the line on standard error must suffice.
        }
    }

    bool telling = false;
};

/// Owns the toolkit for the lifetime of the application.
class Toolkit {
  public:
    Toolkit() : application(count, arguments) {
        application.setQuitOnLastWindowClosed(false);
        SetAppearance();
        DescribeViews();
        const std::string name = ProgramFile().stem();
        QApplication::setWindowIcon(
            QIcon(QString::fromStdString(ContentFolder() / (name + "-icon.png"))));
        QObject::connect(&poll, &QTimer::timeout, [] {
            if (Interrupt::Pending())
                QCoreApplication::exit();
        });
        poll.start(kSignalInterval);
    }
    ~Toolkit() {
        MessageQueue::Instance().SetWake(nullptr);
        // One at a time, because a window may delete others with itself, and its menus, which are
        // top-level widgets too.
        while (BWindow* window = FirstWindow())
            delete window;
    }

    void Run() {
        const auto deliver = [] { MessageQueue::Instance().Deliver(); };
        MessageQueue::Instance().SetWake([this, deliver] {
            QMetaObject::invokeMethod(&application, deliver, Qt::QueuedConnection);
        });
        // Delivers the messages that were posted before the loop started.
        QMetaObject::invokeMethod(&application, deliver, Qt::QueuedConnection);
        QApplication::exec();
        MessageQueue::Instance().SetWake(nullptr);
    }

  private:
    static BWindow* FirstWindow() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* window = dynamic_cast<WindowWidget*>(widget))
                return &window->Window();
        }
        return nullptr;
    }

    int count = 1;
    char name[5] = "vexa";
    char* arguments[2] = {name, nullptr};
    GuardedApplication application;
    QTimer poll;
};

} // namespace kits

BApplication::BApplication(const char* signature, double scale) : BLooper(signature) {
    // With shared memory the X server sends a file descriptor, and if the process has no room for
    // one, the connection breaks and the program ends. Without it, images are sent over the
    // connection.
    ::setenv("QT_XCB_NO_MITSHM", "1", 0);
    // The toolkit takes the factor from the environment alone. Programs that this one starts must
    // not find it there.
    constexpr const char* kFactor = "QT_SCALE_FACTOR";
    const bool scales = scale != 1 && !std::getenv(kFactor);
    if (scales)
        ::setenv(kFactor, QByteArray::number(scale).constData(), 1);
    toolkit = std::make_unique<kits::Toolkit>();
    if (scales)
        ::unsetenv(kFactor);
    // Qt converts large images in threads of its pool, and waits for ever for a thread that the
    // system refuses to create. Therefore one thread is created here, kept, and does all of that
    // work.
    QThreadPool* const pool = QThreadPool::globalInstance();
    pool->setMaxThreadCount(1);
    pool->setExpiryTimeout(-1);
    pool->start([] {});
    be_app = this;
    const std::string text(signature);
    const std::size_t dash = text.find_last_of("-/");
    const std::string name = text.substr(dash + 1);
    const std::string vendor = text.substr(0, dash);
    QApplication::setApplicationName(QString::fromStdString(name));
    // The desktop finds the program's desktop entry by this name.
    QApplication::setDesktopFileName(
        QString::fromStdString("org." + vendor.substr(vendor.find_last_of('.') + 1) + '.' + name));
}

BApplication::~BApplication() {
    toolkit.reset();
    be_app = nullptr;
}

void BApplication::Run() {
    toolkit->Run();
}

void BApplication::MessageReceived(BMessage* message) {
    // Not quit(), which asks every window first: an open file panel always refuses.
    if (message->what == B_QUIT_REQUESTED)
        QCoreApplication::exit();
    else
        BLooper::MessageReceived(message);
}
