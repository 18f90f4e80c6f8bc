// SPDX-License-Identifier: MIT
#include "platform/Places.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

class PlacesFreedesktopTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        qputenv("HOME", "/home/player");
        qunsetenv("XDG_DATA_HOME");
    }

    void homeFolderIsTheUsers() { QCOMPARE(Places::homeFolder(), fs::path("/home/player")); }

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
