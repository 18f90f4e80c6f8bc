// SPDX-License-Identifier: MIT
#include "platform/SingleInstance.h"

#include "platform/Files.h"
#include "platform/FolderAlias.h"
#include "platform/Places.h"
#include "platform/Text.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QLocalSocket>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace cartloom
{

namespace
{

constexpr std::chrono::milliseconds answerTimeout = 5s;
constexpr std::chrono::milliseconds retryInterval = 20ms;

/// One name for a folder, by whatever way it is reached.
std::string nameOf(const std::filesystem::path& folder)
{
    std::error_code failure;
    const auto known = std::filesystem::weakly_canonical(folder, failure);
    const QByteArray path = QByteArray::fromStdString((failure ? folder : known).native());
    const auto hash = QCryptographicHash::hash(path, QCryptographicHash::Sha256).toHex().left(16);
    return "cartloom-" + hash.toStdString();
}

/// True if the file belongs to this user and no other user may change it.
bool isUsersAlone(const struct stat& status)
{
    return status.st_uid == ::geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

/// Opens a folder that only this user can write to; closed if it is missing or another user's.
FileDescriptor openPrivate(const std::filesystem::path& folder)
{
    FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    const bool usable = opened.isOpen() && ::fstat(opened.get(), &status) == 0 && isUsersAlone(status);
    return usable ? std::move(opened) : FileDescriptor();
}

/// Opens the lock file; closed, with errno, if it is a link or another user can reach it.
FileDescriptor openLock(const FileDescriptor& folder, const std::string& name)
{
    FileDescriptor lock(
        ::openat(folder.get(), name.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
    struct stat status = {};
    if (!lock.isOpen() || ::fstat(lock.get(), &status) != 0)
        return {};
    if (S_ISREG(status.st_mode) && isUsersAlone(status))
        return lock;
    errno = EPERM;
    return {};
}

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& folder)
    : m_name(nameOf(folder))
{
    choosePlace(folder);
    const QDeadlineTimer end(answerTimeout);
    while (!m_first && !m_answered && !end.hasExpired()) {
        m_first = takeLock();
        m_answered = !m_first && callFirst();
        // The first may have the lock and not listen yet, or have closed its window and not ended yet.
        if (!m_first && !m_answered)
            std::this_thread::sleep_for(retryInterval);
    }
    if (m_first)
        listen();
}

void SingleInstance::choosePlace(const std::filesystem::path& folder)
{
    if (const auto session = Places::sessionFolder()) {
        m_placePath = *session;
        m_place = openPrivate(m_placePath);
    }
    if (m_place.isOpen())
        return;
    m_placePath = folder / ".instance";
    try {
        Files::createFolders(folder);
        ::mkdir(m_placePath.c_str(), 0700);
    } catch (const std::system_error&) {
        // Opening it fails, too.
    }
    m_place = openPrivate(m_placePath);
}

bool SingleInstance::takeLock()
{
    // The file stays when the process ends: removing it would let two lock two files of one name.
    FileDescriptor lock = openLock(m_place, m_name + ".lock");
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
    struct stat status = {};
    const auto file = m_name + ".socket";
    if (::fstatat(m_place.get(), file.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISSOCK(status.st_mode) || !isUsersAlone(status))
        return false;
    QLocalSocket socket;
    socket.connectToServer(socketName());
    const int limit = static_cast<int>(answerTimeout.count());
    return socket.waitForConnected(limit) && socket.waitForReadyRead(limit);
}

QString SingleInstance::socketName() const
{
    const auto path = m_placePath / (m_name + ".socket");
    const bool fits = path.native().size() < sizeof(sockaddr_un::sun_path);
    return fits && toPath(toText(path)) == path ? toText(path) : FolderAlias::of(m_place, path);
}

void SingleInstance::listen()
{
    if (!m_place.isOpen())
        return;
    // One that is there belongs to a process that was killed, for this one has the lock.
    QLocalServer::removeServer(socketName());
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::answer);
    // Whatever the user's default permissions are, only the user may connect.
    if (!m_server.listen(socketName()) ||
        ::fchmodat(m_place.get(), (m_name + ".socket").c_str(), 0600, 0) != 0)
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
