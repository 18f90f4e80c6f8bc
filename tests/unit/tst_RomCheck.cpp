// SPDX-License-Identifier: MIT
#include "game/AppError.h"
#include "game/RomCheck.h"
#include "support/Failures.h"
#include "support/Sandbox.h"
#include "support/Unprivileged.h"

#include <QtTest>

#include <system_error>

#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

const QByteArray byteSwapped("\x37\x80\x40\x12");
const QByteArray littleEndian("\x40\x12\x37\x80");
const auto notStrict = QStringLiteral("The file does not look like a .z64 Nintendo 64 game (wrong header).");
const auto notLenient =
    QStringLiteral("That file does not look like a Nintendo 64 ROM (.z64 / .v64 / .n64).");

QString wrongSize(qint64 kilobytes)
{
    return QStringLiteral("That file is not the right size for a Nintendo 64 game (%1 KB).").arg(kilobytes);
}

/// What the check says; empty when the file passes.
QString verdict(const fs::path& file, bool strict)
{
    const auto error = failureOf<AppError>([&] {
        RomCheck::validate(file, strict);
        return 0;
    });
    return error ? error->message + error->details : QString();
}

} // namespace

class RomCheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizeAndHeaderDecide_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<QString>("strict");
        QTest::addColumn<QString>("lenient");
        const auto row = [](qint64 size, const char* name, const QByteArray& header, const QString& strict,
                            const QString& lenient) {
            QTest::addRow("%lld %s", static_cast<long long>(size), name)
                << size << header << strict << lenient;
        };
        const QString passes;
        for (const qint64 size : {10'000'000, 16'000'000, 39'999'999, 40'000'000}) {
            row(size, "big-endian", bigEndianHeader, passes, passes);
            row(size, "byte-swapped", byteSwapped, notStrict, passes);
            row(size, "little-endian", littleEndian, notStrict, passes);
            row(size, "none", "none", notStrict, notLenient);
        }
        row(9'999'999, "big-endian", bigEndianHeader, wrongSize(9999), passes);
        row(40'000'001, "big-endian", bigEndianHeader, wrongSize(40000), passes);
        row(8'388'608, "big-endian", bigEndianHeader, wrongSize(8388), passes);
        row(999'999, "big-endian", bigEndianHeader, wrongSize(999), wrongSize(999));
        row(1'000'000, "byte-swapped", byteSwapped, wrongSize(1000), passes);
        row(128'000'000, "little-endian", littleEndian, wrongSize(128'000), passes);
        row(128'000'001, "big-endian", bigEndianHeader, wrongSize(128'000), wrongSize(128'000));
        row(512'000, "none", "none", wrongSize(512), wrongSize(512));
        row(5'000'000'000, "big-endian", bigEndianHeader, wrongSize(5'000'000), wrongSize(5'000'000));
        row(4, "big-endian", bigEndianHeader, wrongSize(0), wrongSize(0));
        row(3, "big-endian cut off", bigEndianHeader.left(3), wrongSize(0), wrongSize(0));
        row(0, "empty", "", wrongSize(0), wrongSize(0));
        row(10'000'000, "last byte wrong", "\x80\x37\x12\x41", notStrict, notLenient);
        row(10'000'000, "first byte wrong", "\x81\x37\x12\x40", notStrict, notLenient);
    }

    void sizeAndHeaderDecide()
    {
        QFETCH(qint64, size);
        QFETCH(QByteArray, header);
        QFETCH(QString, strict);
        QFETCH(QString, lenient);
        const Sandbox sandbox;
        const auto file = sandbox.scratch() / "any name.txt";
        writeSparse(file, header, size);
        QCOMPARE(verdict(file, true), strict);
        QCOMPARE(verdict(file, false), lenient);
        QCOMPARE(fs::file_size(file), static_cast<std::uintmax_t>(size));
    }

    void whatIsNoRegularFileHasNoSize_data()
    {
        QTest::addColumn<QString>("what");
        for (const auto& what : {QStringLiteral("folder"), QStringLiteral("pipe"), QStringLiteral("device")})
            QTest::newRow(qPrintable(what)) << what;
    }

    void whatIsNoRegularFileHasNoSize()
    {
        QFETCH(QString, what);
        const Sandbox sandbox;
        auto file = sandbox.scratch() / "rom.z64";
        if (what == QStringLiteral("folder"))
            fs::create_directory(file);
        else if (what == QStringLiteral("pipe"))
            QCOMPARE(::mkfifo(file.c_str(), 0600), 0);
        else
            file = "/dev/zero";
        QCOMPARE(verdict(file, true), wrongSize(0));
        QCOMPARE(verdict(file, false), wrongSize(0));
    }

    void aLinkIsFollowed()
    {
        const Sandbox sandbox;
        writeSparse(sandbox.scratch() / "rom", bigEndianHeader, 10'000'000);
        fs::create_symlink("rom", sandbox.scratch() / "link");
        QCOMPARE(verdict(sandbox.scratch() / "link", true), QString());
    }

    void aFileThatMayNotBeReadIsTheSystemsOwnError()
    {
        const Sandbox sandbox;
        const auto file = sandbox.scratch() / "rom.z64";
        writeSparse(file, bigEndianHeader, 10'000'000);
        for (const auto& folder : {sandbox.root(), sandbox.scratch()})
            fs::permissions(folder, fs::perms::all);
        fs::permissions(file, fs::perms::none);
        const Unprivileged unprivileged;
        const auto error = failureOf<std::system_error>([&] {
            RomCheck::validate(file, true);
            return 0;
        });
        QVERIFY(error);
        QCOMPARE(error->code().value(), EACCES);
    }

    void aMissingFileIsTheSystemsOwnError_data()
    {
        QTest::addColumn<bool>("dangling");
        QTest::newRow("nothing") << false;
        QTest::newRow("dangling link") << true;
    }

    void aMissingFileIsTheSystemsOwnError()
    {
        QFETCH(bool, dangling);
        const Sandbox sandbox;
        const auto file = sandbox.scratch() / "rom.z64";
        if (dangling)
            fs::create_symlink("nowhere", file);
        for (const bool strict : {true, false}) {
            const auto error = failureOf<std::system_error>([&] {
                RomCheck::validate(file, strict);
                return 0;
            });
            QVERIFY(error);
            QCOMPARE(error->code().value(), ENOENT);
        }
    }
};

QTEST_GUILESS_MAIN(RomCheckTest)
#include "tst_RomCheck.moc"
