// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "support/FaultTest.h"
#include "support/InterimStatus.h"

#include <QtTest>

using namespace cartloom;

namespace
{

/// How a status outside 200 to 299 is told at a wait.
Failure refusal(const Wait& wait, int status, const QUrl& address)
{
    const QByteArray path = wait.path;
    if (path == ScriptedSites::latest)
        return {QStringLiteral("GitHub answered with error %1 when asking for the latest Ares.").arg(status),
                {}};
    if (path == ScriptedSites::page)
        return {QStringLiteral("The Gamestall page answered with error %1.").arg(status), {}};
    if (path == ScriptedSites::form)
        return {QStringLiteral("Gamestall refused the download request (error %1).").arg(status), {}};
    return {QStringLiteral("The server answered with error %1.").arg(status),
            QString::fromLatin1(address.toEncoded())};
}

} // namespace

/// Answers by their status and their headers.
class FaultsStatusesTest : public FaultTest
{
    Q_OBJECT

private Q_SLOTS:
    void aRefusal_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<Wait>("wait");
        for (const int status : {199, 300, 304, 401, 403, 404, 407, 416, 429, 500, 503}) {
            for (const auto& wait : waits)
                QTest::addRow("30 status %d: %s", status, wait.name) << status << wait;
        }
    }

    void aRefusal()
    {
        QFETCH(const int, status);
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path] = httpAnswer(status, "<h1>Not now</h1>");
        // What another answer should follow, and nothing does, was no answer.
        const bool isFinal = status >= 200 || !interimAnswersArePassedOver;
        pressFailsWith(wait, isFinal ? refusal(wait, status, m_sites->url(wait.path))
                                     : networkFailure(QString::fromLatin1(wait.step), -1005));
    }

    void nothingAtAll_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<Wait>("wait");
        for (const int status : {200, 204, 205}) {
            for (const auto& wait : waits)
                QTest::addRow("31 status %d, empty body: %s", status, wait.name) << status << wait;
        }
    }

    void nothingAtAll()
    {
        QFETCH(const int, status);
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        const Failure failure = unusable(wait, {});
        m_sites->answers[wait.path] = httpAnswer(status);
        pressFailsWith(wait, failure);
    }

    void cookiesOfTheStoreReachPageAndFormOnly()
    {
        const QByteArrayList cookie{"Set-Cookie: session=secret; Path=/"};
        m_sites->answers[ScriptedSites::latest] =
            httpAnswer(200, m_sites->body(ScriptedSites::latest), cookie);
        m_sites->answers[ScriptedSites::page] = httpAnswer(200, m_sites->body(ScriptedSites::page), cookie);
        m_sites->answers[ScriptedSites::form] = httpAnswer(200, m_sites->body(ScriptedSites::form), cookie);
        pressPlays();
        QStringList withCookie;
        for (const auto& request : m_sites->requests()) {
            if (!request.header("Cookie").isNull())
                withCookie.append(QString::fromLatin1(request.path + ' ' + request.header("Cookie")));
        }
        QCOMPARE(withCookie,
                 QStringList{QString::fromLatin1(ScriptedSites::form) + QStringLiteral(" session=secret")});
        QCOMPARE(m_sites->asked().size(), 5);
    }

    void cookiesOfTheStoreReachPageAndFormOnly_data()
    {
        addOnlyRow("32 store cookies reach page and form only");
    }

    void aHostileNameForTheFile_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("33 name that leads out") << QByteArray("../../../../outside");
        QTest::newRow("33 absolute name") << QByteArray("/tmp/outside");
        QTest::newRow("33 name of the installed emulator") << QByteArray("Ares");
        QTest::newRow("33 name of a thousand letters") << QByteArray(1000, 'x');
    }

    void aHostileNameForTheFile()
    {
        QFETCH(const QByteArray, name);
        const QByteArrayList header{"Content-Disposition: attachment; filename=\"" + name + '"'};
        remember();
        for (const char* const path : {ScriptedSites::archive, ScriptedSites::game})
            m_sites->answers[path] = httpAnswer(200, m_sites->body(path), header);
        pressPlays();
        QCOMPARE(Sandbox::storage(), (QStringList{QStringLiteral("Ares"), QStringLiteral("Quillet64.z64"),
                                                  QStringLiteral("ares-version.txt")}));
        removeStorage();
        nothingChanged();
    }

    void aPageOfNearMatches_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<QByteArray>("piece");
        QTest::addColumn<QString>("missing");
        const auto token = QStringLiteral("security token");
        const auto file = QStringLiteral("file Quillet64.z64");
        const QByteArray good("<input name=\"csrf_token\" value=\"t\">");
        QTest::newRow("34 token without a value")
            << QByteArray() << QByteArray("name=\"csrf_token\" ") << token;
        QTest::newRow("34 value that never ends")
            << QByteArray("name=\"csrf_token\" value=\"") << QByteArray("x") << token;
        QTest::newRow("34 value before another name")
            << QByteArray() << QByteArray("value=\"x\" name=\"csrf_toke\" ") << token;
        QTest::newRow("34 value before blanks") << QByteArray("value=\"x\"") << QByteArray(" ") << token;
        QTest::newRow("34 many values before blanks")
            << QByteArray() << "value=\"x\"" + QByteArray(1000, ' ') << token;
        QTest::newRow("34 id that never ends") << good + "data-upload_id=\"" << QByteArray("1") << file;
        QTest::newRow("34 ids without digits") << good << QByteArray("data-upload_id=\"x\" ") << file;
        QTest::newRow("34 ids of other files") << good << QByteArray("data-upload_id=\"1\" ") << file;
        QTest::newRow("34 names that are almost the file's")
            << good + "data-upload_id=\"1\" data-upload_id=\"2\"" << QByteArray("Quillet64.z6") << file;
    }

    /// The patterns are through with it long before the wait for the end is given up, which a search that
    /// begins anew at each near-match would not be.
    void aPageOfNearMatches()
    {
        QFETCH(const QByteArray, head);
        QFETCH(const QByteArray, piece);
        QFETCH(const QString, missing);
        constexpr qsizetype length = 5'000'000;
        arrangeFor(waits[2]);
        m_sites->answers[ScriptedSites::page] = httpAnswer(200, head + piece.repeated(length / piece.size()));
        pressFailsWith(
            waits[2],
            {QStringLiteral("The Gamestall page has changed: the %1 was not found.").arg(missing), {}});
    }
};

QTEST_GUILESS_MAIN(FaultsStatusesTest)
#include "tst_FaultsStatuses.moc"
