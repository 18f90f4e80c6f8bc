// SPDX-License-Identifier: MIT
#include "platform/ArchiveTool.h"

#include <QtTest>

using namespace cartloom;

class ArchiveToolMacOSTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void zipIsUnpackedByDitto()
    {
        const auto tool = ArchiveTool::unpackZip("/a b/ares.zip", "/c d/Ares-new");
        QCOMPARE(tool.program, std::filesystem::path("/usr/bin/ditto"));
        QCOMPARE(tool.arguments, (std::vector<std::string>{"-x", "-k", "/a b/ares.zip", "/c d/Ares-new"}));
    }
};

QTEST_GUILESS_MAIN(ArchiveToolMacOSTest)
#include "tst_ArchiveToolMacOS.moc"
