// SPDX-License-Identifier: MIT
#include "platform/SingleInstance.h"

#include "platform/Text.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QLocalSocket>
#include <QStandardPaths>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>

using namespace std::chrono_literals;

namespace cartloom
{

namespace
{

/// How long a first that does not answer is waited for.
constexpr std::chrono::milliseconds patience = 5s;
constexpr std::chrono::milliseconds pause = 20ms;

/// One name for a folder, by whatever way it is reached.
QByteArray nameOf(const std::filesystem::path& folder)
{
    std::error_code failure;
    const auto known = std::filesystem::weakly_canonical(folder, failure);
    const QByteArray path = QByteArray::fromStdString((failure ? folder : known).native());
    return QCryptographicHash::hash(path, QCryptographicHash::Sha256).toHex().left(16);
}

/// Where lock and socket of a folder lie, but for the ending of their names. Nothing of it may lie in the
/// folder itself, which can be removed while the program runs.
QString placeFor(const std::filesystem::path& folder)
{
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return QDir(runtime.isEmpty() ? QDir::tempPath() : runtime)
        .filePath(QStringLiteral("cartloom-") + QString::fromLatin1(nameOf(folder)));
}

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& folder)
    : m_place(placeFor(folder))
{
    const QDeadlineTimer end(patience);
    bool answered = false;
    while (!m_first && !answered && !end.hasExpired()) {
        m_first = takeLock();
        answered = !m_first && callFirst();
        // The first may have the lock and not listen yet, or have closed its window and not ended yet.
        if (!m_first && !answered)
            std::this_thread::sleep_for(pause);
    }
    if (m_first)
        listen();
}

bool SingleInstance::takeLock()
{
    // The file stays when the process ends: removing it would let two lock two files of one name.
    const std::string file = m_place.toStdString() + ".lock";
    FileDescriptor lock(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    const bool taken = lock.isOpen() && ::flock(lock.get(), LOCK_EX | LOCK_NB) == 0;
    if (!taken && errno == EWOULDBLOCK)
        return false;
    if (!taken)
        qWarning("Cannot tell whether this runs already: %s", lastSystemError().what());
    m_lock = std::move(lock);
    return true;
}

bool SingleInstance::callFirst() const
{
    QLocalSocket socket;
    socket.connectToServer(m_place + QStringLiteral(".socket"));
    const int limit = static_cast<int>(patience.count());
    return socket.waitForConnected(limit) && socket.waitForReadyRead(limit);
}

void SingleInstance::listen()
{
    const QString socket = m_place + QStringLiteral(".socket");
    // One that is there belongs to a process that was killed, for this one has the lock.
    QLocalServer::removeServer(socket);
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::answer);
    if (!m_server.listen(socket))
        qWarning("A second start will not be heard of: %s", qPrintable(m_server.errorString()));
}

void SingleInstance::answer()
{
    while (QLocalSocket* const caller = m_server.nextPendingConnection()) {
        connect(caller, &QLocalSocket::disconnected, caller, &QObject::deleteLater);
        Q_EMIT startedAgain();
        caller->write("!");
        caller->disconnectFromServer();
    }
}

} // namespace cartloom
