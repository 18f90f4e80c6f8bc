// SPDX-License-Identifier: MIT
#include "platform/Places.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

class PlacesMacOSTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { qputenv("HOME", "/Users/player"); }

    void homeFolderIsTheUsers() { QCOMPARE(Places::homeFolder(), fs::path("/Users/player")); }

    void dataLiesInTheLibraryWhateverOtherSystemsConfigure()
    {
        qputenv("XDG_DATA_HOME", "/elsewhere");
        QCOMPARE(Places::applicationSupportFolders(),
                 (std::vector<fs::path>{"/Users/player/Library/Application Support"}));
    }

    void machineWideApplicationsComeFirst()
    {
        QCOMPARE(Places::applicationFolders(),
                 (std::vector<fs::path>{"/Applications", "/Users/player/Applications"}));
    }
};

QTEST_GUILESS_MAIN(PlacesMacOSTest)
#include "tst_PlacesMacOS.moc"
