// SPDX-License-Identifier: MIT
#include "game/AppError.h"
#include "platform/Text.h"
#include "support/Failures.h"
#include "support/LaunchTest.h"

#include <QtTest>

#include <system_error>

namespace fs = std::filesystem;
using namespace cartloom;

class LaunchedProgramTest : public LaunchTest
{
    Q_OBJECT

    void replacePropertyList(const QByteArray& dictionary)
    {
        writeFile(m_app / "Contents/Info.plist",
                  "<plist version=\"1.0\"><dict>" + dictionary + "</dict></plist>");
    }

    std::optional<AppError> launchFailure()
    {
        return failureOf<AppError>([&] {
            m_launcher->launch(m_app, "/game.z64", false,
                               [](const LaunchResult&) { qFatal("an emulator ended that never started"); });
            return 0;
        });
    }

private Q_SLOTS:
    void theProgramIsTheOneThatThePropertyListNames()
    {
        fs::rename(m_app / "Contents/MacOS/ares", m_app / "Contents/MacOS/other");
        replacePropertyList("<key>CFBundleExecutable</key><string>other</string>");
        QCOMPARE(run({QStringLiteral("exit 7")}).status, 7);
    }

    void anUnusableProgramNameLeadsToAres_data()
    {
        QTest::addColumn<QByteArray>("dictionary");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("empty") << QByteArray("<key>CFBundleExecutable</key><string></string>");
        QTest::newRow("not a text") << QByteArray("<key>CFBundleExecutable</key><integer>5</integer>");
    }

    void anUnusableProgramNameLeadsToAres()
    {
        QFETCH(const QByteArray, dictionary);
        replacePropertyList(dictionary);
        QCOMPARE(run({QStringLiteral("exit 7")}).status, 7);
        fs::remove(m_app / "Contents/MacOS/ares");
        QCOMPARE(launchFailure().value().message,
                 QStringLiteral("Could not find the program inside ares.app."));
    }

    void aBundleWithoutAPropertyListStartsAres()
    {
        fs::remove(m_app / "Contents/Info.plist");
        QCOMPARE(run({QStringLiteral("exit 7")}).status, 7);
    }

    void aProgramThatCannotBeFoundIsNamedByItsBundle()
    {
        fs::remove(m_app / "Contents/MacOS/ares");
        const auto failure = launchFailure().value();
        QCOMPARE(failure.message, QStringLiteral("Could not find the program inside ares.app."));
        QCOMPARE(failure.details, toText(m_app));
        QVERIFY(!m_launcher->process());
    }

    void aProgramThatIsNotExecutableCannotBeFound()
    {
        fs::permissions(m_app / "Contents/MacOS/ares", fs::perms::owner_read);
        QVERIFY(launchFailure().has_value());
    }

    void aFolderInPlaceOfTheProgramCannotBeFound()
    {
        fs::remove(m_app / "Contents/MacOS/ares");
        fs::create_directories(m_app / "Contents/MacOS/ares");
        QVERIFY(launchFailure().has_value());
    }

    void aProgramNameNeverLeadsOutOfTheBundle_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("parent") << QByteArray("../../../outside");
        QTest::newRow("absolute") << QByteArray("/bin/true");
        QTest::newRow("below") << QByteArray("folder/ares");
        QTest::newRow("the parent folder itself") << QByteArray("..");
        QTest::newRow("the folder itself") << QByteArray(".");
        QTest::newRow("76 two dots anywhere") << QByteArray("ares..");
    }

    void aProgramNameNeverLeadsOutOfTheBundle()
    {
        QFETCH(const QByteArray, name);
        const auto program = m_app / "Contents/MacOS/ares";
        fs::copy_file(program, m_sandbox->scratch() / "outside");
        fs::create_directories(m_app / "Contents/MacOS/folder");
        fs::copy_file(program, m_app / "Contents/MacOS/folder/ares");
        fs::copy_file(program, m_app / "Contents/MacOS/ares..");
        replacePropertyList("<key>CFBundleExecutable</key><string>" + name + "</string>");
        QVERIFY(launchFailure().has_value());
    }

    void aProgramOfAnUnknownFormatIsTheSystemsOwnError()
    {
        writeFile(m_app / "Contents/MacOS/ares", QByteArray("not a program", 13));
        const auto failure = failureOf<std::system_error>([&] {
            m_launcher->launch(m_app, "/game.z64", false,
                               [](const LaunchResult&) { qFatal("it never started"); });
            return 0;
        });
        QCOMPARE(failure.value().code().value(), ENOEXEC);
        QVERIFY(!m_launcher->process());
    }
};

QTEST_GUILESS_MAIN(LaunchedProgramTest)
#include "tst_LaunchedProgram.moc"
