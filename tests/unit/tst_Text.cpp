// SPDX-License-Identifier: MIT
#include "platform/Text.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

/// Paths as text and as addresses, and back.
class TextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPathComesBack_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("ASCII") << QByteArray("/home/player/a b%20?#");
        QTest::newRow("UTF-8 of all lengths") << QByteArray("/ä/日/😀");
        QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBFx");
        QTest::newRow("93 no UTF-8 at all") << QByteArray("\xFF\xFE");
        QTest::newRow("93 every byte") << [] {
            QByteArray all;
            for (int byte = 1; byte < 256; ++byte)
                all += static_cast<char>(byte);
            return all;
        }();
        QTest::newRow("93 truncated character") << QByteArray("/\xE6\x97/\xC3");
        QTest::newRow("93 too long a form") << QByteArray("/\xC0\xAF/\xE0\x80\xAF");
        QTest::newRow("93 surrogates") << QByteArray("/\xED\xA0\xBD\xED\xB8\x80/\xED\xB2\x80");
        QTest::newRow("93 beyond Unicode") << QByteArray("/\xF4\x90\x80\x80/\xFD");
        QTest::newRow("93 between characters") << QByteArray("/\xFF😀\xFF日\x80ä\xFF");
        QTest::newRow("93 before and after a byte order mark") << QByteArray("\xFF\xEF\xBB\xBF\xFF");
    }

    void everyPathComesBack()
    {
        QFETCH(const QByteArray, path);
        const fs::path file(path.toStdString());
        QCOMPARE(toPath(toText(file)), file);
        QCOMPARE(decodeUtf8(path).has_value(), toText(file).isValidUtf16());
        if (file.is_absolute())
            QCOMPARE(toPath(toUrl(file)), file);
    }

    void otherTextsAreUtf8()
    {
        QCOMPARE(toPath(QStringLiteral("ä😀")), fs::path("ä😀"));
        const auto pair = QString(QChar(0xD83D)) + QChar(0xDC80);
        QCOMPARE(toPath(pair), fs::path("\xF0\x9F\x92\x80"));
        // Only bytes that are never valid on their own are escaped.
        QVERIFY(!toPath(QString(QChar(0xDC2F))).native().ends_with('/'));
    }

    void onlyFilesOfThisComputerHavePaths_data()
    {
        QTest::addColumn<QByteArray>("address");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("web") << QByteArray("https://example.org/game.z64");
        QTest::newRow("no scheme") << QByteArray("/game.z64");
        QTest::newRow("another computer") << QByteArray("file://server/game.z64");
        QTest::newRow("null character") << QByteArray("file:///tmp%00/game.z64");
        QTest::newRow("93 relative, like an option") << QByteArray("file:-x");
        QTest::newRow("93 nothing") << QByteArray("file:");
    }

    void onlyFilesOfThisComputerHavePaths()
    {
        QFETCH(const QByteArray, address);
        QCOMPARE(toPath(QUrl::fromEncoded(address)), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TextTest)
#include "tst_Text.moc"
