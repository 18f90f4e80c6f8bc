// SPDX-License-Identifier: MIT
#include "errors/AppError.h"
#include "support/Download.h"
#include "support/RawServer.h"
#include "support/RequestFailures.h"
#include "support/TestCertificates.h"

#include <QtTest>

#include <zlib.h>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

constexpr int repeats = 20;

struct Outcome
{
    /// 0 for a success.
    int code;
    QByteArray body;
};

const QByteArray ok("HTTP/1.1 200 OK\r\n");
const QByteArray gzipped = ok + "Content-Encoding: gzip\r\n";
const QByteArray chunked("Transfer-Encoding: chunked\r\n\r\n");
const QByteArray lastChunk("0\r\n\r\n");

QByteArray gzip(const QByteArray& bytes)
{
    QByteArray packed(bytes.size() + 100, '\0');
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, MAX_WBITS + 16, 9, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

QByteArray withBitFlipped(QByteArray bytes, qsizetype at)
{
    bytes[at] = static_cast<char>(bytes[at] ^ 1);
    return bytes;
}

QByteArray length(qsizetype bytes)
{
    return "Content-Length: " + QByteArray::number(bytes) + "\r\n\r\n";
}

QByteArray withLength(const QByteArray& body)
{
    return length(body.size()) + body;
}

QByteArray chunk(const QByteArray& bytes)
{
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n";
}

const QByteArray text = QByteArray("hello, world; ").repeated(5) + QByteArray::number(3.14159);
const QByteArray packed = gzip(text);

} // namespace

/// Answers byte for byte, over plain connections and TLS. Each is repeated, because timing decides how they
/// arrive.
class HttpAnswersTest : public QObject
{
    Q_OBJECT

    template <typename... Values>
    static void addRows(const QByteArray& name, const Values&... values)
    {
        (QTest::addRow("%s: plain", name.constData()) << false << ... << values);
        (QTest::addRow("%s: TLS", name.constData()) << true << ... << values);
    }

    static RawServer::Tls wire()
    {
        QFETCH(const bool, tls);
        return tls ? RawServer::Tls(TestCertificates::server(QStringLiteral("good"))) : RawServer::Tls();
    }

    /// One of the repeats, as a text or as a file by turns.
    static QCoro::Task<Outcome> attempt(int number, HttpRequest request, std::filesystem::path folder)
    {
        try {
            if (number % 2 == 0) {
                HttpSession session;
                const auto response = co_await session.fetch(request, {});
                co_return {0, response.body};
            }
            FileDownloader downloader(folder / std::to_string(number), {});
            const auto file = co_await downloader.download(request, {});
            co_return {0, readFile(file)};
        } catch (const PlatformError& error) {
            co_return {error.code, {}};
        }
    }

    /// Checks that all repeats have this outcome.
    static void everyAttemptIs(const Outcome& expected, const RawServer& server,
                               std::chrono::milliseconds timeout = 20s, int atOnce = repeats)
    {
        const Sandbox sandbox;
        std::vector<Outcome> outcomes;
        for (int first = 0; first < repeats; first += atOnce) {
            std::vector<QCoro::Task<Outcome>> running;
            for (int i = first; i < first + atOnce; ++i)
                running.push_back(attempt(i, requestFor(server.url(), timeout), sandbox.scratch()));
            for (auto& task : running)
                outcomes.push_back(resultOf(std::move(task)));
        }
        QCOMPARE(outcomes.size(), std::size_t(repeats));
        for (const auto& outcome : outcomes) {
            QCOMPARE(outcome.code, expected.code);
            QCOMPARE(outcome.body, expected.body);
        }
        QCOMPARE(entriesOf(sandbox.scratch()), expected.code == 0 ? repeats / 2 : 0);
    }

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    void damagedAnswerIsRefused_data()
    {
        QTest::addColumn<bool>("tls");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("code");
        constexpr int lost = -1005;
        constexpr int damaged = -1015;
        constexpr int unreadable = -1011;
        const auto half = packed.left(packed.size() / 2);
        const auto inChunks = ok + chunked + chunk("hello");

        addRows("gzip cut short, whole length", gzipped + length(packed.size()) + half, lost);
        addRows("gzip cut short, its own length", gzipped + withLength(half), lost);
        addRows("gzip cut short, no length", gzipped + "\r\n" + half, lost);
        addRows("gzip cut short, in chunks", gzipped + chunked + chunk(half) + lastChunk, lost);
        addRows("gzip with a bad CRC", gzipped + withLength(withBitFlipped(packed, packed.size() - 8)),
                damaged);
        addRows("gzip with a damaged middle", gzipped + withLength(withBitFlipped(packed, 14)), damaged);
        addRows("gzip with something after it", gzipped + withLength(packed + "more"), damaged);
        addRows("not gzip", gzipped + withLength("hello"), damaged);
        addRows("unknown encoding", ok + "Content-Encoding: br\r\n" + withLength("hello"), damaged);
        addRows("closed before the first byte", QByteArray(), lost);
        addRows("closed inside the header", ok + "Content-Le", lost);
        addRows("closed early, with length", ok + length(1000) + "half", lost);
        addRows("chunk that ends early", inChunks + "10\r\nhalf", lost);
        addRows("no last chunk", inChunks, lost);
        for (const char* const size : {"fffffffffffffffff", "-5", "many"}) {
            const auto unread = QByteArray(size) + "\r\nhello\r\n" + lastChunk;
            addRows("first chunk size " + QByteArray(size), ok + chunked + unread, lost);
            addRows("later chunk size " + QByteArray(size), inChunks + unread, lost);
        }
        addRows("negative length", ok + length(-5) + "hello", unreadable);
        addRows("NUL in a header", ok + QByteArray("X-Nul: a\0b\r\n", 12) + withLength("hello"), unreadable);
        addRows("header line of 101 KB",
                ok + "X-Long: " + QByteArray(101 * 1024, 'x') + "\r\n" + withLength("hello"), unreadable);
        addRows("300 KiB of headers",
                ok + QByteArray("X-Y: z\r\n").repeated(300 * 1024 / 8) + withLength("hello"), unreadable);
        addRows("not HTTP", QByteArray("220 smtp.example ESMTP ready\r\n\r\n"), unreadable);
        addRows("status that is no number", "HTTP/1.1 OK 200\r\n" + withLength("hello"), unreadable);
    }

    void damagedAnswerIsRefused()
    {
        QFETCH(const QByteArray, answer);
        QFETCH(const int, code);
        const RawServer server(answer, wire());
        everyAttemptIs({code, {}}, server);
    }

    void resetWithoutLengthIsReported_data()
    {
        QTest::addColumn<bool>("tls");
        addRows("reset");
    }

    void resetWithoutLengthIsReported()
    {
        const RawServer server(
            [](RawConnection& connection, const RawRequest&) {
                connection.send(ok + "\r\n" + QByteArray(100'000, 'x'));
                connection.reset();
            },
            wire());
        everyAttemptIs({-1005, {}}, server);
    }

    void oddAnswerIsUnderstood_data()
    {
        QTest::addColumn<bool>("tls");
        QTest::addColumn<QByteArray>("answer");
        const auto hello = ok + withLength(text);
        addRows("no length", ok + "\r\n" + text);
        addRows("HTTP/1.0", "HTTP/1.0 200 OK\r\n\r\n" + text);
        addRows("bare line feeds",
                "HTTP/1.1 200 OK\nContent-Length: " + QByteArray::number(text.size()) + "\n\n" + text);
        addRows("longer than announced", hello + "and more");
        addRows("chunks with an extension and a trailer",
                ok + chunked + chunk(text).replace("\r\nhello", ";x=y\r\nhello") + "0\r\nTrailer: z\r\n\r\n");
        addRows("length and chunks together",
                ok + "Content-Length: 5\r\n" + chunked + chunk(text) + lastChunk);
        addRows("header line of 99 KB",
                ok + "X-Long: " + QByteArray(99 * 1024, 'x') + "\r\n" + withLength(text));
        addRows("100 before 200", "HTTP/1.1 100 Continue\r\n\r\n" + hello);
        addRows("102 before 200", "HTTP/1.1 102 Processing\r\n\r\n" + hello);
        addRows("103 before 200", "HTTP/1.1 103 Early Hints\r\nLink: </x>\r\n\r\n" + hello);
        addRows("103 twice before 200", QByteArray("HTTP/1.1 103 Early Hints\r\n\r\n").repeated(2) + hello);
        addRows("gzip", gzipped + withLength(packed));
        addRows("gzip in chunks",
                gzipped + chunked + chunk(packed.left(9)) + chunk(packed.mid(9)) + lastChunk);
        addRows("gzip in two members", gzipped + withLength(gzip(text.left(9)) + gzip(text.mid(9))));
        addRows("deflate", ok + "Content-Encoding: Deflate\r\n" + withLength(qCompress(text).mid(4)));
        addRows("identity", ok + "Content-Encoding: identity\r\n" + withLength(text));
    }

    void oddAnswerIsUnderstood()
    {
        QFETCH(const QByteArray, answer);
        const RawServer server(answer, wire());
        everyAttemptIs({0, text}, server);
    }

    void slowHeaderRestartsTheIdleTimeout_data()
    {
        QTest::addColumn<bool>("tls");
        addRows("one byte per 20 ms");
    }

    void slowHeaderRestartsTheIdleTimeout()
    {
        const RawServer server([](RawConnection& connection,
                                  const RawRequest&) { connection.drip(ok + withLength("hello"), 20ms); },
                               wire());
        // One thread serves all: few enough at once that none waits for its turn until the timeout.
        constexpr int atOnce = 4;
        everyAttemptIs({0, "hello"}, server, 500ms, atOnce);
    }

    void refusalIsJudgedByItsStatusHoweverLong_data()
    {
        QTest::addColumn<bool>("tls");
        QTest::addColumn<int>("status");
        addRows("403", 403);
        addRows("500", 500);
    }

    void refusalIsJudgedByItsStatusHoweverLong()
    {
        QFETCH(const int, status);
        const RawServer server(
            [status](RawConnection& connection, const RawRequest&) {
                constexpr qint64 size = 9 * 1024 * 1024;
                connection.send("HTTP/1.1 " + QByteArray::number(status) + " No\r\n" + length(size));
                connection.sendEndlessly(QByteArray(64 * 1024, 'x'), size);
            },
            wire());
        for (int i = 0; i < repeats; i += 2) {
            QCOMPARE(fetchText(requestFor(server.url())).status, status);
            const auto error = failureOf<AppError>([&] { return Download().fetch(server.url()); });
            QVERIFY(error);
            QCOMPARE(error->message, QStringLiteral("The server answered with error %1.").arg(status));
        }
    }

    void textOfMaximumLengthIsAccepted()
    {
        constexpr qsizetype maxBytes = 8 * 1024 * 1024;
        const RawServer server(httpAnswer(200, QByteArray(maxBytes, 'x')));
        QCOMPARE(fetchText(requestFor(server.url())).body.size(), maxBytes);
    }

    void textOverMaximumLengthIsRefused()
    {
        const RawServer server(httpAnswer(200, QByteArray(8 * 1024 * 1024 + 1, 'x')));
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1103,
                       QStringLiteral("The server's answer is too long."));
    }
};

QTEST_GUILESS_MAIN(HttpAnswersTest)
#include "tst_HttpAnswers.moc"
