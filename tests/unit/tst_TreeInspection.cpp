// SPDX-License-Identifier: MIT
#include "emulator/TreeInspection.h"
#include "errors/AppError.h"
#include "platform/Text.h"
#include "support/Failures.h"
#include "support/Sandbox.h"
#include "support/Unprivileged.h"

#include <QtTest>

#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace cartloom;

class TreeInspectionTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;

    fs::path tree() const { return m_sandbox->scratch() / "tree"; }

    /// The details that the tree is refused with; none when it is accepted.
    std::optional<QString> refusal(const TreeInspection::Bounds& bounds = {}) const
    {
        const auto failure = failureOf<AppError>([&] {
            TreeInspection::inspect(tree(), bounds);
            return 0;
        });
        if (!failure)
            return std::nullopt;
        if (failure->message != QStringLiteral("Could not unpack Ares. The download may be damaged."))
            qFatal("another sentence: %s", failure->what());
        return failure->details;
    }

    void link(const char* name, const fs::path& target) const
    {
        fs::create_directories((tree() / name).parent_path());
        fs::create_symlink(target, tree() / name);
    }

    mode_t modeOf(const char* name) const
    {
        struct stat status = {};
        if (::lstat((tree() / name).c_str(), &status) != 0)
            qFatal("no %s", name);
        return status.st_mode & 07777;
    }

    void setMode(const char* name, mode_t mode) const
    {
        if (::chmod((tree() / name).c_str(), mode) != 0)
            qFatal("cannot change %s", name);
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        fs::create_directories(tree());
    }

    void cleanup()
    {
        // Qt's own removal knows neither such names nor such depths.
        fs::remove_all(tree());
        m_sandbox.reset();
    }

    void frameworkLinksAreAccepted()
    {
        const auto framework = tree() / "ares.app/Contents/Frameworks/MoltenVK.framework";
        writeFile(framework / "Versions/A/MoltenVK", "library");
        fs::create_symlink("A", framework / "Versions/Current");
        fs::create_symlink("Versions/Current/MoltenVK", framework / "MoltenVK");
        fs::create_symlink("../../../Frameworks/./MoltenVK.framework/MoltenVK", framework / "again");
        QCOMPARE(refusal(), std::nullopt);
    }

    void emptyFolderIsAccepted() { QCOMPARE(refusal(), std::nullopt); }

    void linkThatStaysInsideIsAccepted_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("to the top itself") << QStringLiteral("../..");
        QTest::newRow("through a plain file") << QStringLiteral("file/..");
    }

    void linkThatStaysInsideIsAccepted()
    {
        QFETCH(const QString, target);
        writeFile(tree() / "a/b/file", "x");
        link("a/b/link", toPath(target));
        QCOMPARE(refusal(), std::nullopt);
    }

    void linkThatLeadsOutIsRefused_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("38 to the folder above") << QStringLiteral("../../..");
        QTest::newRow("38 after steps that are not there") << QStringLiteral("x/y/../../../../../z");
    }

    void linkThatLeadsOutIsRefused()
    {
        QFETCH(const QString, target);
        link("a/b/link", toPath(target));
        QCOMPARE(refusal(), QStringLiteral("a/b/link: a link that leads out of the folder"));
    }

    void linkOutThroughAnUnreadableFolderIsRefused()
    {
        m_sandbox->giveToEveryone();
        const Unprivileged unprivileged;
        link("closed/b/top", "../..");
        link("0", "closed/b/top/../z");
        fs::permissions(tree() / "closed", fs::perms::none);
        QCOMPARE(refusal(), QStringLiteral("0: a link that leads out of the folder"));
    }

    void pipeIsRefused()
    {
        QCOMPARE(::mkfifo((tree() / "pipe").c_str(), 0600), 0);
        QCOMPARE(refusal(), QStringLiteral("pipe: neither a file nor a folder"));
    }

    void onlySetIdBitsAreDropped()
    {
        writeFile(tree() / "folder/program", "x");
        setMode("folder/program", 06755);
        setMode("folder", 03750);
        QCOMPARE(refusal(), std::nullopt);
        QCOMPARE(modeOf("folder/program"), mode_t(0755));
        QCOMPARE(modeOf("folder"), mode_t(01750));
    }

    void closedFolderIsOpened()
    {
        fs::create_directories(tree() / "closed/inside");
        setMode("closed", 0);
        QCOMPARE(refusal(), std::nullopt);
        QCOMPARE(modeOf("closed"), mode_t(0700));
    }

    void closedTopFolderIsOpened()
    {
        fs::remove(tree());
        m_sandbox->giveToEveryone();
        const Unprivileged unprivileged;
        link("x", "/y");
        fs::permissions(tree(), fs::perms::none);
        QCOMPARE(refusal(), QStringLiteral("x: a link to /y"));
    }

    void missingFolderIsReported()
    {
        fs::remove(tree());
        QCOMPARE(refusal(), QStringLiteral(".: No such file or directory"));
    }

    void entriesAreLimited()
    {
        writeFile(tree() / "folder/one", "1");
        writeFile(tree() / "folder/two", "2");
        QCOMPARE(refusal({3, 1000}), std::nullopt);
        const auto details = refusal({2, 1000});
        QVERIFY(details && details->endsWith(QStringLiteral(": too many files")));
        QVERIFY(details->startsWith(QStringLiteral("folder/")));
    }

    void bytesAreLimited()
    {
        writeSparse(tree() / "one", "1", 600);
        writeSparse(tree() / "two", "2", 400);
        QCOMPARE(refusal({10, 1000}), std::nullopt);
        fs::remove(tree() / "one");
        QCOMPARE(refusal({10, 399}), QStringLiteral("two: too many bytes"));
    }

    void defaultLimitsHold()
    {
        writeSparse(tree() / "huge", "x", 4'000'000'000);
        QCOMPARE(refusal(), std::nullopt);
        writeFile(tree() / "more", "x");
        QVERIFY(refusal().value_or(QString()).endsWith(QStringLiteral(": too many bytes")));
        QCOMPARE(TreeInspection::Bounds().entries, 200'000);
    }

    void nameThatIsNotUtf8IsReported()
    {
        link("\xff\n<b>", "/x");
        QCOMPARE(refusal(), QString(QChar(0xDCFF)) + QStringLiteral("\n<b>: a link to /x"));
    }

    void treeDeeperThanTheLongestPathIsRefused()
    {
        const auto before = fs::current_path();
        fs::current_path(tree());
        const std::string name(200, 'd');
        for (int depth = 0; depth < 30; ++depth) {
            fs::create_directory(name);
            fs::current_path(name);
        }
        fs::current_path(before);
        QVERIFY(refusal().value_or(QString()).endsWith(QStringLiteral(": File name too long")));
    }
};

QTEST_GUILESS_MAIN(TreeInspectionTest)
#include "tst_TreeInspection.moc"
