// SPDX-License-Identifier: MIT
#include "emulator/Bundle.h"
#include "support/Sandbox.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

/// A bundle with two programs in their place, and others where none may be started from.
fs::path makeBundle(const fs::path& folder)
{
    const fs::path app = folder / "ares.app";
    for (const auto* const program :
         {"Contents/MacOS/ares", "Contents/MacOS/other", "Contents/MacOS/folder/ares",
          "Contents/MacOS/ares..", "Contents/outside"}) {
        writeFile(app / program, "#!/bin/sh\n");
        fs::permissions(app / program, fs::perms::owner_all);
    }
    writeFile(app / "Contents/MacOS/notes", "not a program\n");
    return app;
}

} // namespace

class BundleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theProgramIsAFileOfTheFolderForPrograms_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("program");
        const QByteArray none;
        QTest::newRow("another name") << QByteArray("other") << QByteArray("other");
        QTest::newRow("no name") << QByteArray() << QByteArray("ares");
        QTest::newRow("nothing of that name") << QByteArray("missing") << none;
        QTest::newRow("not executable") << QByteArray("notes") << none;
        QTest::newRow("a folder") << QByteArray("folder") << none;
        QTest::newRow("in a folder") << QByteArray("folder/ares") << none;
        QTest::newRow("outside") << QByteArray("../outside") << none;
        QTest::newRow("the folder itself") << QByteArray(".") << none;
        QTest::newRow("the folder above") << QByteArray("..") << none;
        QTest::newRow("absolute") << QByteArray("/bin/sh") << none;
        QTest::newRow("two dots in it") << QByteArray("ares..") << none;
        QTest::newRow("a NUL behind it") << QByteArray("other\0", 6) << none;
        QTest::newRow("a NUL and more behind it") << QByteArray("ares\0.png", 9) << none;
        QTest::newRow("a NUL alone") << QByteArray("\0", 1) << none;
    }

    void theProgramIsAFileOfTheFolderForPrograms()
    {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, program);
        const Sandbox sandbox;
        const fs::path app = makeBundle(sandbox.scratch());
        writeFile(app / "Contents/Info.plist",
                  "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>" + name +
                      "</string></dict></plist>");
        const auto found = Bundle::executable(app);
        QCOMPARE(found.has_value(), !program.isNull());
        if (found)
            QCOMPARE(*found, app / "Contents/MacOS" / program.toStdString());
    }

    void withoutAListItIsAres()
    {
        const Sandbox sandbox;
        const fs::path app = makeBundle(sandbox.scratch());
        QCOMPARE(Bundle::executable(app), std::optional(app / "Contents/MacOS/ares"));
    }
};

QTEST_GUILESS_MAIN(BundleTest)
#include "tst_Bundle.moc"
