// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/EventLoopWait.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <atomic>
#include <thread>

#include <dlfcn.h>
#include <unistd.h>

using namespace cartloom;

namespace
{

const auto mainThread = std::this_thread::get_id();
std::atomic<int> deletedByMainThread = 0;
std::atomic<int> deletedByOthers = 0;

} // namespace

/// Interposed: shows who deletes.
extern "C" int unlinkat(int folder, const char* name, int flags) noexcept
{
    ++(std::this_thread::get_id() == mainThread ? deletedByMainThread : deletedByOthers);
    static const auto real = reinterpret_cast<decltype(&unlinkat)>(::dlsym(RTLD_NEXT, "unlinkat"));
    return real(folder, name, flags);
}

class CommitTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oldCopyIsDeletedByAWorker_data()
    {
        QTest::addColumn<int>("files");
        QTest::newRow("88 many files to delete") << 1000;
    }
    void oldCopyIsDeletedByAWorker()
    {
        QFETCH(const int, files);
        const Sandbox sandbox;
        makeAresApp(Paths::ares());
        for (int i = 0; i < files; ++i)
            writeFile(Paths::aresOld() / "ares.app" / std::to_string(i), {});
        deletedByMainThread = 0;
        const auto committed = AresInstaller::discardOldCopy();
        QVERIFY(!std::filesystem::exists(Paths::aresOld()));
        QVERIFY(comesTrue([&] { return committed.isReady(); }));
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("Ares")});
        QVERIFY(deletedByOthers >= files);
        QCOMPARE(deletedByMainThread.load(), 0);
    }
};

QTEST_GUILESS_MAIN(CommitTest)
#include "tst_Commit.moc"
