// SPDX-License-Identifier: MIT
#include "storage/Paths.h"
#include "support/Checked.h"
#include "support/FaultTest.h"
#include "support/RequestFailures.h"

#include <QtTest>

using namespace cartloom;

namespace
{

/// The failure for a status outside 200 to 299 at a wait.
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

/// Answers with unusual statuses and headers.
class StatusesTest : public FaultTest
{
    Q_OBJECT

private Q_SLOTS:
    void refusalFailsTheStep_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<Wait>("wait");
        for (const int status : {199, 300, 304, 401, 403, 404, 407, 416, 429, 500, 503}) {
            for (const auto& wait : waits)
                QTest::addRow("30 status %d: %s", status, wait.name) << status << wait;
        }
    }

    void refusalFailsTheStep()
    {
        QFETCH(const int, status);
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path] = httpAnswer(status, "<h1>Not now</h1>");
        pressFailsWith(wait, refusal(wait, status, m_sites->url(wait.path)));
    }

    void refusalIsJudgedByItsStatusHoweverLong_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<Wait>("wait");
        for (const int status : {403, 500}) {
            for (const auto& wait : waits)
                QTest::addRow("30 status %d with 9 MiB: %s", status, wait.name) << status << wait;
        }
    }

    void refusalIsJudgedByItsStatusHoweverLong()
    {
        QFETCH(const int, status);
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path] = httpAnswer(status, QByteArray(9 * 1024 * 1024, 'x'));
        pressFailsWith(wait, refusal(wait, status, m_sites->url(wait.path)));
    }

    void anyFinalStatusIsAnAnswer_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("success");
        for (const int status : {200, 201, 204, 205, 206, 299})
            QTest::addRow("%d", status) << status << true;
        for (const int status : {300, 304, 305, 400, 401, 403, 404, 407, 410, 416, 429, 500, 501, 503, 599})
            QTest::addRow("%d", status) << status << false;
    }

    void anyFinalStatusIsAnAnswer()
    {
        QFETCH(const int, status);
        QFETCH(const bool, success);
        const RawServer server(httpAnswer(status));
        const auto response = fetchText(requestFor(server.url()));
        QCOMPARE(response.status, status);
        QCOMPARE(response.isSuccess(), success);
        QCOMPARE(response.body, QByteArray());
    }

    // The body of a refusal may be cut short, and a 304 announces the length of what it leaves out.
    void refusalCutShortKeepsItsStatus_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {304, 404, 500})
            QTest::addRow("%d", status) << status;
    }

    void refusalCutShortKeepsItsStatus()
    {
        QFETCH(const int, status);
        const RawServer server("HTTP/1.1 " + QByteArray::number(status) +
                               " No\r\nContent-Length: 1000\r\n\r\n");
        QCOMPARE(fetchText(requestFor(server.url())).status, status);
    }

    void emptyBodyFailsTheStep_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<Wait>("wait");
        for (const int status : {200, 204, 205}) {
            for (const auto& wait : waits)
                QTest::addRow("31 status %d, empty body: %s", status, wait.name) << status << wait;
        }
    }

    void emptyBodyFailsTheStep()
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
        CHECKED(pressPlays());
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

    void proposedFileNameIsIgnored_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("33 name that leads out") << QByteArray("../../../../outside");
        QTest::newRow("33 absolute name") << QByteArray("/tmp/outside");
        QTest::newRow("33 name of the installed emulator") << QByteArray("Ares");
        QTest::newRow("33 name of a thousand letters") << QByteArray(1000, 'x');
    }

    void proposedFileNameIsIgnored()
    {
        QFETCH(const QByteArray, name);
        const QByteArrayList header{"Content-Disposition: attachment; filename=\"" + name + '"'};
        remember();
        for (const char* const path : {ScriptedSites::archive, ScriptedSites::game})
            m_sites->answers[path] = httpAnswer(200, m_sites->body(path), header);
        CHECKED(pressPlays());
        QCOMPARE(Sandbox::storage(), (QStringList{QStringLiteral("Ares"), QStringLiteral("Quillet64.z64"),
                                                  QStringLiteral("ares-version.txt")}));
        removeStorage();
        nothingChanged();
    }

    void pageOfNearMatchesHasNoMatch_data()
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

    // A search that starts again at each near-match would take longer than press() waits.
    void pageOfNearMatchesHasNoMatch()
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

QTEST_GUILESS_MAIN(StatusesTest)
#include "tst_Statuses.moc"
