// SPDX-License-Identifier: MIT
#include "platform/Text.h"
#include "support/LaunchTest.h"

#include <QDir>
#include <QtTest>

#include <csignal>

#include <sys/wait.h>

using namespace cartloom;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace
{

QString command(const char* word, const fs::path& file)
{
    return QString::fromLatin1(word) + u' ' + toText(file);
}

int openDescriptors()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).count());
}

int threads()
{
    return static_cast<int>(
        QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size());
}

} // namespace

class LauncherTest : public LaunchTest
{
    Q_OBJECT

    int m_threadsAtStart = 0;

    fs::path scratch(const char* name) const { return m_sandbox->scratch() / name; }

    QStringList argumentsGiven(const fs::path& rom, bool fullscreen)
    {
        const auto file = scratch("arguments");
        run({command("args", file)}, rom, fullscreen);
        return QString::fromUtf8(readFile(file)).split(u'\n', Qt::SkipEmptyParts);
    }

private Q_SLOTS:
    void initTestCase()
    {
        std::signal(SIGPIPE, SIG_IGN);
        m_threadsAtStart = threads();
    }

    void aWindowedStartHasExactlyThreeArguments()
    {
        QCOMPARE(argumentsGiven("/roms/game.z64", false),
                 (QStringList{QStringLiteral("--system"), QStringLiteral("Nintendo 64"),
                              QStringLiteral("/roms/game.z64")}));
    }

    void fullScreenStandsBetweenTheSystemAndTheRom()
    {
        QCOMPARE(argumentsGiven("/roms/game.z64", true),
                 (QStringList{QStringLiteral("--system"), QStringLiteral("Nintendo 64"),
                              QStringLiteral("--fullscreen"), QStringLiteral("/roms/game.z64")}));
    }

    void aRomPathWithBlanksAndQuotesIsOneArgument()
    {
        QCOMPARE(argumentsGiven("/my roms/a \"game\" $HOME.z64", false).last(),
                 QStringLiteral("/my roms/a \"game\" $HOME.z64"));
    }

    void theStatusIsTheExitStatus() { QCOMPARE(run({QStringLiteral("exit 42")}).status, 42); }

    void theStatusOfASignalIsItsNumber() { QCOMPARE(run({QStringLiteral("signal 9")}).status, 9); }

    void theSecondsArePositive() { QVERIFY(run({}).seconds > 0); }

    void exactlyTheFirst8192BytesAreKept()
    {
        const auto text = run({QStringLiteral("err-bytes 20000")}).errorText;
        QString expected;
        while (expected.size() < 8192)
            expected += QChar(static_cast<char16_t>(u'a' + expected.size() % 26));
        QCOMPARE(text, expected);
    }

    void aProgramThatWritesNothingYieldsNoText() { QCOMPARE(run({}).errorText, QString()); }

    void standardOutputIsNeverPartOfTheText()
    {
        QCOMPARE(run({QStringLiteral("out hello"), QStringLiteral("err trouble")}).errorText,
                 QStringLiteral("trouble\n"));
    }

    void aFloodOfErrorsNeverBlocksTheProgram()
    {
        const auto result = run({QStringLiteral("err-bytes 50000000"), QStringLiteral("exit 3")});
        QCOMPARE(result.status, 3);
        QCOMPARE(result.errorText.size(), 8192);
    }

    void whatIsNotUtf8IsReplaced()
    {
        QCOMPARE(run({QStringLiteral("err-hex 41FF42")}).errorText, QString::fromUtf8("A\uFFFDB"));
    }

    void aCharacterCutAtTheEndIsReplaced()
    {
        const auto text = run({QStringLiteral("err-bytes 8191"), QStringLiteral("err-hex C3A9")}).errorText;
        QCOMPARE(text.size(), 8192);
        QCOMPARE(text.back(), QChar(QChar::ReplacementCharacter));
    }

    void aProgramMayCloseItsErrorStreamAndRunOn()
    {
        const auto proceed = scratch("proceed");
        auto result = start({QStringLiteral("err before"), QStringLiteral("close-err"),
                             command("touch", scratch("closed")), command("wait", proceed)});
        QTRY_VERIFY(fs::exists(scratch("closed")));
        QCOMPARE(result.wait_for(0s), std::future_status::timeout);
        writeFile(proceed, "");
        QCOMPARE(result.get().errorText, QStringLiteral("before\n"));
    }

    void theExitIsSeenAlthoughAnotherProcessHoldsTheErrorStream()
    {
        const auto proceed = scratch("proceed");
        const auto result =
            run({QStringLiteral("err last words"), command("hold-err", proceed), QStringLiteral("exit 4")});
        QCOMPARE(result.status, 4);
        QCOMPARE(result.errorText, QStringLiteral("last words\n"));
        writeFile(proceed, "");
    }

    void theExitIsSeenAlthoughAnotherProcessKeepsWriting()
    {
        const auto proceed = scratch("proceed");
        QCOMPARE(run({command("chat", proceed), QStringLiteral("exit 5")}).status, 5);
        // It may go on writing into a pipe that nobody reads any more: it is neither ended nor stopped by
        // that.
        writeFile(proceed, "");
        QTRY_VERIFY(fs::exists(scratch("proceed.done")));
    }

    void theCallbackComesOnAnotherThread()
    {
        scriptChild({});
        std::promise<std::thread::id> thread;
        m_launcher->launch(m_app, "/game.z64", false,
                           [&](const LaunchResult&) { thread.set_value(std::this_thread::get_id()); });
        QVERIFY(thread.get_future().get() != std::this_thread::get_id());
    }

    void theEmulatorOutlivesItsLauncher()
    {
        const auto proceed = scratch("proceed");
        const auto done = scratch("done");
        scriptChild({command("wait", proceed), QStringLiteral("err still writing"), command("touch", done)});
        auto ended = std::make_shared<std::promise<LaunchResult>>();
        {
            Launcher shortLived;
            shortLived.launch(m_app, "/game.z64", false,
                              [ended](const LaunchResult& result) { ended->set_value(result); });
        }
        QVERIFY(!fs::exists(done));
        writeFile(proceed, "");
        QCOMPARE(ended->get_future().get().errorText, QStringLiteral("still writing\n"));
        QVERIFY(fs::exists(done));
    }

    void aSecondStartLeavesTheFirstEmulatorAlone()
    {
        const auto proceed = scratch("proceed");
        auto first = start({command("wait", proceed), QStringLiteral("exit 1")});
        const auto firstProcess = m_launcher->process().value().id();
        QCOMPARE(run({QStringLiteral("exit 2")}).status, 2);
        QVERIFY(m_launcher->process().value().id() != firstProcess);
        QCOMPARE(first.wait_for(0s), std::future_status::timeout);
        writeFile(proceed, "");
        QCOMPARE(first.get().status, 1);
    }

    void manyRunsLeaveNoDescriptorThreadOrZombie()
    {
        run({});
        // The test's own watchdog has a thread as well.
        QTRY_COMPARE(threads(), m_threadsAtStart);
        const int before = openDescriptors();
        for (int i = 0; i < 200; ++i)
            QCOMPARE(run({QStringLiteral("exit %1").arg(i)}).status, i);
        QTRY_COMPARE(threads(), m_threadsAtStart);
        QTRY_COMPARE(openDescriptors(), before);
        QCOMPARE(::waitpid(-1, nullptr, WNOHANG), -1);
        QCOMPARE(errno, ECHILD);
    }
};

QTEST_GUILESS_MAIN(LauncherTest)
#include "tst_Launcher.moc"
