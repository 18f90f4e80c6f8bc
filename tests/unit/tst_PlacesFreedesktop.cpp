// SPDX-License-Identifier: MIT
#include "platform/Places.h"

#include <QtTest>

#include <pwd.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;

class PlacesFreedesktopTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        qputenv("HOME", "/home/player");
        for (const char* const variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
            qunsetenv(variable);
    }

    void homeFolderIsTheUsers() { QCOMPARE(Places::homeFolder(), fs::path("/home/player")); }

    void unusableHomeIsReplacedByTheRegisteredOne_data()
    {
        QTest::addColumn<QByteArray>("home");
        QTest::newRow("unset") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("93 relative") << QByteArray("player");
        QTest::newRow("93 like an option") << QByteArray("-x");
    }

    void unusableHomeIsReplacedByTheRegisteredOne()
    {
        QFETCH(const QByteArray, home);
        home.isNull() ? qunsetenv("HOME") : qputenv("HOME", home);
        QCOMPARE(Places::homeFolder(), fs::path(::getpwuid(::getuid())->pw_dir));
    }

    void bytesOfPathsAreKept()
    {
        const QByteArray odd("/\xFF\xFE/\xE6\x97");
        const fs::path folder(odd.toStdString());
        qputenv("HOME", odd);
        QCOMPARE(Places::homeFolder(), folder);
        QCOMPARE(Places::preferencesFolder(), folder / ".config");
        for (const char* const variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
            qputenv(variable, odd);
        QCOMPARE(Places::applicationSupportFolders(), std::vector{folder});
        QCOMPARE(Places::preferencesFolder(), folder);
        QCOMPARE(Places::sessionFolder(), folder);
    }

    void sessionFolderIsAbsoluteOrNone()
    {
        qunsetenv("XDG_RUNTIME_DIR");
        QCOMPARE(Places::sessionFolder(), std::nullopt);
        qputenv("XDG_RUNTIME_DIR", "run");
        QCOMPARE(Places::sessionFolder(), std::nullopt);
    }

    void dataLiesInTheConfiguredFolder()
    {
        qputenv("XDG_DATA_HOME", "/data of the player/ä");
        QCOMPARE(Places::applicationSupportFolders(), (std::vector<fs::path>{"/data of the player/ä"}));
    }

    void dataLiesUnderHomeWhenNoUsableFolderIsConfigured_data()
    {
        QTest::addColumn<QByteArray>("configured");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("relative") << QByteArray("data");
        QTest::newRow("unexpanded") << QByteArray("~/data");
    }

    void dataLiesUnderHomeWhenNoUsableFolderIsConfigured()
    {
        QFETCH(QByteArray, configured);
        const std::vector<fs::path> expected{"/home/player/.local/share"};
        QCOMPARE(Places::applicationSupportFolders(), expected);
        qputenv("XDG_DATA_HOME", configured);
        QCOMPARE(Places::applicationSupportFolders(), expected);
    }

    void machineWideApplicationsComeFirst()
    {
        QCOMPARE(Places::applicationFolders(), (std::vector<fs::path>{"/opt", "/home/player/Applications"}));
    }
};

QTEST_GUILESS_MAIN(PlacesFreedesktopTest)
#include "tst_PlacesFreedesktop.moc"
