// SPDX-License-Identifier: MIT
#include "platform/FileDescriptor.h"
#include "platform/SessionBus.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <algorithm>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

constexpr auto variable = "DBUS_SESSION_BUS_ADDRESS";

FileDescriptor newSocket()
{
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

template <typename Call>
int callWithAddress(const FileDescriptor& socket, const std::string& name, Call call)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::ranges::copy(name, address.sun_path);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    return call(socket.get(), reinterpret_cast<const sockaddr*>(&address), length);
}

/// A socket at which callers wait in a queue.
FileDescriptor listenAt(const std::string& name, int queue)
{
    auto socket = newSocket();
    if (callWithAddress(socket, name, &::bind) != 0 || ::listen(socket.get(), queue) != 0)
        qFatal("cannot listen");
    return socket;
}

} // namespace

/// The message bus of the session: there, absent, or hung.
class SessionBusFreedesktopTest : public QObject
{
    Q_OBJECT

    [[nodiscard]] std::string hung() const { return m_sandbox->scratch() / "hung"; }
    [[nodiscard]] std::string full() const { return m_sandbox->scratch() / "full"; }
    [[nodiscard]] std::string well() const { return m_sandbox->scratch() / "well"; }
    [[nodiscard]] std::string runtime() const { return m_sandbox->scratch() / "run"; }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        fs::create_directories(runtime());
        m_formerRuntime = qgetenv("XDG_RUNTIME_DIR");
        qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime()));
    }

    void cleanup()
    {
        qunsetenv(variable);
        qputenv("XDG_RUNTIME_DIR", m_formerRuntime);
        m_sandbox.reset();
    }

    void onlyAHungBusIsLeft_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("isLeft");
        const auto add = [](const char* name, const char* address, bool isLeft) {
            QTest::newRow(name) << QString::fromLatin1(address) << isLeft;
        };
        add("answers", "unix:path=%1/well", false);
        add("answers, with an identifier", "unix:path=%1/well,guid=0123456789abcdef", false);
        add("answers, escaped", "unix:path=%1/%77ell", false);
        add("nobody listens", "unix:path=%1/nothing", false);
        add("another kind", "tcp:host=127.0.0.1,port=1", false);
        add("no address at all", "nonsense", false);
        add("91 accepts and does not answer", "unix:path=%1/hung", true);
        add("91 does not answer, without a file", "unix:abstract=cartloom-test-%2", true);
        add("91 does not even accept", "unix:path=%1/full", true);
        add("91 the second one hangs", "unix:path=%1/nothing;unix:path=%1/hung", true);
        add("the first one answers", "unix:path=%1/well;unix:path=%1/hung", false);
    }

    void onlyAHungBusIsLeft()
    {
        QFETCH(QString, address);
        QFETCH(const bool, isLeft);
        address.replace(QStringLiteral("%1"), QString::fromStdString(m_sandbox->scratch()));
        address.replace(QStringLiteral("%2"), QString::number(::getpid()));
        const auto hanging = listenAt(hung(), 1);
        const auto nameless = listenAt('\0' + ("cartloom-test-" + std::to_string(::getpid())), 1);
        const auto answering = listenAt(well(), 1);
        const auto filled = listenAt(full(), 0);
        const auto first = newSocket();
        QCOMPARE(callWithAddress(first, full(), &::connect), 0);
        std::thread server([&] {
            const FileDescriptor caller(::accept(answering.get(), nullptr, nullptr));
            char question[64];
            if (caller.isOpen() && ::read(caller.get(), question, sizeof question) == 7)
                static_cast<void>(::write(caller.get(), "REJECTED EXTERNAL\r\n", 19));
        });

        qputenv(variable, address.toUtf8());
        SessionBus::leaveIfHung();
        ::shutdown(answering.get(), SHUT_RDWR);
        server.join();
        QCOMPARE(qgetenv(variable), isLeft ? QByteArray("disabled:") : address.toUtf8());
        if (isLeft)
            QCOMPARE(SessionBus::inheritedSettings(), std::vector{variable + ("=" + address.toStdString())});
    }

    void busOfTheSessionsFolderIsAsked_data()
    {
        QTest::addColumn<bool>("isThere");
        QTest::newRow("91 hung bus in the session's folder") << true;
        QTest::newRow("no bus in the session's folder") << false;
    }

    void busOfTheSessionsFolderIsAsked()
    {
        QFETCH(const bool, isThere);
        FileDescriptor hanging;
        if (isThere)
            hanging = listenAt(runtime() + "/bus", 1);
        SessionBus::leaveIfHung();
        QCOMPARE(qgetenv(variable), QByteArray(isThere ? "disabled:" : ""));
        if (isThere)
            QCOMPARE(SessionBus::inheritedSettings(),
                     std::vector{variable + ("=unix:path=" + runtime()) + "/bus"});
    }

private:
    std::unique_ptr<Sandbox> m_sandbox;
    QByteArray m_formerRuntime;
};

QTEST_GUILESS_MAIN(SessionBusFreedesktopTest)
#include "tst_SessionBusFreedesktop.moc"
