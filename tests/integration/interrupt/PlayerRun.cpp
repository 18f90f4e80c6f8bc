// SPDX-License-Identifier: MIT
#include "PlayerRun.h"

#include "platform/Text.h"
#include "support/Sandbox.h"

#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <chrono>
#include <csignal>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace fs = std::filesystem;

namespace cartloom
{

namespace
{

/// Far beyond what any run takes.
constexpr std::chrono::milliseconds limit = 120s;

void setPlaces(QProcessEnvironment& environment, const fs::path& home, const fs::path& scratch)
{
    environment.insert(QStringLiteral("HOME"), toText(home));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), toText(home / "data"));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), toText(home / "config"));
    environment.insert(QStringLiteral("PLAYED"), toText(scratch / "played"));
    environment.insert(QStringLiteral("WAITER"), QStringLiteral(SCRIPTED_CHILD));
    environment.insert(QStringLiteral("CARTLOOM_CHILD"),
                       QStringLiteral("wait %1/go\nerr broken\nexit 1").arg(toText(scratch)));
}

/// The player's environment beside that of this process.
QProcessEnvironment orders(const fs::path& home, const fs::path& scratch, const Interruption& interruption)
{
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(INTERRUPTER));
    environment.insert(QStringLiteral("INTERRUPT_BELOW"), toText(home));
    environment.insert(QStringLiteral("INTERRUPT_COUNTER"), toText(scratch / "counter"));
    environment.insert(QStringLiteral("INTERRUPT_LOG"), toText(scratch / "log"));
    environment.insert(QStringLiteral("INTERRUPT_AT"), QString::fromLatin1(interruption.at));
    environment.insert(QStringLiteral("INTERRUPT_WITH"), QString::fromLatin1(interruption.with));
    if (!interruption.only.isEmpty())
        environment.insert(QStringLiteral("INTERRUPT_ONLY"), QString::fromUtf8(interruption.only));
    return environment;
}

/// Waits for all that is left of a process group.
void outlive(pid_t group)
{
    while (::waitpid(-group, nullptr, 0) > 0) {
    }
}

} // namespace

PlayerEnd runPlayer(const fs::path& home, const fs::path& scratch, const QString& origin,
                    const QString& operation, const Interruption& interruption, const QStringList& wrapper)
{
    // What a player that is killed leaves behind becomes this process's child.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    writeFile(scratch / "counter", QByteArray(8, '\0'));
    writeFile(scratch / "log", {});

    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    setPlaces(environment, home, scratch);
    QStringList command = wrapper;
    if (!interruption.at.isEmpty()) {
        // Through env, so that a program around the player is left alone.
        command.append(QStringLiteral("env"));
        const auto variables = orders(home, scratch, interruption).toStringList();
        command.append(variables);
    }
    command.append({QStringLiteral(PLAYER), toText(scratch), origin, operation});
    process.setProcessEnvironment(environment);
    process.setChildProcessModifier([] { ::setpgid(0, 0); });

    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    QTimer::singleShot(limit, &process, &QProcess::kill);
    process.start(command.first(), command.mid(1));
    const auto group = static_cast<pid_t>(process.processId());
    loop.exec();
    process.waitForFinished();

    // An emulator that still waits must not be waited for.
    writeFile(scratch / "go", {});
    outlive(group);

    PlayerEnd end;
    end.killed = process.exitStatus() == QProcess::CrashExit && process.exitCode() == SIGKILL;
    end.well = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    end.words = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    end.complaint = QString::fromUtf8(process.readAllStandardError()).trimmed();
    end.calls = QString::fromUtf8(readFile(scratch / "log")).split(u'\n', Qt::SkipEmptyParts);
    return end;
}

} // namespace cartloom
