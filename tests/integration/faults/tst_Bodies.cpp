// SPDX-License-Identifier: MIT
#include "core/ByteCount.h"
#include "support/Checked.h"
#include "support/FaultTest.h"

#include <QtTest>

using namespace cartloom;

namespace
{

using Wrapping = std::function<QByteArray(const QByteArray& body)>;

const QByteArray ok("HTTP/1.1 200 OK\r\n");
const QByteArray inChunks = ok + "Transfer-Encoding: chunked\r\n\r\n";

QByteArray chunk(const QByteArray& bytes)
{
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n";
}

void addRow(const QByteArray& fault, const Wait& wait, int code, const Wrapping& wrapping)
{
    QTest::addRow("%s: %s", fault.constData(), wait.name) << wait << code << wrapping;
}

} // namespace

Q_DECLARE_METATYPE(Wrapping)

/// Bodies that differ from what their headers say, at each wait.
class BodiesTest : public FaultTest
{
    Q_OBJECT

    static void addColumns()
    {
        QTest::addColumn<Wait>("wait");
        QTest::addColumn<int>("code");
        QTest::addColumn<Wrapping>("wrapping");
    }

private Q_SLOTS:
    void damagedBodyFailsTheStep_data()
    {
        addColumns();
        for (const auto& wait : waits) {
            addRow("20 shorter than announced", wait, -1005,
                   [](const QByteArray& body) { return httpAnswer(200, body).chopped(1); });
            addRow("22 chunk that ends early", wait, -1005,
                   [](const QByteArray& body) { return inChunks + chunk(body.chopped(16)) + "10\r\nhalf"; });
            addRow("22 no last chunk", wait, -1005,
                   [](const QByteArray& body) { return inChunks + chunk(body); });
            for (const char* const size : {"fffffffffffffffff", "-5", "many"})
                addRow("23 chunk size " + QByteArray(size), wait, -1005,
                       [size](const QByteArray& body) { return inChunks + chunk(body) + size + "\r\n\r\n"; });
            addRow("24 negative length", wait, -1011,
                   [](const QByteArray& body) { return ok + "Content-Length: -5\r\n\r\n" + body; });
            addRow("28 NUL in a header", wait, -1011, [](const QByteArray& body) {
                return httpAnswer(200, body, {QByteArray("X-Nul: a\0b", 10)});
            });
            addRow("28 header line of 101 KB", wait, -1011, [](const QByteArray& body) {
                return httpAnswer(200, body, {"X-Long: " + QByteArray(101 * 1024, 'x')});
            });
            addRow("29 broken gzip", wait, -1015,
                   [](const QByteArray& body) { return httpAnswer(200, body, {"Content-Encoding: gzip"}); });
        }
    }

    void damagedBodyFailsTheStep()
    {
        QFETCH(const Wait, wait);
        QFETCH(const int, code);
        QFETCH(const Wrapping, wrapping);
        arrangeFor(wait);
        m_sites->answers[wait.path] = wrapping(m_sites->body(wait.path));
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), code));
    }

    void oddBodyIsUnderstood_data()
    {
        addColumns();
        for (const auto& wait : waits) {
            addRow("21 longer than announced", wait, 0,
                   [](const QByteArray& body) { return httpAnswer(200, body) + "and more"; });
            addRow("25 length and chunked together", wait, 0, [](const QByteArray& body) {
                return ok + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n" + chunk(body) +
                       "0\r\n\r\n";
            });
            addRow("28 header line of 99 KB", wait, 0, [](const QByteArray& body) {
                return httpAnswer(200, body, {"X-Long: " + QByteArray(99 * 1024, 'x')});
            });
            addRow("29 sound compression", wait, 0, [](const QByteArray& body) {
                return httpAnswer(200, qCompress(body).mid(4), {"Content-Encoding: deflate"});
            });
        }
    }

    void oddBodyIsUnderstood()
    {
        QFETCH(const Wait, wait);
        QFETCH(const Wrapping, wrapping);
        arrangeFor(wait);
        m_sites->answers[wait.path] = wrapping(m_sites->body(wait.path));
        pressPlays();
    }

    void downloadLongerThanTheReleaseSaysIsRefused_data() { addOnlyRow("21 longer than the release says"); }
    void downloadLongerThanTheReleaseSaysIsRefused()
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

    void unknownLengthShowsNoFraction_data() { addRowForEachWait("26 no length"); }
    void unknownLengthShowsNoFraction()
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
        m_sites->answers[wait.path] = ok + "\r\n" + m_sites->body(wait.path);
        CHECKED(pressPlays());
        if (wait.isFile()) {
            QCOMPARE(fractions, QStringList());
            QCOMPARE(lines.filter(QStringLiteral(" of ")), QStringList());
            QVERIFY(!lines.filter(ByteCount::text(m_sites->body(wait.path).size())).isEmpty());
        }
    }

    // A file is limited by the disk only.
    void endlessTextIsRefused_data()
    {
        QTest::addColumn<Wait>("wait");
        for (const auto& wait : waits) {
            if (!wait.isFile())
                QTest::addRow("27 endless: %s", wait.name) << wait;
        }
    }
    void endlessTextIsRefused()
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
        CHECKED(pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1103)));
        QVERIFY(asked->sent() < bound / 2);
    }
};

QTEST_GUILESS_MAIN(BodiesTest)
#include "tst_Bodies.moc"
