// SPDX-License-Identifier: MIT
#include "platform/Preferences.h"
#include "support/Sandbox.h"

#include <QSettings>
#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

using Text = std::optional<QString>;

fs::path store(const Sandbox& sandbox)
{
    return sandbox.home() / "config/Cartloom/Cartloom.conf";
}

} // namespace

class PreferencesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void absentKeysAreFalseAndNone()
    {
        const Sandbox sandbox;
        QCOMPARE(Preferences::boolean("fullscreen"), false);
        QCOMPARE(Preferences::text("externalAresPath"), Text());
    }

    void whatIsSetIsReadAndIsInTheUsersStore()
    {
        const Sandbox sandbox;
        Preferences::setBoolean("fullscreen", true);
        Preferences::setText("externalAresPath", QStringLiteral("/a b/ä,\"日\"/ares.app"));
        QCOMPARE(Preferences::boolean("fullscreen"), true);
        QCOMPARE(Preferences::text("externalAresPath"), Text(QStringLiteral("/a b/ä,\"日\"/ares.app")));
        QVERIFY(fs::exists(store(sandbox)));
        Preferences::setBoolean("fullscreen", false);
        QCOMPARE(Preferences::boolean("fullscreen"), false);
    }

    void whatIsRemovedIsAbsentAndTheRestStays()
    {
        const Sandbox sandbox;
        Preferences::setBoolean("fullscreen", true);
        Preferences::setText("externalAresPath", QStringLiteral("/ares.app"));
        Preferences::remove("externalAresPath");
        Preferences::remove("neverThere");
        QCOMPARE(Preferences::text("externalAresPath"), Text());
        QCOMPARE(Preferences::boolean("fullscreen"), true);
    }

    void anEmptyTextIsAbsent()
    {
        const Sandbox sandbox;
        Preferences::setText("externalAresPath", QString());
        QCOMPARE(Preferences::text("externalAresPath"), Text());
    }

    void aStoreThatIsDamagedIsAsGoodAsNone_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("binary") << QByteArray(4096, '\xff');
        QTest::newRow("cut off") << QByteArray("[General]\nfullscr");
        QTest::newRow("other types") << QByteArray(
            "[General]\nfullscreen=@Invalid()\nexternalAresPath=@Invalid()\n");
        QTest::newRow("lists") << QByteArray("[General]\nexternalAresPath=a, b\n");
        QTest::newRow("other texts") << QByteArray("[General]\nfullscreen=banana\n");
        QTest::newRow("bytes, and a number in a variant") << QByteArray(
            "[General]\nfullscreen=@ByteArray(true)\nexternalAresPath=@Variant(\\0\\0\\0\x2\\0\\0\\0\a)\n");
        QTest::newRow("a list of booleans") << QByteArray("[General]\nfullscreen=true, true\n");
        QTest::newRow("broken variant") << QByteArray("[General]\nfullscreen=@Variant(\\0\\0)\n");
    }

    void aStoreThatIsDamagedIsAsGoodAsNone()
    {
        QFETCH(QByteArray, contents);
        const Sandbox sandbox;
        writeFile(store(sandbox), contents);
        QCOMPARE(Preferences::boolean("fullscreen"), false);
        QCOMPARE(Preferences::text("externalAresPath"), Text());
        Preferences::setBoolean("fullscreen", true);
        QCOMPARE(Preferences::boolean("fullscreen"), true);
    }

    void aStoreThatCannotBeWrittenIsNoFailure()
    {
        const Sandbox sandbox;
        writeFile(sandbox.home() / "config/Cartloom", "in the way");
        Preferences::setBoolean("fullscreen", true);
        QCOMPARE(readFile(sandbox.home() / "config/Cartloom"), QByteArray("in the way"));
    }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "tst_Preferences.moc"
