// SPDX-License-Identifier: MIT
#include "support/FaultTest.h"
#include "support/TestCertificates.h"

#include <QtTest>

using namespace cartloom;

namespace
{

const QByteArray ok("HTTP/1.1 200 OK\r\n");
const QByteArray inChunks = ok + "Transfer-Encoding: chunked\r\n\r\n";

QByteArray chunk(const QByteArray& bytes)
{
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n";
}

} // namespace

/// Bodies that are not what their headers say, or never end.
class FaultsBodiesTest : public FaultTest
{
    Q_OBJECT

    /// At each wait the good body in another wrapping, which is understood all the same.
    void playsWith(const std::function<QByteArray(const QByteArray& body)>& wrapped)
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path] = wrapped(m_sites->body(wait.path));
        pressPlays();
    }

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    void aBodyShorterThanAnnounced_data() { addRowForEachWait("20 shorter than announced"); }
    void aBodyShorterThanAnnounced()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path].chop(1);
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1005));
    }

    void aBodyLongerThanAnnounced_data() { addRowForEachWait("21 longer than announced"); }
    void aBodyLongerThanAnnounced()
    {
        playsWith([](const QByteArray& body) { return httpAnswer(200, body) + "and more"; });
    }

    void aDownloadLongerThanTheReleaseSays_data() { addOnlyRow("21 longer than the release says"); }
    void aDownloadLongerThanTheReleaseSays()
    {
        const auto size = m_sites->body(ScriptedSites::archive).size();
        arrangeFor(waits[1]);
        m_sites->answers[ScriptedSites::latest] =
            httpAnswer(200, ScriptedSites::release("v147", size - 1, m_sites->url(ScriptedSites::archive)));
        pressFailsWith(
            waits[1],
            {QStringLiteral("The Ares download is damaged (got %1 bytes, expected %2). Please try again.")
                 .arg(size)
                 .arg(size - 1),
             {}});
    }

    // Over TLS, as outside this machine: on a plain connection the network layer does not always tell the
    // end of the connection from that of the chunks.
    void aChunkThatEndsEarly_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<Wait>("wait");
        for (const auto& wait : waits) {
            QTest::addRow("22 chunk that ends early: %s", wait.name)
                << inChunks + chunk(QByteArray(1000, 'x')) + "10\r\nhalf" << wait;
            QTest::addRow("22 no last chunk: %s", wait.name)
                << inChunks + chunk(QByteArray(1000, 'x')) << wait;
        }
    }
    void aChunkThatEndsEarly()
    {
        QFETCH(const QByteArray, answer);
        QFETCH(const Wait, wait);
        const RawServer server(answer, TestCertificates::server(QStringLiteral("good")));
        arrangeFor(wait);
        serveFrom(wait, server.url(QString()));
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1005));
    }

    void aChunkSizeThatCannotBe_data()
    {
        QTest::addColumn<QByteArray>("size");
        QTest::addColumn<Wait>("wait");
        for (const char* const size : {"fffffffffffffffff", "-5", "many"}) {
            for (const auto& wait : waits)
                QTest::addRow("23 chunk size %s: %s", size, wait.name) << QByteArray(size) << wait;
        }
    }
    void aChunkSizeThatCannotBe()
    {
        QFETCH(const QByteArray, size);
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        const Failure failure = unusable(wait, {});
        m_sites->answers[wait.path] = inChunks + size + "\r\n" + m_sites->body(wait.path) + "\r\n0\r\n\r\n";
        pressFailsWith(wait, failure);
    }

    void aNegativeLength_data() { addRowForEachWait("24 negative length"); }
    void aNegativeLength()
    {
        playsWith([](const QByteArray& body) { return ok + "Content-Length: -5\r\n\r\n" + body; });
    }

    void aLengthAndChunks_data() { addRowForEachWait("25 length and chunked together"); }
    void aLengthAndChunks()
    {
        playsWith([](const QByteArray& body) {
            return ok + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n" + chunk(body) + "0\r\n\r\n";
        });
    }

    void noLength_data() { addRowForEachWait("26 no length"); }
    void noLength()
    {
        QFETCH(const Wait, wait);
        QStringList fractions;
        QStringList lines;
        arrangeFor(wait);
        connect(m_model.get(), &AppModel::fractionChanged, this, [&] {
            if (m_model->fraction())
                fractions.append(QString::number(*m_model->fraction()));
        });
        connect(m_model.get(), &AppModel::detailLineChanged, this,
                [&] { lines.append(m_model->detailLine()); });
        playsWith([](const QByteArray& body) { return ok + "\r\n" + body; });
        const bool isFile =
            QByteArray(wait.path) == ScriptedSites::archive || QByteArray(wait.path) == ScriptedSites::game;
        if (isFile) {
            QCOMPARE(fractions, QStringList());
            QCOMPARE(lines.filter(QStringLiteral(" of ")), QStringList());
        }
    }

    // A file has no bound but that of the disk.
    void anEndlessAnswer_data()
    {
        QTest::addColumn<Wait>("wait");
        for (const auto& wait : waits) {
            if (!wait.isFile())
                QTest::addRow("27 endless: %s", wait.name) << wait;
        }
    }
    void anEndlessAnswer()
    {
        constexpr qint64 bound = 64 * 1024 * 1024;
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        const RawConnection* asked = nullptr;
        m_sites->scripts[wait.path] = [&asked](RawConnection& connection, const RawRequest&) {
            asked = &connection;
            connection.send(ok + "\r\n");
            connection.sendEndlessly(QByteArray(64 * 1024, ' '), bound);
        };
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1103));
        QVERIFY(asked->sent() < bound / 2);
    }

    void anOddHeader_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<Wait>("wait");
        for (const auto& wait : waits) {
            QTest::addRow("28 header line of 100 KB: %s", wait.name)
                << "X-Long: " + QByteArray(100 * 1024, 'x') << wait;
            QTest::addRow("28 NUL in a header: %s", wait.name) << QByteArray("X-Nul: a\0b", 10) << wait;
        }
    }
    void anOddHeader()
    {
        QFETCH(const QByteArray, header);
        playsWith([&](const QByteArray& body) { return httpAnswer(200, body, {header}); });
    }

    void brokenGzip_data() { addRowForEachWait("29 broken gzip"); }
    void brokenGzip()
    {
        QFETCH(const Wait, wait);
        const QByteArray broken =
            QByteArray::fromHex("1f8b0800000000000203cb48cdc936a8c8182547c95172941cf4240045449f68b0040000");
        arrangeFor(wait);
        // A file is taken as it comes; what is to be read is not there.
        const Failure failure = unusable(wait, wait.isFile() ? broken : QByteArray());
        m_sites->answers[wait.path] = httpAnswer(200, broken, {"Content-Encoding: gzip"});
        pressFailsWith(wait, failure);
    }
};

QTEST_GUILESS_MAIN(FaultsBodiesTest)
#include "tst_FaultsBodies.moc"
