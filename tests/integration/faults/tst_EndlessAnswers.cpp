// SPDX-License-Identifier: MIT
#include "support/Checked.h"
#include "support/Download.h"
#include "support/FaultTest.h"
#include "support/ProxyInForce.h"
#include "support/RequestFailures.h"
#include "support/ResourceUse.h"
#include "support/TestCertificates.h"

#include <QtTest>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

/// The server ends there, so that a missing limit fails the test.
constexpr qint64 serverEnd = 64 * 1024 * 1024;

const QByteArray ok("HTTP/1.1 200 OK\r\n");
const QByteArray chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
const QByteArray refused("HTTP/1.1 407 No\r\n");

constexpr int lost = -1005;
constexpr int unreadable = -1011;

enum class Wire { plain, tls, tunnel };

/// An answer that begins well and then repeats itself.
struct Endless
{
    const char* name;
    QByteArray beginning;
    QByteArray block;
    int code;
};

/// The heads that a server and a proxy may both send. libcurl itself limits a line.
std::vector<Endless> heads(int codeOfALine)
{
    return {
        {"status line", "HTTP/1.1 200 ", "x", codeOfALine},
        {"header line", ok + "X-Long: ", "x", codeOfALine},
        {"headers", ok, "X-Y: z\r\n", unreadable},
        {"empty headers", ok, "a:\r\n", unreadable},
        {"folded header", ok + "X-Y: z\r\n", " x\r\n", unreadable},
        {"headers of a refusal", refused, "X-Y: z\r\n", unreadable},
    };
}

const std::vector<Endless> others{
    {"chunk size", chunked, "0", lost},
    {"chunk extension", chunked + "5;", "x", unreadable},
    {"extension of a later chunk", chunked + "5\r\nhello\r\n5;", "x", unreadable},
    {"trailer", chunked + "0\r\nX-Long: ", "x", lost},
    {"trailers", chunked + "0\r\n", "X-Y: z\r\n", unreadable},
    {"100", {}, "HTTP/1.1 100 Continue\r\n\r\n", unreadable},
    {"102", {}, "HTTP/1.1 102 Processing\r\n\r\n", unreadable},
    {"103", {}, "HTTP/1.1 103 Early Hints\r\nLink: </x>\r\n\r\n", unreadable},
};

const std::vector<Endless> proxys{
    {"body of a refusal", refused + "Content-Length: 9999999999\r\n\r\n", "x", lost},
    {"chunks of a refusal", refused + "Transfer-Encoding: chunked\r\n\r\n", "1\r\nx\r\n", lost},
    {"interim answers", {}, "HTTP/1.1 100 Continue\r\n\r\n", lost},
};

void sendEndlessly(RawConnection& connection, const Endless& answer)
{
    constexpr qsizetype blockBytes = 64 * 1024;
    connection.send(answer.beginning);
    connection.sendEndlessly(answer.block.repeated(blockBytes / answer.block.size()), serverEnd);
}

} // namespace

Q_DECLARE_METATYPE(Wire)
Q_DECLARE_METATYPE(Endless)

/// Answers without an end, apart from their body.
class EndlessAnswersTest : public FaultTest
{
    Q_OBJECT

    static void addRows(const char* wireName, Wire wire, const std::vector<Endless>& answers)
    {
        for (const auto& answer : answers)
            QTest::addRow("80 endless %s: %s", answer.name, wireName) << wire << answer;
    }

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    void requestEndsAtALimit_data()
    {
        QTest::addColumn<Wire>("wire");
        QTest::addColumn<Endless>("answer");
        for (const auto& answers : {heads(unreadable), others}) {
            addRows("plain", Wire::plain, answers);
            addRows("TLS", Wire::tls, answers);
        }
        addRows("proxy", Wire::tunnel, heads(lost));
        addRows("proxy", Wire::tunnel, proxys);
    }

    void requestEndsAtALimit()
    {
        QFETCH(const Wire, wire);
        QFETCH(const Endless, answer);
        const auto security = wire == Wire::tls
                                  ? RawServer::Tls(TestCertificates::server(QStringLiteral("good")))
                                  : RawServer::Tls();
        // Loads libraries and certificates.
        const RawServer good(httpAnswer(200), security);
        static_cast<void>(fetchText(requestFor(good.url())));

        const RawServer server(
            [&](RawConnection& connection, const RawRequest&) { sendEndlessly(connection, answer); },
            security);
        std::optional<ProxyInForce> proxy;
        if (wire == Wire::tunnel)
            proxy.emplace(QStringLiteral("127.0.0.1"), server.port());
        const auto url =
            wire == Wire::tunnel ? QUrl(QStringLiteral("https://nothing.invalid/")) : server.url();
        std::optional<PlatformError> failure;
        const auto use = ResourceUse::of([&] { failure = failureOfRequest(requestFor(url)); });
        qInfo("%lld KiB, %lld ms", use.peakBytes / 1024, static_cast<long long>(use.processorTime.count()));
        QVERIFY(failure);
        QCOMPARE(failure->code, answer.code);
        QVERIFY(server.connections().back()->sent() < serverEnd / 2);
        QVERIFY(use.peakBytes <= 16 * 1024 * 1024);
        QVERIFY(use.processorTime < 1s);
    }

    void interimAnswersAreLimited_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("code");
        QTest::newRow("80 32 interim answers") << 32 << 0;
        QTest::newRow("80 33 interim answers") << 33 << unreadable;
    }

    void interimAnswersAreLimited()
    {
        QFETCH(const int, count);
        QFETCH(const int, code);
        const QByteArray interim("HTTP/1.1 103 Early Hints\r\n\r\n");
        const RawServer server(interim.repeated(count) + httpAnswer(200));
        const auto failure = failureOfRequest(requestFor(server.url()));
        QCOMPARE(failure ? failure->code : 0, code);
    }

    void headIsLimitedAsAWhole_data()
    {
        QTest::addColumn<qsizetype>("bytes");
        QTest::addColumn<int>("code");
        QTest::newRow("80 256 KiB of heads") << qsizetype(256 * 1024) << 0;
        QTest::newRow("80 256 KiB of heads and 1 byte") << qsizetype(256 * 1024 + 1) << unreadable;
    }

    void headIsLimitedAsAWhole()
    {
        QFETCH(const qsizetype, bytes);
        QFETCH(const int, code);
        const auto answer = [](qsizetype padding) {
            const auto line = "X: " + QByteArray(padding / 4, 'x') + "\r\n";
            return "HTTP/1.1 103 Early Hints\r\n" + line + line + "\r\n" +
                   httpAnswer(200, {}, {line.chopped(2), "X: " + QByteArray(padding - padding / 4 * 3, 'x')});
        };
        const RawServer server(answer(bytes - answer(0).size()));
        const auto failure = failureOfRequest(requestFor(server.url()));
        QCOMPARE(failure ? failure->code : 0, code);
    }

    void endlessAnswerFailsTheStep_data()
    {
        QTest::addColumn<Wait>("wait");
        QTest::addColumn<Endless>("answer");
        for (const auto& wait : waits) {
            for (const auto& answer : {heads(unreadable)[2], others[1], others.back()})
                QTest::addRow("80 endless %s: %s", answer.name, wait.name) << wait << answer;
        }
    }

    void endlessAnswerFailsTheStep()
    {
        QFETCH(const Wait, wait);
        QFETCH(const Endless, answer);
        arrangeFor(wait);
        m_sites->scripts[wait.path] = [&](RawConnection& connection, const RawRequest&) {
            sendEndlessly(connection, answer);
        };
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), answer.code));
    }
};

QTEST_GUILESS_MAIN(EndlessAnswersTest)
#include "tst_EndlessAnswers.moc"
