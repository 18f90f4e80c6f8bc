// SPDX-License-Identifier: MIT
#include "platform/ChildProcess.h"
#include "platform/ThreadLoops.h"

#include <QtTest>

#include <QAbstractEventDispatcher>

using namespace cartloom;

class ThreadLoopsTest : public QObject
{
    Q_OBJECT

    static constexpr auto variable = "QT_NO_THREADED_GLIB";

    static QByteArray environmentOfChild()
    {
        Pipe output;
        const auto child = ChildProcess::start("/bin/sh", {"-c", "env >&2"}, output.writing);
        output.writing.close();
        QByteArray text;
        char block[4096];
        while (const auto count = output.reading.readSome(block, sizeof block))
            text.append(block, static_cast<qsizetype>(count));
        child.waitForExit();
        return text;
    }

private Q_SLOTS:
    /// First, because what is set once stays set.
    void whatTheUserHasSetIsLeftAloneAndPassedOn()
    {
        qputenv(variable, "0");
        ThreadLoops::leaveOutGLib();
        QCOMPARE(qgetenv(variable), QByteArray("0"));
        QVERIFY(environmentOfChild().contains("QT_NO_THREADED_GLIB=0\n"));
        qunsetenv(variable);
    }

    void threadsWaitWithoutGLib()
    {
        ThreadLoops::leaveOutGLib();
        QThread thread;
        thread.start();
        QTRY_VERIFY(thread.eventDispatcher());
        QVERIFY(!thread.eventDispatcher()->inherits("QEventDispatcherGlib"));
        thread.quit();
        QVERIFY(thread.wait());
    }

    void programsThatAreStartedDoNotHaveTheVariable()
    {
        ThreadLoops::leaveOutGLib();
        const QByteArray environment = environmentOfChild();
        QVERIFY(environment.contains("PATH="));
        QVERIFY(!environment.contains("QT_NO_THREADED_GLIB"));
    }
};

QTEST_GUILESS_MAIN(ThreadLoopsTest)
#include "tst_ThreadLoops.moc"
