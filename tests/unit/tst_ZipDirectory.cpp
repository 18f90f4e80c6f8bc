// SPDX-License-Identifier: MIT
#include "emulator/ZipDirectory.h"
#include "errors/AppError.h"
#include "support/AresBundle.h"
#include "support/Failures.h"
#include "support/Sandbox.h"
#include "support/ZipWriter.h"

#include <QtEndian>
#include <QtTest>

#include <ctime>

#include <sys/resource.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

template <typename T>
QByteArray number(T value)
{
    QByteArray bytes(sizeof value, Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

/// The archive with other bytes at a position; from the end if it is negative.
QByteArray with(QByteArray zip, qsizetype at, const QByteArray& bytes)
{
    return zip.replace(at < 0 ? zip.size() + at : at, bytes.size(), bytes);
}

/// Fields of a directory entry and of the end record, by their distance from where these begin.
constexpr qsizetype flags = 8;
constexpr qsizetype unpackedSize = 24;
constexpr qsizetype offset = 42;
constexpr qsizetype endEntries = 8;
constexpr qsizetype endStart = 16;
constexpr qsizetype endRecord = -22;

/// An archive of one stored file "x", whose directory entry has a 64-bit extra field with these numbers in
/// place of the sizes and the offset.
QByteArray zipWithLargeEntry(const QByteArray& numbers)
{
    const QByteArray zip = zipOf({{"x", "text"}});
    const auto body = zip.left(zip.indexOf("PK\x01\x02"));
    QByteArray directory = zip.mid(body.size()).chopped(22);
    const QByteArray extra = number(quint16(7)) + number(quint16(1)) + 'y' + number(quint16(1)) +
                             number(quint16(numbers.size())) + numbers;
    directory = with(with(with(directory, 20, QByteArray(8, '\xff')), offset, QByteArray(4, '\xff')), 30,
                     number(quint16(extra.size())));
    directory += extra;
    return body + directory +
           with(with(zip.right(22), 12, number(quint32(directory.size()))), endStart,
                number(quint32(body.size())));
}

/// The archive with 64-bit end records. What differs is done to the 64-bit record.
QByteArray withLargeEnd(const QByteArray& zip, qsizetype at = 0, const QByteArray& bytes = {})
{
    const auto entries = qFromLittleEndian<quint16>(zip.constData() + zip.size() - 22 + endEntries);
    const auto start = qFromLittleEndian<quint32>(zip.constData() + zip.size() - 22 + endStart);
    const auto position = quint64(zip.size() - 22);
    const QByteArray record = "PK\x06\x06" + number(quint64(44)) + number(quint32(0x002d002d)) +
                              number(quint64(0)) + number(quint64(entries)) + number(quint64(entries)) +
                              number(position - start) + number(quint64(start));
    const QByteArray locator =
        QByteArray("PK\x06\x07") + number(quint32(0)) + number(position) + number(quint32(1));
    return zip.chopped(22) + with(record, at, bytes) + locator +
           with(zip.right(22), endEntries, QByteArray(12, '\xff'));
}

qint64 peakMemory()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return qint64(usage.ru_maxrss) * 1024;
}

} // namespace

class ZipDirectoryTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;

    fs::path archive() const { return m_sandbox->scratch() / "archive.zip"; }

    ZipDirectory read(const QByteArray& zip, const TreeInspection::Bounds& bounds = {}) const
    {
        writeFile(archive(), zip);
        return ZipDirectory::read(archive(), bounds);
    }

    /// The details that the archive is refused with; empty when it is accepted.
    QString refusal(const QByteArray& zip, const TreeInspection::Bounds& bounds = {}) const
    {
        const auto failure = failureOf<AppError>([&] { return read(zip, bounds).entries; });
        if (failure &&
            failure->message != QStringLiteral("Could not unpack Ares. The download may be damaged."))
            qFatal("another sentence: %s", failure->what());
        return failure ? failure->details : QString();
    }

private Q_SLOTS:
    void init() { m_sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    /// Of 2,000 entries with comments of 65,535 bytes each, which are holes in the file. The first test,
    /// before others need more memory.
    void memoryDoesNotGrowWithTheDirectory()
    {
        constexpr quint32 count = 2000;
        constexpr quint16 comment = 65'535;
        const QByteArray zip = zipOf({{"x"}});
        const auto start = zip.indexOf("PK\x01\x02");
        const QByteArray entry = with(zip.mid(start).chopped(22), 32, number(comment));
        writeFile(archive(), zip.left(start));
        QFile file(QString::fromStdString(archive().native()));
        QVERIFY(file.open(QIODevice::ReadWrite));
        for (quint32 i = 0; i < count; ++i) {
            file.seek(start + i * qint64(entry.size() + comment));
            file.write(entry);
        }
        const qint64 size = count * qint64(entry.size() + comment);
        file.seek(start + size);
        file.write(with(with(zip.right(22), endEntries, number(quint16(count)) + number(quint16(count))), 12,
                        number(quint32(size)) + number(quint32(start))));
        file.close();
        const auto before = peakMemory();
        QCOMPARE(ZipDirectory::read(archive()).entries, qint64(count));
        const auto growth = peakMemory() - before;
        qInfo("%lld bytes of growth", static_cast<long long>(growth));
        QVERIFY2(growth < 16'000'000, qPrintable(QString::number(growth)));
    }

    void entriesAndBytesAreAdded_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::addColumn<int>("surplus");
        QTest::addColumn<qint64>("entries");
        QTest::addColumn<qint64>("bytes");
        const QByteArray zip = zipOf({zipFolderEntry("a"), {"a/b", "12345"}, zipZeros("z", 1000)});
        const QByteArray large =
            zipWithLargeEntry(number(quint64(3'000'000'000)) + number(quint64(4)) + number(quint64(0)));
        QTest::newRow("zero bytes") << QByteArray() << 0 << qint64(0) << qint64(0);
        QTest::newRow("no entry") << zipOf({}) << 0 << qint64(0) << qint64(0);
        QTest::newRow("three entries") << zip << 0 << qint64(3) << qint64(1005);
        QTest::newRow("appended bytes")
            << zip + QByteArray(70'000, 'x') << 70'000 << qint64(3) << qint64(1005);
        QTest::newRow("64-bit end records") << withLargeEnd(zip) << 0 << qint64(3) << qint64(1005);
        QTest::newRow("64-bit size") << large << 0 << qint64(1) << qint64(3'000'000'000);
    }

    void entriesAndBytesAreAdded()
    {
        QFETCH(const QByteArray, zip);
        QFETCH(const int, surplus);
        QFETCH(const qint64, entries);
        QFETCH(const qint64, bytes);
        const auto directory = read(zip);
        QCOMPARE(directory.entries, entries);
        QCOMPARE(directory.unpackedBytes, bytes);
        QCOMPARE(directory.archiveBytes, zip.size() - surplus);
    }

    void archiveOfAnArchiverIsAccepted()
    {
        makeAresApp(m_sandbox->scratch() / "tree");
        zipFolder(m_sandbox->scratch() / "tree", archive());
        const auto directory = ZipDirectory::read(archive());
        QCOMPARE(directory.entries, 5);
        QCOMPARE(directory.unpackedBytes,
                 qint64(fs::file_size(SCRIPTED_CHILD)) +
                     qint64(fs::file_size(m_sandbox->scratch() / "tree/ares.app/Contents/Info.plist")));
    }

    void announcedSizesAreLimited_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::addColumn<QString>("reason");
        const auto sized = [](quint64 size) {
            return zipWithLargeEntry(number(size) + number(quint64(4)) + number(quint64(0)));
        };
        ZipEntry large{"a"};
        large.size = 2'000'000'001;
        const auto tooMuch = QStringLiteral("too many bytes");
        QTest::newRow("79 as much as permitted") << sized(4'000'000'000) << QString();
        QTest::newRow("79 one byte too many") << sized(4'000'000'001) << QStringLiteral("x: ") + tooMuch;
        QTest::newRow("79 most that 64 bits hold") << sized(~quint64(0)) << QStringLiteral("x: ") + tooMuch;
        QTest::newRow("79 two entries together")
            << zipOf({large, {"b", {}, 0100644, {}, {}, 2'000'000'000}}) << QStringLiteral("b: ") + tooMuch;
    }

    void announcedSizesAreLimited()
    {
        QFETCH(const QByteArray, zip);
        QFETCH(const QString, reason);
        QCOMPARE(refusal(zip), reason);
    }

    void entriesAreLimited()
    {
        const QByteArray zip = zipOf({{"a"}, {"b"}, {"c"}});
        QCOMPARE(refusal(zip, {3, 0}), QString());
        QCOMPARE(refusal(zip, {2, 0}), QStringLiteral("c: too many files"));
    }

    void damagedDirectoryIsRefused_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::addColumn<QString>("reason");
        const QByteArray zip = zipOf({{"x", "text"}});
        const auto entry = zip.indexOf("PK\x01\x02");
        const auto noEnd = QStringLiteral("The archive has no end.");
        const auto damaged = QStringLiteral("The archive's directory is damaged.");
        const auto noZip = QStringLiteral("The archive is no zip.");
        const auto outside = QStringLiteral("x: outside of the archive");
        const auto noSize = QStringLiteral("x: no size");
        QTest::newRow("another disk") << with(zip, endRecord + 4, "\x01") << noEnd;
        QTest::newRow("entries on another disk")
            << with(zip, endRecord + endEntries, QByteArray(2, '\0')) << noEnd;
        QTest::newRow("directory elsewhere") << with(zip, endRecord + endStart, QByteArray(4, '\0')) << noEnd;
        QTest::newRow("bytes before the archive") << "MZ" + zip << noEnd;
        QTest::newRow("fewer entries than it says")
            << with(zip, endRecord + endEntries, QByteArray("\2\0\2\0", 4))
            << QStringLiteral("The archive has another number of entries than it says.");
        QTest::newRow("no mark of an entry") << with(zip, entry, "XX") << damaged;
        QTest::newRow("name that is too long") << with(zip, entry + 28, "\xff\xff") << damaged;
        QTest::newRow("comment that is too long") << with(zip, entry + 32, "\x01") << damaged;
        QTest::newRow("first bytes") << with(zip, 0, "MZ") << noZip;
        QTest::newRow("encrypted") << with(zip, entry + flags, "\x01") << QStringLiteral("x: encrypted");
        QTest::newRow("file elsewhere") << with(zip, entry + offset, "\x01") << outside;
        QTest::newRow("file beyond the end") << with(zip, entry + offset, "\xfe\xff\xff\x7f") << outside;
        QTest::newRow("file that reaches into the directory") << with(zip, entry + 20, "\x06") << outside;
        QTest::newRow("64-bit offset that overflows")
            << zipWithLargeEntry(number(quint64(4)) + number(quint64(4)) + number(~quint64(0))) << outside;
        QTest::newRow("64-bit size that is missing")
            << with(zip, entry + unpackedSize, QByteArray(4, '\xff')) << noSize;
        QTest::newRow("64-bit offset that is missing")
            << zipWithLargeEntry(number(quint64(4)) + number(quint64(4))) << noSize;
        QTest::newRow("64-bit record without its mark") << withLargeEnd(zip, 0, "XX") << noEnd;
        QTest::newRow("64-bit record of another length") << withLargeEnd(zip, 4, "\x2b") << noEnd;
        QTest::newRow("64-bit record of another disk") << withLargeEnd(zip, 16, "\x01") << noEnd;
        QTest::newRow("64-bit directory of another size") << withLargeEnd(zip, 40, "\x01") << noEnd;
        QTest::newRow("64-bit directory beyond the end")
            << withLargeEnd(zip, 48, QByteArray(8, '\xff')) << noEnd;
        QTest::newRow("end records that differ")
            << with(withLargeEnd(zip), endRecord + endStart, "\1\0\0\0") << noEnd;
    }

    void damagedDirectoryIsRefused()
    {
        QFETCH(const QByteArray, zip);
        QFETCH(const QString, reason);
        QCOMPARE(refusal(zip), reason);
    }

    /// Measured: 0.4 s.
    void largestDirectoryIsReadInBoundedTime()
    {
        std::vector<ZipEntry> entries;
        for (int i = 0; i < 200'000; ++i)
            entries.push_back({QByteArray::number(i)});
        writeFile(archive(),
                  withLargeEnd(zipOf(entries), 24, number(quint64(200'000)) + number(quint64(200'000))));
        const auto before = std::clock();
        QCOMPARE(ZipDirectory::read(archive()).entries, 200'000);
        const double seconds = double(std::clock() - before) / CLOCKS_PER_SEC;
        qInfo("%.3f s of processor time", seconds);
        QVERIFY2(seconds < 5, qPrintable(QString::number(seconds)));
    }
};

QTEST_GUILESS_MAIN(ZipDirectoryTest)
#include "tst_ZipDirectory.moc"
