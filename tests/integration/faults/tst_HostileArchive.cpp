// SPDX-License-Identifier: MIT
#include "ArchiveFaultTest.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/Checked.h"

#include <QtTest>

#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;

/// Archives that try to write outside of their folder, or to be followed out of it.
class HostileArchiveTest : public ArchiveFaultTest
{
    Q_OBJECT

    static QByteArray bytesOf(const fs::path& path) { return QByteArray::fromStdString(path.native()); }

private Q_SLOTS:
    void entryThatLeadsOutIsRefused_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("35 ../x") << QByteArray("../x");
        QTest::newRow("35 ../../x") << QByteArray("../../x");
        QTest::newRow("35 out of the bundle") << QByteArray("ares.app/../../x");
        QTest::newRow("35 the saved game") << QByteArray("../Quillet64.z64");
        QTest::newRow("40 backslashes that lead out") << QByteArray("..\\..\\x");
    }

    void entryThatLeadsOutIsRefused()
    {
        QFETCH(const QByteArray, name);
        isRefused(before({{name, "evil"}}), QStringLiteral("contains '..'"));
    }

    void absoluteNameStaysInside_data()
    {
        QTest::addColumn<QByteArray>("slashes");
        QTest::newRow("36 absolute name") << QByteArray("/");
        QTest::newRow("36 absolute name, several slashes") << QByteArray("///");
    }

    void absoluteNameStaysInside()
    {
        QFETCH(const QByteArray, slashes);
        isTaken(before({{slashes + bytesOf(temporary() / "evil").mid(1), "evil"},
                        {slashes + bytesOf(outside() / "secret").mid(1), "evil"}}));
    }

    void entryThroughALinkIsRefused_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("37 through an absolute link") << QString();
        QTest::newRow("37 through a relative link out") << QStringLiteral("../../../../scratch/outside");
        QTest::newRow("37 through a link that stays inside") << QStringLiteral("Contents");
    }

    void entryThroughALinkIsRefused()
    {
        QFETCH(const QString, target);
        const QByteArray to = target.isEmpty() ? bytesOf(outside()) : target.toUtf8();
        isRefused(before({zipLink("ares.app/way", to), {"ares.app/way/secret", "evil"}}),
                  QStringLiteral("ares.app/way/secret"));
    }

    void linkThatPointsOutsideIsRefused_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QString>("reason");
        const auto leadsOut = QStringLiteral("ares.app/link: a link that leads out of the folder");
        QTest::newRow("38 absolute") << QByteArray("/etc/passwd")
                                     << QStringLiteral("ares.app/link: a link to /etc/passwd");
        QTest::newRow("38 absolute into the tree itself")
            << bytesOf("/") << QStringLiteral("ares.app/link: a link to /");
        QTest::newRow("38 relative, out of the tree") << QByteArray("../../Quillet64.z64") << leadsOut;
        QTest::newRow("38 relative, out and in again") << QByteArray("../../Ares/ares.app") << leadsOut;
        QTest::newRow("38 out through another link") << QByteArray("up/../../x") << leadsOut;
    }

    void linkThatPointsOutsideIsRefused()
    {
        QFETCH(const QByteArray, target);
        QFETCH(const QString, reason);
        isRefused(before({zipLink("ares.app/up", "Contents/.."), zipLink("ares.app/link", target)}), reason);
    }

    void linkThatStaysInsideIsInstalled_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::newRow("38 link that stays inside") << QByteArray("Contents/../Contents/MacOS/ares");
        QTest::newRow("38 link to nowhere inside") << QByteArray("nowhere");
        QTest::newRow("38 link to itself") << QByteArray("link");
    }

    void linkThatStaysInsideIsInstalled()
    {
        QFETCH(const QByteArray, target);
        isTaken(before({zipLink("ares.app/link", target)}));
    }

    /// The tool would also unpack a tar archive, which may hold hard links.
    void hardLinksAreRefused_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("39 hard link to an absolute name") << QString();
        QTest::newRow("39 hard link out of the tree") << QStringLiteral("../Quillet64.z64");
        QTest::newRow("39 hard link that stays inside") << QStringLiteral("ares.app/Contents/MacOS/ares");
    }

    void hardLinksAreRefused()
    {
        QFETCH(const QString, target);
        const QByteArray to = target.isEmpty() ? bytesOf(outside() / "secret") : target.toUtf8();
        CHECKED(isRefused(tarWithHardLink("ares.app/link", to), QStringLiteral("no end")));
        QCOMPARE(fs::hard_link_count(outside() / "secret"), 1U);
        QCOMPARE(fs::hard_link_count(Paths::gameFile()), 1U);
    }

    void oddNameIsInstalledOrRefused_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("refused");
        const QString taken;
        QTest::newRow("40 backslashes") << QByteArray("ares.app\\Contents\\x") << taken;
        QTest::newRow("40 NUL") << QByteArray("ares.app/a\0b", 12) << taken;
        QTest::newRow("40 300 characters")
            << "ares.app/" + QByteArray(300, 'x') << QStringLiteral("File name too long");
        QTest::newRow("40 5,000 characters in short folders")
            << "ares.app/" + QByteArray("x/").repeated(2500) << QStringLiteral("File name too long");
        QTest::newRow("40 not UTF-8") << QByteArray("ares.app/a\xff\xfe") << taken;
        QTest::newRow("40 line feed and escape") << QByteArray("ares.app/a\n\x1b[31m") << taken;
        QTest::newRow("40 no name") << QByteArray() << QStringLiteral("empty or unreadable filename");
    }

    void oddNameIsInstalledOrRefused()
    {
        QFETCH(const QByteArray, name);
        QFETCH(const QString, refused);
        const QByteArray zip = before({{name, "odd"}});
        refused.isEmpty() ? isTaken(zip) : isRefused(zip, refused);
    }

    void duplicateNamesAreInstalled_data()
    {
        QTest::addColumn<QByteArray>("other");
        QTest::newRow("41 the program twice") << QByteArray("ares.app/Contents/MacOS/ares");
        QTest::newRow("41 the program in capitals") << QByteArray("ares.app/Contents/MacOS/ARES");
        QTest::newRow("41 the bundle in capitals") << QByteArray("ARES.APP/Contents/MacOS/ares");
    }

    void duplicateNamesAreInstalled()
    {
        QFETCH(const QByteArray, other);
        isTaken(before({zipProgram(other)}));
    }

    void nameIsNotTakenForAFullDisk_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("92 an entry that says no space") << QByteArray("no space/x");
        QTest::newRow("92 an entry that says what the system says")
            << QByteArray("file: No space left on device");
    }

    void nameIsNotTakenForAFullDisk()
    {
        QFETCH(const QByteArray, name);
        ZipEntry wrong{name, "text"};
        wrong.checksum = 1;
        isRefused(before({wrong}), QString::fromUtf8(name));
    }

private:
    /// A tar archive with a single hard link.
    static QByteArray tarWithHardLink(const QByteArray& name, const QByteArray& target)
    {
        constexpr qsizetype blockSize = 512;
        QByteArray header(blockSize, '\0');
        const auto put = [&](qsizetype at, const QByteArray& bytes) {
            header.replace(at, bytes.size(), bytes);
        };
        put(0, name);
        put(100, "0000644");
        put(124, "00000000000");
        put(136, "00000000000");
        put(148, "        ");
        put(156, "1" + target);
        unsigned sum = 0;
        for (const char byte : header)
            sum += static_cast<unsigned char>(byte);
        put(148, QByteArray::number(sum, 8).rightJustified(6, '0') + '\0');
        return header + QByteArray(2 * blockSize, '\0');
    }
};

QTEST_GUILESS_MAIN(HostileArchiveTest)
#include "tst_HostileArchive.moc"
