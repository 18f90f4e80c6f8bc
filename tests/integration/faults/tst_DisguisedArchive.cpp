// SPDX-License-Identifier: MIT
#include "ArchiveFaultTest.h"
#include "platform/Text.h"
#include "support/StandInTool.h"

#include <QProcess>
#include <QtEndian>
#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

/// Archives of other formats, made to look like a zip.
class DisguisedArchiveTest : public ArchiveFaultTest
{
    Q_OBJECT

    /// An archive of another format with a complete emulator, as the tool itself makes it.
    QByteArray archiveOf(const QByteArray& format) const
    {
        const auto tree = m_sandbox->scratch() / "tree";
        const auto archive = m_sandbox->scratch() / "archive";
        const auto program = tree / "ares.app/Contents/MacOS/ares";
        writeFile(program, zipProgram().contents);
        fs::permissions(program, fs::perms::owner_exec, fs::perm_options::add);
        QProcess tool;
        tool.start(QStringLiteral("bsdtar"),
                   {QStringLiteral("--format"), QString::fromUtf8(format), QStringLiteral("-cf"),
                    toText(archive), QStringLiteral("-C"), toText(tree), QStringLiteral("ares.app")});
        if (!tool.waitForFinished() || tool.exitCode() != 0)
            qFatal("bsdtar: %s", tool.readAllStandardError().constData());
        return readFile(archive);
    }

    /// The bytes with the records of a zip around them: those of a file over their first bytes, the directory
    /// and its end behind them.
    static QByteArray disguised(QByteArray bytes)
    {
        const QByteArray zip = zipOf({{"x", "text"}});
        const auto directory = zip.indexOf("PK\x01\x02");
        return withDirectory(bytes.replace(0, directory, zip.left(directory)), zip.mid(directory));
    }

    /// The bytes with a directory and its end behind them.
    static QByteArray withDirectory(const QByteArray& bytes, QByteArray directory)
    {
        constexpr qsizetype start = 6;
        qToLittleEndian(static_cast<quint32>(bytes.size()), directory.data() + directory.size() - start);
        return bytes + directory;
    }

    static void correctTarChecksum(QByteArray& bytes)
    {
        bytes.replace(148, 8, QByteArray(8, ' '));
        unsigned sum = 0;
        for (const char byte : bytes.first(512))
            sum += static_cast<unsigned char>(byte);
        bytes.replace(148, 7, QByteArray::number(sum, 8).rightJustified(6, '0') + '\0');
    }

private Q_SLOTS:
    void otherFormatIsRefused_data()
    {
        QTest::addColumn<QByteArray>("format");
        for (const auto* const format :
             {"v7tar", "ustar", "pax", "gnutar", "cpio", "newc", "7zip", "iso9660", "xar", "mtree"})
            QTest::addRow("85 %s with an end record", format) << QByteArray(format);
    }

    void otherFormatIsRefused()
    {
        QFETCH(const QByteArray, format);
        isRefused(withDirectory(archiveOf(format), zipOf({})), QStringLiteral("The archive is no zip."));
    }

    /// The tool takes the bytes for the other format, so the disguise is a real one.
    void formatThatBeginsAsAZipIsRefused_data()
    {
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<bool>("isTar");
        QTest::addColumn<QString>("seenAs");
        QTest::newRow("85 iso9660 behind a file")
            << QByteArray("iso9660") << false << QStringLiteral("ISO9660");
        QTest::newRow("85 v7tar with a file's mark as its first name")
            << QByteArray("v7tar") << true << QStringLiteral("tar");
        QTest::newRow("85 ustar with a file's mark as its first name")
            << QByteArray("ustar") << true << QStringLiteral("ustar");
    }

    void formatThatBeginsAsAZipIsRefused()
    {
        QFETCH(const QByteArray, format);
        QFETCH(const bool, isTar);
        QFETCH(const QString, seenAs);
        QByteArray bytes = disguised(archiveOf(format));
        if (isTar)
            correctTarChecksum(bytes);
        const auto archive = m_sandbox->scratch() / "disguised.zip";
        writeFile(archive, bytes);
        QProcess tool;
        tool.start(QStringLiteral("bsdtar"), {QStringLiteral("-tvvf"), toText(archive)});
        QVERIFY(tool.waitForFinished());
        const QString told = QString::fromUtf8(tool.readAllStandardOutput() + tool.readAllStandardError());
        QVERIFY2(told.contains(QStringLiteral("Archive Format: ")) && told.contains(seenAs),
                 qPrintable(told));
        isRefused(bytes, QStringLiteral("The archive is no zip."));
    }

    void noOtherProgramIsStarted_data()
    {
        QTest::addColumn<QByteArray>("magic");
        QTest::newRow("85 lrzip") << QByteArray("LRZI\0\6", 6);
        QTest::newRow("85 lzop") << QByteArray("\x89LZO\0\r\n\x1a\n", 9);
        QTest::newRow("85 grzip") << QByteArray("GRZipII\0\2\4:)", 12);
    }

    void noOtherProgramIsStarted()
    {
        QFETCH(const QByteArray, magic);
        const auto tools = m_sandbox->scratch() / "tools";
        const auto started = m_sandbox->scratch() / "started";
        const StandInTool tool(tools, "PATH=\"$PATH\" exec /usr/bin/bsdtar \"$@\"");
        for (const auto* const program : {"lrzip", "lzop", "grzip"}) {
            writeFile(tools / program,
                      "#!/bin/sh\ntouch '" + QByteArray::fromStdString(started.native()) + "'\n");
            fs::permissions(tools / program, fs::perms::owner_all);
        }
        QByteArray zip = zipOf({zipProgram()});
        CHECKED(isRefused(zip.replace(0, magic.size(), magic), QStringLiteral("The archive is no zip.")));
        QVERIFY(!fs::exists(started));
    }
};

QTEST_GUILESS_MAIN(DisguisedArchiveTest)
#include "tst_DisguisedArchive.moc"
