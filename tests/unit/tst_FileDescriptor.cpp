// SPDX-License-Identifier: MIT
#include "platform/FileDescriptor.h"
#include "platform/TemporaryFile.h"
#include "support/Failures.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

FileDescriptor anyDescriptor()
{
    return FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

} // namespace

class FileDescriptorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void movedDescriptorIsClosedOnce()
    {
        int number = -1;
        {
            FileDescriptor first = anyDescriptor();
            number = first.get();
            FileDescriptor second(std::move(first));
            QVERIFY(!first.isOpen());
            FileDescriptor third;
            third = std::move(second);
            QCOMPARE(third.get(), number);
            QVERIFY(::fcntl(number, F_GETFD) >= 0);
        }
        QCOMPARE(::fcntl(number, F_GETFD), -1);
    }

    void closeFreesTheDescriptorAndMayBeRepeated()
    {
        FileDescriptor descriptor = anyDescriptor();
        const int number = descriptor.get();
        descriptor.close();
        QCOMPARE(::fcntl(number, F_GETFD), -1);
        QVERIFY(!descriptor.isOpen());
        QCOMPARE(errnoOf([&] { descriptor.close(); }), 0);
    }

    void failedCloseIsReportedOnce()
    {
        FileDescriptor descriptor = anyDescriptor();
        QCOMPARE(::close(descriptor.get()), 0);
        QCOMPARE(errnoOf([&] { descriptor.close(); }), EBADF);
        QVERIFY(!descriptor.isOpen());
        QCOMPARE(errnoOf([&] { descriptor.close(); }), 0);
    }

    void temporaryFileStaysOnlyWhenReleased()
    {
        const Sandbox sandbox;
        fs::path kept;
        {
            const TemporaryFile dropped(sandbox.scratch() / "target");
            TemporaryFile released(sandbox.scratch() / "target");
            QVERIFY(dropped.path() != released.path());
            QCOMPARE(released.path().parent_path(), sandbox.scratch());
            QCOMPARE(entriesOf(sandbox.scratch()), 2);
            kept = released.path();
            released.release();
        }
        QCOMPARE(entriesOf(sandbox.scratch()), 1);
        QVERIFY(fs::exists(kept));
        QCOMPARE(errnoOf([&] { const TemporaryFile none(sandbox.scratch() / "no/target"); }), ENOENT);
    }
};

QTEST_GUILESS_MAIN(FileDescriptorTest)
#include "tst_FileDescriptor.moc"
