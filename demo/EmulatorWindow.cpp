// SPDX-License-Identifier: MIT
#include "EmulatorWindow.h"

#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>

#include <chrono>

using namespace std::chrono_literals;

namespace cartloom
{

namespace
{

constexpr std::chrono::milliseconds patience = 5s;

/// What wmctrl prints; none when it fails.
std::optional<QString> wmctrl(const QStringList& arguments)
{
    QProcess program;
    program.start(QStringLiteral("wmctrl"), arguments, QProcess::ReadOnly);
    const bool ended = program.waitForFinished(static_cast<int>(patience.count()));
    if (!ended || program.exitStatus() != QProcess::NormalExit || program.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(program.readAllStandardOutput());
}

bool isChild(qint64 process)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(process));
    if (!status.open(QFile::ReadOnly))
        return false;
    const QByteArray parent = "\nPPid:\t" + QByteArray::number(QCoreApplication::applicationPid()) + '\n';
    return status.readAll().contains(parent);
}

} // namespace

std::optional<EmulatorWindow> EmulatorWindow::find(const QString& title)
{
    // A line is: window, desktop, process, host, title.
    static const QRegularExpression line(QStringLiteral(R"(^(0x[0-9a-f]+)\s+\S+\s+(\d+)\s+\S+ (.*)$)"),
                                         QRegularExpression::MultilineOption);
    const auto listing = wmctrl({QStringLiteral("-l"), QStringLiteral("-p")});
    if (!listing)
        return std::nullopt;
    for (auto matches = line.globalMatch(*listing); matches.hasNext();) {
        const auto match = matches.next();
        if (match.captured(3) == title && isChild(match.captured(2).toLongLong()))
            return EmulatorWindow(match.captured(1).toULongLong(nullptr, 16));
    }
    return std::nullopt;
}

QImage EmulatorWindow::picture() const
{
    return QGuiApplication::primaryScreen()->grabWindow(m_id).toImage();
}

bool EmulatorWindow::close() const
{
    return wmctrl({QStringLiteral("-i"), QStringLiteral("-c"),
                   QStringLiteral("0x%1").arg(m_id, 8, 16, QLatin1Char('0'))})
        .has_value();
}

} // namespace cartloom
