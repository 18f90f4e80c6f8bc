// SPDX-License-Identifier: MIT
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/BinaryList.h"
#include "support/Checked.h"
#include "support/FaultTest.h"

#include <QtTest>

#include <sys/resource.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

const char* const key = "CFBundleExecutable";

QByteArray xml(const QByteArray& contents, const QByteArray& type = {})
{
    return "<?xml version=\"1.0\"?>" + type + "<plist version=\"1.0\">" + contents + "</plist>";
}

QByteArray entry(const QByteArray& value)
{
    return "<dict><key>CFBundleExecutable</key>" + value + "</dict>";
}

QByteArray named(const QByteArray& name, const QByteArray& type = {})
{
    return xml(entry("<string>" + name + "</string>"), type);
}

QByteArray binary(const QByteArray& value)
{
    return BinaryList::of({BinaryList::dictionary({1, 2, 3, 4}), BinaryList::text("Other"),
                           BinaryList::text(key), BinaryList::array({1}), value});
}

QByteArray nested(int levels, const QByteArray& after = {})
{
    return xml("<dict><key>A</key>" + QByteArray("<array>").repeated(levels) +
               QByteArray("</array>").repeated(levels) + after + "</dict>");
}

/// The most memory that this process has used so far, in bytes.
qint64 peakMemory()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return qint64(usage.ru_maxrss) * 1024;
}

void makeProgram(const fs::path& path, const QByteArray& command)
{
    writeFile(path, "#!/bin/sh\n" + command);
    fs::permissions(path, fs::perms::owner_all);
}

} // namespace

/// The program that the bundle's property list names.
class BundleTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] static fs::path list() { return Paths::ares() / "ares.app/Contents/Info.plist"; }
    [[nodiscard]] static fs::path programs() { return Paths::ares() / "ares.app/Contents/MacOS"; }
    [[nodiscard]] fs::path marker() const { return m_sandbox->scratch() / "started"; }
    [[nodiscard]] QByteArray markStart() const
    {
        return ": > '" + QByteArray::fromStdString(marker().native()) + "'\n";
    }

    void arrange(const QByteArray& contents)
    {
        installAres();
        saveGame();
        writeFile(list(), contents);
        restart();
    }

    /// A press plays, changes nothing and asks no server.
    void isPlayed()
    {
        remember();
        CHECKED(pressPlays());
        CHECKED(nothingChanged());
        QCOMPARE(m_sites->asked(), QStringList());
    }

private Q_SLOTS:
    void namedProgramIsStarted_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QByteArray>("program");
        QTest::newRow("76 XML") << named("other") << QByteArray("other");
        QTest::newRow("76 XML, among other keys")
            << xml("<dict><key>A</key><array><true/></array><key>CFBundleExecutable</key><string>other</"
                   "string>"
                   "<key>B</key><integer>5</integer></dict>")
            << QByteArray("other");
        QTest::newRow("76 XML, standard entities") << named("a&amp;b &lt;c&gt;") << QByteArray("a&b <c>");
        QTest::newRow("76 XML, not ASCII") << named("ä日") << QByteArray("ä日");
        QTest::newRow("76 binary") << binary(BinaryList::text("other")) << QByteArray("other");
        QTest::newRow("76 binary, not ASCII")
            << binary(BinaryList::utf16(QStringLiteral("ä日"))) << QByteArray("ä日");
        QTest::newRow("77 binary, with 2^40 strings") << BinaryList::bomb(40, "other") << QByteArray("other");
    }

    void namedProgramIsStarted()
    {
        QFETCH(const QByteArray, contents);
        QFETCH(const QByteArray, program);
        arrange(contents);
        fs::rename(programs() / "ares", programs() / program.toStdString());
        isPlayed();
    }

    void programIsAresIfNoneIsNamed_data()
    {
        QTest::addColumn<QByteArray>("contents");
        const QByteArray whole = named("none");
        QTest::newRow("76 empty file") << QByteArray();
        QTest::newRow("76 words") << QByteArray("not a property list");
        QTest::newRow("76 zeros") << QByteArray(4096, '\0');
        QTest::newRow("76 truncated") << whole.left(whole.indexOf("none") + 2);
        QTest::newRow("76 binary, truncated") << binary(BinaryList::text("none")).chopped(10);
        QTest::newRow("76 binary, header only") << QByteArray("bplist00");
        QTest::newRow("76 array at the top") << xml("<array><string>none</string></array>");
        QTest::newRow("76 string at the top") << xml("<string>none</string>");
        QTest::newRow("76 empty dictionary") << xml("<dict></dict>");
        QTest::newRow("76 empty name") << named("");
        QTest::newRow("76 key in lower case") << named("none").replace(key, "cfbundleexecutable");
        QTest::newRow("76 key one level down")
            << xml("<dict><key>A</key>" + entry("<string>none</string>") + "</dict>");
        for (const char* const value :
             {"<integer>5</integer>", "<true/>", "<array/>", "<dict/>", "<data>YQ==</data>"})
            QTest::addRow("76 value %s", value) << xml(entry(value));
        QTest::newRow("76 longer than 1 MiB") << whole + QByteArray(1024 * 1024, ' ');
        QTest::newRow("77 140,000 nested arrays, not closed") << xml(QByteArray("<array>").repeated(140'000));
        QTest::newRow("77 name after 60,000 nested arrays")
            << nested(60'000, "<key>CFBundleExecutable</key><string>none</string>");
    }

    void programIsAresIfNoneIsNamed()
    {
        QFETCH(const QByteArray, contents);
        arrange(contents);
        isPlayed();
    }

    void unreadableListIsIgnored_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("76 missing") << QString();
        QTest::newRow("76 a folder") << QStringLiteral("/");
        QTest::newRow("76 a device") << QStringLiteral("/dev/zero");
    }

    void unreadableListIsIgnored()
    {
        QFETCH(const QString, target);
        arrange({});
        fs::remove(list());
        if (!target.isEmpty())
            fs::create_symlink(toPath(target), list());
        isPlayed();
    }

    void longListIsNotReadIntoMemory_data() { addOnlyRow("76 of 100 MB"); }

    void longListIsNotReadIntoMemory()
    {
        constexpr qint64 size = 100'000'000;
        arrange({});
        const auto before = peakMemory();
        writeSparse(list(), named("none"), size);
        CHECKED(isPlayed());
        QVERIFY(peakMemory() - before < size / 2);
    }

    void entitiesAreNotExpanded_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("name");
        QByteArray bomb = "<!DOCTYPE plist [<!ENTITY e0 \"ares\">";
        for (int i = 1; i < 30; ++i)
            bomb += QByteArrayLiteral("<!ENTITY e%1 \"&e%2;&e%2;\">")
                        .replace("%1", QByteArray::number(i))
                        .replace("%2", QByteArray::number(i - 1));
        QTest::newRow("76 entities that grow") << bomb + "]>" << QByteArray("&e29;");
        QTest::newRow("76 entity that reads a file")
            << QByteArray("<!DOCTYPE plist [<!ENTITY f SYSTEM \"%1\">]>") << QByteArray("&f;");
        QTest::newRow("76 entity on a server")
            << QByteArray("<!DOCTYPE plist SYSTEM \"%2\">") << QByteArray("ares");
    }

    /// An expanded entity would name the program that writes the marker.
    void entitiesAreNotExpanded()
    {
        QFETCH(QByteArray, type);
        QFETCH(const QByteArray, name);
        const auto file = outside() / "name";
        writeFile(file, "evil");
        type.replace("%1", "file://" + QByteArray::fromStdString(file.native()));
        type.replace("%2", m_sites->url("/list.dtd").toEncoded());
        arrange(named(name, type));
        makeProgram(programs() / "evil", markStart());
        const auto before = peakMemory();
        CHECKED(isPlayed());
        QVERIFY(!fs::exists(marker()));
        QVERIFY(peakMemory() - before < 64 * 1024 * 1024);
    }

    void unusableNameIsReported_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char* const name : {"../../../../../../../scratch/outside/evil", "../MacOS/ares",
                                       "../outside", "..", ".", "/bin/true", "./ares", "folder",
                                       "folder/ares", "ares/", "ares/..", "ares..", "nothing", "notes"})
            QTest::addRow("76 program name %s", name) << QByteArray(name);
        QTest::newRow("76 program name with a NUL at the end") << QByteArray("ares\0", 5);
        QTest::newRow("76 program name with a NUL within it") << QByteArray("ares\0.png", 9);
        QTest::newRow("76 program name of a NUL") << QByteArray("\0", 1);
    }

    /// Each name leads to a program, or to something that is none.
    void unusableNameIsReported()
    {
        QFETCH(const QByteArray, name);
        // XML cannot hold a NUL.
        arrange(name.contains('\0') ? binary(BinaryList::text(name)) : named(name));
        makeProgram(outside() / "evil", markStart());
        for (const char* const program : {"ares..", "folder/ares", "../outside"})
            makeProgram(programs() / program, markStart());
        writeFile(programs() / "notes", "not executable");
        if (name.startsWith("../../"))
            QVERIFY(fs::equivalent(programs() / name.toStdString(), outside() / "evil"));
        CHECKED(press());
        CHECKED(shows({QStringLiteral("Could not find the program inside ares.app."),
                       toText(Paths::ares() / "ares.app")}));
        CHECKED(nothingChanged());
        QVERIFY(!fs::exists(marker()));
        writeFile(list(), named("ares"));
        nextPressPlays();
    }

    void updateWithARefusedListIsRolledBack_data() { addOnlyRow("77 update with 60,000 nested arrays"); }

    void updateWithARefusedListIsRolledBack()
    {
        installAres("v146");
        fs::rename(Paths::ares(), Paths::aresOld());
        installAres("v147");
        fs::rename(programs() / "ares", programs() / "other");
        writeFile(list(), nested(60'000));
        saveGame();
        restart();
        CHECKED(press());
        CHECKED(shows({QStringLiteral(
                           "Could not find the program inside ares.app.\n\nThe new Ares did not work, so the "
                           "previous version was put back."),
                       toText(Paths::ares() / "ares.app")}));
        QCOMPARE(installedTag(), QByteArray("v146"));
        nextPressPlays();
    }
};

QTEST_GUILESS_MAIN(BundleTest)
#include "tst_Bundle.moc"
