// SPDX-License-Identifier: MIT
#include "support/FaultTest.h"

#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/EventLoopWait.h"
#include "support/Snapshot.h"
#include "support/TestOrigins.h"

#include <QtTest>

#include <system_error>

namespace fs = std::filesystem;

namespace cartloom
{

namespace
{

const auto endedAtOnce = QStringLiteral(
    "Ares stopped right away (exit code 0).\n\nIf macOS blocked it, open System Settings, then "
    "Privacy and Security, and click Open Anyway next to ares.");

QString descriptionOf(int code)
{
    switch (code) {
    case -1001:
        return QStringLiteral("The request timed out.");
    case -1002:
        return QStringLiteral("This kind of address is not supported.");
    case -1003:
        return QStringLiteral("The server could not be found.");
    case -1004:
        return QStringLiteral("The connection to the server could not be made.");
    case -1005:
        return QStringLiteral("The network connection was lost.");
    case -1007:
        return QStringLiteral("Too many redirects.");
    case -1011:
        return QStringLiteral("The server's answer could not be understood.");
    case -1015:
        return QStringLiteral("The server's answer is damaged.");
    case -1022:
        return QStringLiteral("The address is not a secure one.");
    case -1103:
        return QStringLiteral("The server's answer is too long.");
    case -1200:
        return QStringLiteral("A secure connection to the server could not be made.");
    case -1202:
        return QStringLiteral("The server's certificate is not trusted.");
    default:
        qFatal("no words for the code %d", code);
    }
}

QString sentenceFor(const QString& step, int code)
{
    switch (code) {
    case -1001:
        return QStringLiteral("The server took too long to answer. Try again in a moment.");
    case -1003:
    case -1004:
    case -1005:
        return QStringLiteral("No internet connection. Check your network and try again.");
    default:
        return step + QStringLiteral(" failed: ") + descriptionOf(code);
    }
}

} // namespace

Failure networkFailure(const QString& step, int code)
{
    return {sentenceFor(step, code),
            QStringLiteral("%1\nNSURLErrorDomain %2\n%3").arg(step).arg(code).arg(descriptionOf(code))};
}

Failure systemFailure(const QString& step, int number)
{
    const auto words = QString::fromStdString(std::generic_category().message(number));
    return {step + QStringLiteral(" failed: ") + words,
            QStringLiteral("%1\nNSPOSIXErrorDomain %2\n%3").arg(step).arg(number).arg(words)};
}

void FaultTest::addRowForEachWait(const char* fault)
{
    QTest::addColumn<Wait>("wait");
    for (const auto& wait : waits)
        QTest::addRow("%s: %s", fault, wait.name) << wait;
}

void FaultTest::arrangeFor(const Wait& wait)
{
    if (wait.isForTheGame())
        installAres();
    else
        saveGame();
    restart();
}

void FaultTest::serveFrom(const Wait& wait, const QUrl& origin)
{
    const QByteArray path = wait.path;
    const QUrl address(origin.toString() + QLatin1String(wait.path));
    if (path == ScriptedSites::latest)
        TestOrigins::setReleaseApi(origin);
    else if (path == ScriptedSites::archive)
        m_sites->answers[ScriptedSites::latest] = httpAnswer(
            200, ScriptedSites::release("v147", m_sites->body(ScriptedSites::archive).size(), address));
    else if (path == ScriptedSites::page)
        TestOrigins::setStore(origin);
    else if (path == ScriptedSites::game)
        m_sites->answers[ScriptedSites::form] = httpAnswer(200, ScriptedSites::link(address));
    else
        m_sites->answers[ScriptedSites::form] = httpAnswer(307, {}, {"Location: " + address.toEncoded()});
}

void FaultTest::remember()
{
    m_before = everyFile();
}

void FaultTest::press()
{
    remember();
    m_model->play();
    QVERIFY(comesToRest());
}

void FaultTest::update()
{
    remember();
    m_model->checkForUpdate();
    QVERIFY(comesTrue([this] { return m_model->updateOffer().has_value(); }));
    m_model->installUpdate(*m_model->updateOffer());
    QVERIFY(comesToRest());
}

void FaultTest::chooseGameFile(const fs::path& file)
{
    m_model->chooseExistingGameFile();
    m_model->openPanel()->confirm(QUrl::fromLocalFile(toText(file)));
}

void FaultTest::chooseROM(const fs::path& file)
{
    m_model->openROM();
    m_model->openPanel()->confirm(QUrl::fromLocalFile(toText(file)));
}

void FaultTest::isAtRestWithoutTraces(const QString& known)
{
    QCOMPARE(m_model->stage(), AppModel::Stage::idle);
    QCOMPARE(m_model->fraction(), std::nullopt);
    QCOMPARE(m_model->detailLine(), QString());
    QVERIFY(!m_model->hasWorkUnderWay());
    QStringList workFolders = Sandbox::storage().filter(QStringLiteral("download-"));
    workFolders.removeAll(known);
    QCOMPARE(workFolders, QStringList());
    QCOMPARE(snapshotOf(temporary()), QStringList());
}

void FaultTest::shows(const Failure& failure, bool ofTheGameDownload)
{
    QCOMPARE(message(), failure.message);
    QCOMPARE(m_model->errorDetails(), failure.details);
    QCOMPARE(m_model->gameDownloadFailed(), ofTheGameDownload);
    QCOMPARE(m_model->notice(), std::nullopt);
    QVERIFY(!m_model->offerExternal().has_value());
    isAtRestWithoutTraces();
}

void FaultTest::nothingChanged()
{
    QCOMPARE(everyFile().join(u'\n'), m_before.join(u'\n'));
    isAtRestWithoutTraces();
}

void FaultTest::nextPressPlays()
{
    m_sites->mend();
    pressPlays();
}

void FaultTest::pressPlays()
{
    scriptChild({});
    m_model->play();
    QVERIFY2(goesThrough(AppModel::Stage::playing), qPrintable(message() + m_model->errorDetails()));
    shows({endedAtOnce, {}});
    QCOMPARE(m_model->setupDone(), true);
    QCOMPARE(readFile(Paths::gameFile()).size(), 10'000'000);
    const QStringList known{QStringLiteral("Ares"), QStringLiteral("Ares-old"),
                            QStringLiteral("Quillet64.z64"), QStringLiteral("ares-version.txt")};
    for (const auto& name : Sandbox::storage())
        QVERIFY2(known.contains(name), qPrintable(name));
}

Failure FaultTest::unusable(const Wait& wait, const QByteArray& body) const
{
    const QByteArray path = wait.path;
    if (path == ScriptedSites::latest)
        return {QStringLiteral("Could not read the Ares release list."),
                QStringLiteral("illegal value (at byte %1)").arg(body.isEmpty() ? 0 : 1)};
    if (path == ScriptedSites::archive)
        return {QStringLiteral("The Ares download is damaged (got %1 bytes, expected %2). Please try again.")
                    .arg(body.size())
                    .arg(m_sites->body(ScriptedSites::archive).size()),
                {}};
    if (path == ScriptedSites::page)
        return {QStringLiteral("The Gamestall page has changed: the security token was not found."), {}};
    if (path == ScriptedSites::form)
        return {QStringLiteral("Gamestall did not return a download link."), QString::fromUtf8(body)};
    return {QStringLiteral("That file is not the right size for a Nintendo 64 game (0 KB)."), {}};
}

void FaultTest::removeStorage()
{
    fs::remove_all(Paths::support());
}

void FaultTest::pressFailsWith(const Wait& wait, const Failure& failure)
{
    press();
    shows(failure, wait.isForTheGame());
    nothingChanged();
    nextPressPlays();
}

QByteArray FaultTest::installedTag()
{
    return readFile(Paths::ares() / "ares.app/tag");
}

QStringList FaultTest::everyFile() const
{
    // The storage folder itself may come into being by any operation.
    const auto storage = toText(Paths::support().lexically_relative(m_sandbox->home()));
    QStringList lines = snapshotOf(m_sandbox->home());
    lines.removeIf([&](const QString& line) {
        return storage.startsWith(line.section(QStringLiteral(": folder"), 0, 0));
    });
    return lines + snapshotOf(outside());
}

void FaultTest::init()
{
    FlowTest::init();
    m_formerTemporary = qgetenv("TMPDIR");
    fs::create_directories(temporary());
    writeFile(outside() / "secret", "nobody's business");
    qputenv("TMPDIR", QByteArray::fromStdString(temporary().native()));
}

void FaultTest::cleanup()
{
    FlowTest::cleanup();
    m_formerTemporary.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", m_formerTemporary);
}

} // namespace cartloom
