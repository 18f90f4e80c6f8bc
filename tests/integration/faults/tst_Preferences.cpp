// SPDX-License-Identifier: MIT
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/FaultTest.h"
#include "support/Snapshot.h"

#include <QtTest>

#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace cartloom;

/// The preference file, usable or not.
class PreferencesTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path store() const { return m_sandbox->home() / "config/Cartloom/Cartloom.conf"; }

private Q_SLOTS:
    void valuesAreReadAsTheyWereSet()
    {
        const auto path = QStringLiteral("/a b/ä,\"日\"/ares.app");
        QCOMPARE(Preferences::boolean("fullscreen"), false);
        QCOMPARE(Preferences::text("externalAresPath"), std::nullopt);
        Preferences::setBoolean("fullscreen", true);
        Preferences::setText("externalAresPath", path);
        QCOMPARE(Preferences::boolean("fullscreen"), true);
        QCOMPARE(Preferences::text("externalAresPath"), path);
        QVERIFY(fs::exists(store()));
        Preferences::setBoolean("fullscreen", false);
        QCOMPARE(Preferences::boolean("fullscreen"), false);
    }

    void intactFileIsRead()
    {
        const auto own = makeAresApp(m_sandbox->scratch() / "own");
        writeFile(store(), "[General]\nexternalAresPath=" + QByteArray::fromStdString(own.native()) +
                               "\nfullscreen=true\n");
        restart();
        QCOMPARE(m_model->fullscreen(), true);
        QCOMPARE(m_model->usingExternalAres(), true);
        QCOMPARE(m_model->locateAres(), own);
    }

    void removedOrEmptyValuesAreAbsent()
    {
        Preferences::setBoolean("fullscreen", true);
        Preferences::setText("externalAresPath", QStringLiteral("/ares.app"));
        Preferences::remove("externalAresPath");
        Preferences::remove("neverThere");
        QCOMPARE(Preferences::text("externalAresPath"), std::nullopt);
        QCOMPARE(Preferences::boolean("fullscreen"), true);
        Preferences::setText("externalAresPath", QString());
        QCOMPARE(Preferences::text("externalAresPath"), std::nullopt);
    }

    void booleansAreReadAsTheSystemDoes_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<bool>("isTrue");
        for (const char* const value :
             {"true", "TRUE", "yes", "YES", "1", "@Variant(\\0\\0\\0\x2\\0\\0\\0\a)"})
            QTest::newRow(value) << QByteArray(value) << true;
        for (const char* const value : {"false", "no", "0", "y", "", "@Variant(\\0\\0\\0\x2\\0\\0\\0\\0)"})
            QTest::addRow("not %s", value) << QByteArray(value) << false;
    }

    void booleansAreReadAsTheSystemDoes()
    {
        QFETCH(const QByteArray, value);
        QFETCH(const bool, isTrue);
        writeFile(store(), "[General]\nfullscreen=" + value + '\n');
        QCOMPARE(Preferences::boolean("fullscreen"), isTrue);
    }

    void damagedFileIsIgnored_data()
    {
        QTest::addColumn<QByteArray>("contents");
        const QByteArray general("[General]\n");
        const QByteArray path = general + "externalAresPath=";
        QTest::newRow("70 empty") << QByteArray();
        QTest::newRow("70 truncated") << QByteArray("[General]\nfullscr");
        QTest::newRow("70 truncated in a value") << path + "\"/tmp/not the who";
        QTest::newRow("70 binary") << QByteArray(4096, '\xff');
        QTest::newRow("70 zeros") << QByteArray(4096, '\0');
        QTest::newRow("70 invalid values") << path + "@Invalid()\nfullscreen=@Invalid()\n";
        QTest::newRow("70 lists") << path + "/tmp, /\nfullscreen=true, true\n";
        QTest::newRow("70 other texts") << general + "fullscreen=banana\n";
        QTest::newRow("70 number in a variant") << path + "@Variant(\\0\\0\\0\x2\\0\\0\\0\a)\n";
        QTest::newRow("70 bytes") << path + "@ByteArray(/tmp)\nfullscreen=@ByteArray(true)\n";
        QTest::newRow("70 numbers") << path + "5\nfullscreen=0\n";
        QTest::newRow("70 broken variants") << path + "@Variant(\\0\\0)\nfullscreen=@Variant(\\0)\n";
        QTest::newRow("70 relative path") << path + "tmp\n";
        QTest::newRow("70 relative path with dots") << path + "../../../../../../tmp\n";
        QTest::newRow("70 address of a file") << path + "file:///tmp\n";
        QTest::newRow("70 address of another machine") << path + "https://example.org/ares.app\n";
        QTest::newRow("70 path that has gone") << path + "/nothing/ares.app\n";
        QTest::newRow("70 path with a null character") << path + "/tmp\\x0/ares.app\n";
        QTest::newRow("70 path of a million letters") << path + '/' + QByteArray(1'000'000, 'x') + '\n';
    }

    void damagedFileIsIgnored()
    {
        QFETCH(const QByteArray, contents);
        writeFile(store(), contents);
        installAres();
        saveGame();
        restart();
        QCOMPARE(m_model->fullscreen(), false);
        QCOMPARE(m_model->usingExternalAres(), false);
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v146"));
        remember();
        CHECKED(pressPlays());
        CHECKED(nothingChanged());
        QCOMPARE(m_sites->asked(), QStringList());
        m_model->setFullscreen(true);
        restart();
        QCOMPARE(m_model->fullscreen(), true);
    }

    void whatIsNoFileIsLeftAlone_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("kind");
        for (const auto* const name : {"Cartloom.conf", "Cartloom.conf.lock"}) {
            for (const auto* const kind : {"pipe", "device", "folder", "endless file"})
                QTest::addRow("91 %s is a %s", name, kind)
                    << QString::fromLatin1(name) << QString::fromLatin1(kind);
        }
    }

    /// A pipe has no writer: whoever opens it waits for good.
    void whatIsNoFileIsLeftAlone()
    {
        QFETCH(const QString, name);
        QFETCH(const QString, kind);
        installAres();
        saveGame();
        const auto file = store().parent_path() / toPath(name);
        fs::create_directories(file.parent_path());
        if (kind == QLatin1String("pipe"))
            QCOMPARE(::mkfifo(file.c_str(), 0600), 0);
        else if (kind == QLatin1String("device"))
            fs::create_symlink("/dev/zero", file);
        else if (kind == QLatin1String("folder"))
            fs::create_directories(file);
        else
            writeSparse(file, "[General]\nfullscreen=true\n", 9'000'000);
        const auto before = snapshotOf(file.parent_path());
        restart();
        QCOMPARE(m_model->fullscreen(), false);
        m_model->setFullscreen(true);
        QCOMPARE(m_model->fullscreen(), true);
        QCOMPARE(snapshotOf(file.parent_path()), before);
        remember();
        CHECKED(pressPlays());
        CHECKED(nothingChanged());
    }

    void unwritableFileIsIgnored_data() { addOnlyRow("70 unwritable"); }

    void unwritableFileIsIgnored()
    {
        installAres();
        saveGame();
        writeFile(m_sandbox->home() / "config/Cartloom", "in the way");
        restart();
        remember();
        m_model->setFullscreen(true);
        QCOMPARE(m_model->fullscreen(), true);
        CHECKED(pressPlays());
        CHECKED(nothingChanged());
        restart();
        QCOMPARE(m_model->fullscreen(), false);
    }

    void chosenFolderWithoutAProgramIsReported_data() { addOnlyRow("70 a folder that is no ares.app"); }

    void chosenFolderWithoutAProgramIsReported()
    {
        Preferences::setText(PreferenceKeys::externalAres, toText(outside()));
        saveGame();
        restart();
        QCOMPARE(m_model->usingExternalAres(), true);
        CHECKED(press());
        CHECKED(shows({QStringLiteral("Could not find the program inside ares.app."), toText(outside())}));
        CHECKED(nothingChanged());
        m_model->reset();
        QCOMPARE(m_model->usingExternalAres(), false);
        nextPressPlays();
    }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "tst_Preferences.moc"
