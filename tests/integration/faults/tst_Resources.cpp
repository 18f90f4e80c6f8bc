// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"
#include "platform/Signals.h"
#include "storage/Paths.h"
#include "support/Checked.h"
#include "support/FaultTest.h"
#include "support/ResultOf.h"

#include <QtTest>

#include <atomic>
#include <limits>

#include <dlfcn.h>
#include <pthread.h>
#include <sys/resource.h>

using namespace cartloom;

namespace
{

constexpr int unlimited = std::numeric_limits<int>::max();
std::atomic<int> threadsLeft = unlimited;

/// A limit on the size of files, for a while.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(qint64 bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit lowered{static_cast<rlim_t>(bytes), m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &lowered);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before = {};
};

} // namespace

/// Interposed: fails once the threads that the test allows have been made.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument)
{
    if (threadsLeft.load() < unlimited && threadsLeft.fetch_sub(1) <= 0)
        return EAGAIN;
    static const auto real =
        reinterpret_cast<decltype(&pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    return real(thread, attributes, start, argument);
}

/// A system that has none left of something.
class ResourcesTest : public FaultTest
{
    Q_OBJECT

    void isReported()
    {
        QVERIFY(m_model->errorMessage().has_value());
        QVERIFY2(message().contains(QStringLiteral(" failed: Resource temporarily unavailable")) ||
                     message() == QStringLiteral("No internet connection. Check your network and try again."),
                 qPrintable(message()));
        QVERIFY(!m_model->errorDetails().isEmpty());
        isAtRestWithoutTraces();
    }

private Q_SLOTS:
    void initTestCase() { Signals::prepare(); }
    void cleanup()
    {
        threadsLeft = unlimited;
        FaultTest::cleanup();
    }

    /// From the first thread of a press on, up to the number with which the press plays.
    void missingThreadIsReported_data() { addOnlyRow("90 no thread left"); }
    void missingThreadIsReported()
    {
        constexpr int plenty = 100;
        QStringList seen;
        for (int count = 0; count < plenty; ++count) {
            removeStorage();
            restart();
            threadsLeft = count;
            m_model->play();
            QVERIFY(comesToRest());
            threadsLeft = unlimited;
            if (message().startsWith(QStringLiteral("Ares stopped right away")))
                break;
            seen.append(message());
            CHECKED(isReported());
            CHECKED(nextPressPlays());
        }
        qInfo("%s", qPrintable(seen.join(u'\n')));
        QVERIFY(seen.size() > 8);
        QVERIFY(seen.size() < plenty);
        QVERIFY(seen.first().startsWith(QStringLiteral("Getting Ares failed")));
        QVERIFY(seen.last().startsWith(QStringLiteral("Starting Ares failed")));
    }

    void commitWithoutAThreadIsMadeUpForLater_data() { addOnlyRow("90 no thread to commit with"); }
    void commitWithoutAThreadIsMadeUpForLater()
    {
        installAres();
        saveGame();
        writeFile(Paths::aresOld() / "ares.app/old", "old");
        threadsLeft = 0;
        resultOf(AresInstaller::discardOldCopy());
        threadsLeft = unlimited;
        QVERIFY(!std::filesystem::exists(Paths::aresOld()));
        QCOMPARE(Sandbox::storage().filter(QStringLiteral("discarded-")).size(), 1);
        std::filesystem::remove_all(Paths::ares());
        restart();
        pressPlays();
    }

    void fileSizeLimitIsReported_data()
    {
        QTest::addColumn<Wait>("wait");
        QTest::addColumn<int>("limit");
        for (const int limit : {0, 10'000}) {
            QTest::addRow("90 files of %d bytes: emulator's download", limit) << waits[1] << limit;
            QTest::addRow("90 files of %d bytes: game's download", limit) << waits[4] << limit;
        }
    }
    void fileSizeLimitIsReported()
    {
        QFETCH(const Wait, wait);
        QFETCH(const int, limit);
        arrangeFor(wait);
        {
            const FileSizeLimit limited(limit);
            CHECKED(press());
        }
        CHECKED(shows(systemFailure(QLatin1String(wait.step), EFBIG), wait.isForTheGame()));
        CHECKED(nothingChanged());
        nextPressPlays();
    }

    void fileSizeLimitEndsTheUnpacking_data() { addOnlyRow("90 file size limit while unpacking"); }
    void fileSizeLimitEndsTheUnpacking()
    {
        const auto archiveSize = m_sites->body(ScriptedSites::archive).size();
        arrangeFor(waits[1]);
        {
            const FileSizeLimit limited(archiveSize);
            CHECKED(press());
        }
        QCOMPARE(message(), QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QVERIFY2(m_model->errorDetails().contains(QStringLiteral("File too large")),
                 qPrintable(m_model->errorDetails()));
        CHECKED(nothingChanged());
        nextPressPlays();
    }

    void fileSizeLimitKeepsTheGameOut_data() { addOnlyRow("90 file size limit while adding the game"); }
    void fileSizeLimitKeepsTheGameOut()
    {
        const auto rom = outside() / "game.z64";
        writeSparse(rom, bigEndianHeader, 10'000'000);
        remember();
        {
            const FileSizeLimit limited(1'000'000);
            chooseGameFile(rom);
        }
        CHECKED(shows(systemFailure(QStringLiteral("Adding the game file"), EFBIG)));
        CHECKED(nothingChanged());
        nextPressPlays();
    }
};

QTEST_GUILESS_MAIN(ResourcesTest)
#include "tst_Resources.moc"
