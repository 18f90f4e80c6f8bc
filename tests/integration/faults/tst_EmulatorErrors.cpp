// SPDX-License-Identifier: MIT
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"

#include <QElapsedTimer>
#include <QtTest>

#include <csignal>

#include <sys/resource.h>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

namespace
{

const auto hint = QStringLiteral("\n\nIf macOS blocked it, open System Settings, then Privacy and Security, "
                                 "and click Open Anyway next to ares.");
const auto putBack = QStringLiteral("\n\nThe new Ares did not work, so the previous version was put back.");

QString stopped(int status, const QString& quoted = {})
{
    return QStringLiteral("Ares stopped right away (exit code %1).").arg(status) +
           (quoted.isEmpty() ? QString() : QStringLiteral("\n\n") + quoted);
}

QString alphabet(qsizetype length)
{
    QString text;
    while (text.size() < length)
        text += QChar(static_cast<char16_t>(u'a' + text.size() % 26));
    return text;
}

/// The most memory that this process has used so far, in bytes.
qint64 peakMemory()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return qint64(usage.ru_maxrss) * 1024;
}

} // namespace

/// Exit codes and error streams of the emulator.
class EmulatorErrorsTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path proceed() const { return m_sandbox->scratch() / "proceed"; }
    [[nodiscard]] fs::path reached() const { return m_sandbox->scratch() / "reached"; }
    [[nodiscard]] QString proceedText() const { return toText(proceed()); }

    void arrange()
    {
        installAres();
        saveGame();
        restart();
    }

    /// One run of the emulator, after which the failure is shown and nothing has changed.
    void runEndsWith(const QStringList& script, const Failure& failure)
    {
        arrange();
        remember();
        scriptChild(script);
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        CHECKED(shows(failure));
        CHECKED(nothingChanged());
        pressPlays();
    }

private Q_SLOTS:
    void initTestCase() { std::signal(SIGPIPE, SIG_IGN); }

    void earlyExitIsReportedWithItsErrors_data()
    {
        QTest::addColumn<QStringList>("script");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("details");
        const auto row = [](const char* name, const QStringList& script, int status,
                            const QString& quoted = {}, const QString& details = {}) {
            QTest::newRow(name) << script << stopped(status, quoted) + hint << details;
        };
        const auto words = QStringLiteral("1\n2\n3\n4\n5\n6");
        row("57 exits at once with 0", {}, 0);
        row("57 exits at once with 1", {QStringLiteral("exit 1")}, 1);
        row("57 exits at once with 255 and words",
            {QStringLiteral("err ") + QString(words).replace(u'\n', QStringLiteral("\nerr ")),
             QStringLiteral("exit 255")},
            255, QStringLiteral("1\n2\n3\n4\n5"), words + u'\n');
        row("58 by SIGSEGV", {QStringLiteral("signal %1").arg(SIGSEGV)}, SIGSEGV);
        row("58 by SIGKILL", {QStringLiteral("signal %1").arg(SIGKILL)}, SIGKILL);
        row("58 by SIGABRT, with words", {QStringLiteral("err oh"), QStringLiteral("signal %1").arg(SIGABRT)},
            SIGABRT, QStringLiteral("oh"), QStringLiteral("oh\n"));
        row("57 writes to standard output only", {QStringLiteral("out hello"), QStringLiteral("exit 1")}, 1);
        row("60 20,000 bytes of errors", {QStringLiteral("err-bytes 20000"), QStringLiteral("exit 1")}, 1,
            alphabet(8192), alphabet(8192));
        const auto odd = QString::fromUtf8("A\uFFFDB");
        row("63 invalid UTF-8", {QStringLiteral("err-hex 41FF42"), QStringLiteral("exit 1")}, 1, odd, odd);
        const auto cut = alphabet(8191) + QChar(QChar::ReplacementCharacter);
        row("63 a character cut at byte 8192",
            {QStringLiteral("err-bytes 8191"), QStringLiteral("err-hex C3A9"), QStringLiteral("exit 1")}, 1,
            cut, cut);
    }

    void earlyExitIsReportedWithItsErrors()
    {
        QFETCH(const QStringList, script);
        QFETCH(const QString, message);
        QFETCH(const QString, details);
        runEndsWith(script, {message, details});
    }

    void exitAfterThreeSecondsSettlesAnUpdate_data()
    {
        QTest::addColumn<bool>("isGood");
        QTest::newRow("59 ends well after 3 seconds") << true;
        QTest::newRow("59 ends badly after 3 seconds") << false;
    }

    void exitAfterThreeSecondsSettlesAnUpdate()
    {
        QFETCH(const bool, isGood);
        arrange();
        CHECKED(update());
        QCOMPARE(installedTag(), QByteArray("v147"));
        scriptChild({QStringLiteral("err warning"), QStringLiteral("wait ") + proceedText(),
                     QStringLiteral("exit %1").arg(isGood ? 0 : 3)});
        m_model->play();
        QVERIFY(comesTo(Stage::playing));
        QElapsedTimer clock;
        clock.start();
        QVERIFY(comesTrue([&] { return clock.hasExpired(3050); }));
        QCOMPARE(m_model->stage(), Stage::playing);
        writeFile(proceed(), "");
        QVERIFY(comesToRest());
        if (isGood)
            CHECKED(isAtRestWithoutTraces());
        else
            CHECKED(shows({stopped(3, QStringLiteral("warning")) + putBack, QStringLiteral("warning\n")}));
        QCOMPARE(m_model->errorMessage().has_value(), !isGood);
        QCOMPARE(installedTag(), isGood ? QByteArray("v147") : QByteArray("v146"));
        QVERIFY(!fs::exists(Paths::aresOld()));
        pressPlays();
    }

    void floodOfErrorsStaysOutOfMemory_data() { addOnlyRow("60 1 GB of errors"); }

    void floodOfErrorsStaysOutOfMemory()
    {
        constexpr qint64 mostMore = 64 * 1024 * 1024;
        const qint64 before = peakMemory();
        CHECKED(runEndsWith({QStringLiteral("err-flood 1000"), QStringLiteral("exit 1")},
                            {stopped(1, alphabet(8192)) + hint, alphabet(8192)}));
        QVERIFY(peakMemory() - before < mostMore);
    }

    void closedErrorStreamIsNoExit_data() { addOnlyRow("61 closes its error stream and runs on"); }

    void closedErrorStreamIsNoExit()
    {
        arrange();
        remember();
        scriptChild({QStringLiteral("err before"), QStringLiteral("close-err"),
                     QStringLiteral("touch ") + toText(reached()), QStringLiteral("wait ") + proceedText(),
                     QStringLiteral("exit 4")});
        m_model->play();
        QVERIFY(comesTrue([this] { return fs::exists(reached()); }));
        QCOMPARE(m_model->stage(), Stage::playing);
        writeFile(proceed(), "");
        QVERIFY(comesToRest());
        CHECKED(shows({stopped(4, QStringLiteral("before")) + hint, QStringLiteral("before\n")}));
        CHECKED(nothingChanged());
        pressPlays();
    }

    void exitIsSeenWhileAChildHoldsTheStream_data() { addOnlyRow("62 leaves a child that holds the stream"); }

    void exitIsSeenWhileAChildHoldsTheStream()
    {
        CHECKED(
            runEndsWith({QStringLiteral("err last words"), QStringLiteral("hold-err ") + proceedText(),
                         QStringLiteral("exit 4")},
                        {stopped(4, QStringLiteral("last words")) + hint, QStringLiteral("last words\n")}));
        QVERIFY(!fs::exists(proceed()));
        writeFile(proceed(), "");
    }

    void exitIsSeenWhileAChildKeepsWriting_data() { addOnlyRow("62 leaves a child that keeps writing"); }

    void exitIsSeenWhileAChildKeepsWriting()
    {
        arrange();
        scriptChild({QStringLiteral("chat ") + proceedText(), QStringLiteral("exit 4")});
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        QVERIFY(message().startsWith(stopped(4)));
        writeFile(proceed(), "");
        QVERIFY(comesTrue([this] { return fs::exists(m_sandbox->scratch() / "proceed.done"); }));
        pressPlays();
    }
};

QTEST_GUILESS_MAIN(EmulatorErrorsTest)
#include "tst_EmulatorErrors.moc"
