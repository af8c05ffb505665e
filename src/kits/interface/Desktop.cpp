// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Desktop.h"

#include <QProcess>
#include <utility>

namespace kits {

namespace {

constexpr const char* kOpener = "xdg-open";

} // namespace

void ShowFile(const std::filesystem::path& file,
              std::function<void(const std::string& reason)> failed) {
    // Without an owner: what it shows may stay longer than this program.
    auto* process = new QProcess;
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardInputFile(QProcess::nullDevice());
    QObject::connect(process, &QProcess::errorOccurred, process,
                     [process, failed](QProcess::ProcessError error) {
                         if (error != QProcess::FailedToStart)
                             return;
                         failed(std::string(kOpener) + ": " + process->errorString().toStdString());
                         process->deleteLater();
                     });
    QObject::connect(process, &QProcess::finished, process,
                     [process, failed](int code, QProcess::ExitStatus) {
                         if (code != 0)
                             failed(std::string(kOpener) + " found no program that shows it (" +
                                    std::to_string(code) + ")");
                         process->deleteLater();
                     });
    process->start(kOpener, {QString::fromStdString(file.string())});
}

} // namespace kits
