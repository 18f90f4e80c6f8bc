// SPDX-License-Identifier: MIT
#include "platform/SessionBus.h"

#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "platform/Places.h"

#include <QByteArrayList>
#include <QDeadlineTimer>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace cartloom
{

namespace
{

constexpr auto variable = "DBUS_SESSION_BUS_ADDRESS";
constexpr std::chrono::seconds answerTimeout{1};

enum class Answer { unreachable, given, missing };

std::string inherited;

/// The addresses of the bus, in the order in which they are tried.
QByteArray addresses()
{
    QByteArray configured = qgetenv(variable);
    const auto session = Places::sessionFolder();
    if (!configured.isEmpty() || !session || !Files::exists(*session / "bus"))
        return configured;
    return "unix:path=" + QByteArray::fromStdString((*session / "bus").native()).toPercentEncoding("/");
}

/// The name of the socket of an address: it begins with a null character if it is no file's. Empty for any
/// other kind of address.
std::string socketOf(const QByteArray& address)
{
    constexpr std::string_view path = "path=";
    constexpr std::string_view abstract = "abstract=";
    if (!address.startsWith("unix:"))
        return {};
    for (const auto& pair : address.mid(5).split(',')) {
        auto value = QByteArray::fromPercentEncoding(pair.mid(pair.indexOf('=') + 1)).toStdString();
        if (pair.startsWith(path))
            return value;
        if (pair.startsWith(abstract))
            return '\0' + value;
    }
    return {};
}

/// True if the descriptor can be read before the time is over.
bool becomesReadable(const FileDescriptor& socket, const QDeadlineTimer& end)
{
    pollfd wanted = {.fd = socket.get(), .events = POLLIN, .revents = 0};
    int ready = 0;
    do {
        ready = ::poll(&wanted, 1, static_cast<int>(end.remainingTime()));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

/// Asks which ways to authenticate there are.
Answer ask(const std::string& name)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (name.empty() || name.size() >= sizeof address.sun_path)
        return Answer::unreachable;
    std::ranges::copy(name, address.sun_path);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC);
    ::fcntl(socket.get(), F_SETFL, O_NONBLOCK);
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), length) != 0) {
        // It does not even accept: its queue is full.
        return errno == EAGAIN ? Answer::missing : Answer::unreachable;
    }
    constexpr std::string_view question{"\0AUTH\r\n", 7};
    const bool asked = ::send(socket.get(), question.data(), question.size(), MSG_NOSIGNAL) > 0;
    return !asked || becomesReadable(socket, QDeadlineTimer(answerTimeout)) ? Answer::given : Answer::missing;
}

} // namespace

void SessionBus::leaveIfHung()
{
    const QByteArray all = addresses();
    for (const auto& address : all.split(';')) {
        const Answer answer = ask(socketOf(address));
        if (answer == Answer::unreachable)
            continue;
        if (answer == Answer::missing) {
            inherited = std::string(variable) + '=' + all.toStdString();
            qputenv(variable, "disabled:");
        }
        return;
    }
}

std::vector<std::string> SessionBus::inheritedSettings()
{
    return inherited.empty() ? std::vector<std::string>() : std::vector{inherited};
}

} // namespace cartloom
