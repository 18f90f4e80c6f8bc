// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "platform/Text.h"
#include "support/FaultTest.h"

#include <QtTest>

#include <sys/resource.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

QByteArray xml(const QByteArray& dictionary, const QByteArray& type = {})
{
    return "<?xml version=\"1.0\"?>" + type + "<plist version=\"1.0\"><dict>" + dictionary +
           "</dict></plist>";
}

QByteArray named(const QByteArray& name)
{
    return "<key>CFBundleExecutable</key><string>" + name + "</string>";
}

/// A binary property list with the program's name and nothing else.
QByteArray binary(const QByteArray& name)
{
    const QByteArray head("bplist00");
    const QByteArray dictionary("\xd1\x01\x02");
    const QByteArray key("\x5f\x10\x12"
                         "CFBundleExecutable");
    const QByteArray value = QByteArray(1, static_cast<char>(0x50 + name.size())) + name;
    const auto keyAt = head.size() + dictionary.size();
    const auto valueAt = keyAt + key.size();
    const auto offsets =
        QByteArray(1, static_cast<char>(head.size())) + static_cast<char>(keyAt) + static_cast<char>(valueAt);
    QByteArray trailer(32, '\0');
    trailer[6] = 1;
    trailer[7] = 1;
    trailer[15] = 3;
    trailer[31] = static_cast<char>(valueAt + value.size());
    return head + dictionary + key + value + offsets + trailer;
}

} // namespace

/// Property lists in the emulator's bundle.
class FaultsBundleTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] static fs::path list() { return Paths::ares() / "ares.app/Contents/Info.plist"; }
    [[nodiscard]] static fs::path programs() { return Paths::ares() / "ares.app/Contents/MacOS"; }
    [[nodiscard]] fs::path marker() const { return m_sandbox->scratch() / "started"; }

    void arrange(const QByteArray& contents)
    {
        installAres();
        saveGame();
        writeFile(list(), contents);
        restart();
    }

    void isNotFound()
    {
        press();
        shows({QStringLiteral("Could not find the program inside ares.app."),
               toText(Paths::ares() / "ares.app")});
        nothingChanged();
        writeFile(list(), xml(named("ares")));
        nextPressPlays();
    }

private Q_SLOTS:
    void theProgramIsFound_data()
    {
        QTest::addColumn<QByteArray>("contents");
        const QByteArray whole = xml(named("ares"));
        QTest::newRow("76 binary") << binary("ares");
        QTest::newRow("76 binary, truncated") << binary("none").chopped(10);
        QTest::newRow("76 binary, nothing but the head") << QByteArray("bplist00");
        QTest::newRow("76 XML") << whole;
        QTest::newRow("76 truncated") << xml(named("none")).left(70);
        QTest::newRow("76 empty") << QByteArray();
        QTest::newRow("76 zeros") << QByteArray(4096, '\0');
        QTest::newRow("76 nested deeply") << QByteArray("<plist>") + QByteArray("<array>").repeated(100'000);
        QTest::newRow("76 another type") << xml("<key>CFBundleExecutable</key><integer>5</integer>");
    }

    /// A list that cannot be read is as good as none, and the program then has its usual name.
    void theProgramIsFound()
    {
        QFETCH(const QByteArray, contents);
        arrange(contents);
        remember();
        pressPlays();
        nothingChanged();
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void aListOf100Megabytes_data() { addOnlyRow("76 of 100 MB"); }

    void aListOf100Megabytes()
    {
        constexpr qint64 size = 100'000'000;
        rusage before = {};
        rusage after = {};
        arrange({});
        ::getrusage(RUSAGE_SELF, &before);
        writeSparse(list(), xml(named("none")), size);
        pressPlays();
        ::getrusage(RUSAGE_SELF, &after);
        QVERIFY((after.ru_maxrss - before.ru_maxrss) * 1024L < size / 2);
    }

    void aBinaryListIsObeyed_data() { addOnlyRow("76 binary, another program"); }

    void aBinaryListIsObeyed()
    {
        arrange(binary("other"));
        fs::rename(programs() / "ares", programs() / "other");
        pressPlays();
    }

    void entities_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("name");
        QByteArray bomb = "<!DOCTYPE plist [<!ENTITY e0 \"ares\">";
        for (int i = 1; i < 30; ++i)
            bomb += "<!ENTITY e" + QByteArray::number(i) + " \"&e" + QByteArray::number(i - 1) + ";&e" +
                    QByteArray::number(i - 1) + ";\">";
        QTest::newRow("76 entities that grow") << bomb + "]>" << QByteArray("&e29;");
        QTest::newRow("76 entity that reads a file")
            << QByteArray("<!DOCTYPE plist [<!ENTITY f SYSTEM \"%1\">]>") << QByteArray("&f;");
        QTest::newRow("76 entity that is asked for over the network")
            << QByteArray("<!DOCTYPE plist SYSTEM \"%2\">") << QByteArray("ares");
    }

    /// No name can be made out of it. A program stands where the entity would lead, were it read.
    void entities()
    {
        QFETCH(QByteArray, type);
        QFETCH(const QByteArray, name);
        rusage before = {};
        rusage after = {};
        const auto file = outside() / "name";
        writeFile(file, "evil");
        type.replace("%1", "file://" + QByteArray::fromStdString(file.native()));
        type.replace("%2", m_sites->url("/list.dtd").toEncoded());
        ::getrusage(RUSAGE_SELF, &before);
        arrange(xml(named(name), type));
        writeFile(programs() / "evil",
                  "#!/bin/sh\n: > '" + QByteArray::fromStdString(marker().native()) + "'\n");
        fs::permissions(programs() / "evil", fs::perms::owner_all);
        remember();
        pressPlays();
        nothingChanged();
        QVERIFY(!fs::exists(marker()));
        QCOMPARE(m_sites->asked(), QStringList());
        ::getrusage(RUSAGE_SELF, &after);
        QVERIFY((after.ru_maxrss - before.ru_maxrss) * 1024L < 64 * 1024 * 1024);
    }

    void aNameThatLeadsOut_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char* const name :
             {"../../../../../../../scratch/outside/evil", "../MacOS/ares", "..", ".", "/bin/true", "./ares",
              "folder/ares", "ares/", "ares/..", "nothing"})
            QTest::addRow("76 program name %s", name) << QByteArray(name);
    }

    void aNameThatLeadsOut()
    {
        QFETCH(const QByteArray, name);
        const auto evil = outside() / "evil";
        writeFile(evil, "#!/bin/sh\n: > '" + QByteArray::fromStdString(marker().native()) + "'\n");
        fs::permissions(evil, fs::perms::owner_all);
        arrange(xml(named(name)));
        fs::create_directory(programs() / "folder");
        fs::copy_file(programs() / "ares", programs() / "folder/ares");
        if (name.startsWith("../../"))
            QVERIFY(fs::equivalent(programs() / name.toStdString(), evil));
        isNotFound();
        QVERIFY(!fs::exists(marker()));
    }
};

QTEST_GUILESS_MAIN(FaultsBundleTest)
#include "tst_FaultsBundle.moc"
