// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Desktop.h"

#include <QProcess>
#include <QStandardPaths>
#include <string>
#include <utility>

#include <linux/close_range.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kits {

namespace {

constexpr const char* kOpener = "xdg-open";

/// Returns why it did not start, as a sentence.
std::string ReasonOf(const QProcess& process) {
    const std::string opener = std::string(kOpener) + ", which shows files, ";
    if (QStandardPaths::findExecutable(kOpener).isEmpty())
        return opener + "was not found (package xdg-utils).";
    // The toolkit puts the name of the system's function first.
    const QString reason = process.errorString().section(": ", -1);
    return opener + "could not be started: " + reason.toStdString() + '.';
}

} // namespace

void ShowFile(const std::filesystem::path& file,
              std::function<void(const std::string& reason)> failed) {
    // Without an owner, because the shown file may stay open longer than this program runs.
    auto* process = new QProcess;
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardInputFile(QProcess::nullDevice());
    // Otherwise a browser, for example, would inherit the sockets to an audio server, and the
    // server would treat this program as connected until all copies of its sockets are closed.
    process->setChildProcessModifier(
        [] { ::syscall(SYS_close_range, 3U, ~0U, CLOSE_RANGE_CLOEXEC); });
    QObject::connect(process, &QProcess::errorOccurred, process,
                     [process, failed](QProcess::ProcessError error) {
                         if (error != QProcess::FailedToStart)
                             return;
                         failed(ReasonOf(*process));
                         process->deleteLater();
                     });
    QObject::connect(process, &QProcess::finished, process,
                     [process, failed](int code, QProcess::ExitStatus) {
                         if (code != 0)
                             failed(std::string(kOpener) + " found no program that shows it (" +
                                    std::to_string(code) + ").");
                         process->deleteLater();
                     });
    process->start(kOpener, {QString::fromStdString(file.string())});
}

} // namespace kits
