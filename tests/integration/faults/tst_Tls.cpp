// SPDX-License-Identifier: MIT
#include "support/Checked.h"
#include "support/FaultTest.h"
#include "support/RequestFailures.h"
#include "support/TestCertificates.h"

#include <QtTest>

using namespace cartloom;

/// Connections that cannot be trusted. No request is ever sent over one of them.
class TlsTest : public FaultTest
{
    Q_OBJECT

    static void addRows(const QString& fault)
    {
        QTest::addColumn<QString>("certificate");
        QTest::addColumn<Wait>("wait");
        const std::array certificates{std::pair{"12", QStringLiteral("expired")},
                                      std::pair{"13", QStringLiteral("wronghost")},
                                      std::pair{"14", QStringLiteral("unknown")}};
        for (const auto& [family, name] : certificates) {
            for (const auto& wait : waits)
                QTest::newRow(qPrintable(fault.arg(QLatin1String(family), name, QLatin1String(wait.name))))
                    << name << wait;
        }
    }

    static QUrl asSecure(QUrl url)
    {
        url.setScheme(QStringLiteral("https"));
        return url;
    }

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    /// Shows that the other cases fail because of their certificate.
    void trustedCertificateIsAccepted_data() { addRowForEachWait("12-16 a good certificate is taken"); }

    void trustedCertificateIsAccepted()
    {
        QFETCH(const Wait, wait);
        auto good = m_sites->answers;
        const RawServer server(
            [&good](RawConnection& connection, const RawRequest& request) {
                connection.send(good.at(request.path));
                connection.close();
            },
            TestCertificates::server(QStringLiteral("good")));
        // A secure site names secure addresses only.
        const auto secureUrl = [&](const char* path) { return server.url(QLatin1String(path)); };
        good[ScriptedSites::latest] =
            httpAnswer(200, ScriptedSites::release("v147", m_sites->body(ScriptedSites::archive).size(),
                                                   secureUrl(ScriptedSites::archive)));
        good[ScriptedSites::form] = httpAnswer(200, ScriptedSites::link(secureUrl(ScriptedSites::game)));
        arrangeFor(wait);
        serveFrom(wait, server.url(QString()));
        CHECKED(pressPlays());
        QVERIFY(!server.requests().empty());
    }

    void untrustedCertificateIsRefused_data() { addRows(QStringLiteral("%1 %2: %3")); }

    void untrustedCertificateIsRefused()
    {
        QFETCH(const QString, certificate);
        QFETCH(const Wait, wait);
        const RawServer server(keepSilent, TestCertificates::server(certificate));
        arrangeFor(wait);
        serveFrom(wait, server.url(QString()));
        CHECKED(pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1202)));
        QVERIFY(!server.connections().empty());
        QCOMPARE(server.requests().size(), std::size_t(0));
    }

    void closeDuringHandshakeIsReported_data() { addRowForEachWait("15 handshake cut off"); }

    void closeDuringHandshakeIsReported()
    {
        QFETCH(const Wait, wait);
        RawServer server(keepSilent);
        server.onConnected = [](RawConnection& connection) {
            connect(&connection, &RawConnection::received, &connection, &RawConnection::close);
        };
        arrangeFor(wait);
        serveFrom(wait, asSecure(server.url(QString())));
        CHECKED(pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1200)));
        QVERIFY(!server.connections().empty());
    }

    void plainAnswerToHandshakeIsReported()
    {
        RawServer server(keepSilent);
        server.onConnected = [](RawConnection& connection) {
            connect(&connection, &RawConnection::received, &connection, [&connection] {
                connection.send(httpAnswer(400, "speak plainly"));
                connection.close();
            });
        };
        verifyUrlError(failureOfRequest(requestFor(asSecure(server.url()))), -1200,
                       QStringLiteral("A secure connection to the server could not be made."));
    }

    void redirectToUntrustedCertificateIsRefused_data()
    {
        addRows(QStringLiteral("16 redirect to one of %1, %2: %3"));
    }

    void redirectToUntrustedCertificateIsRefused()
    {
        QFETCH(const QString, certificate);
        QFETCH(const Wait, wait);
        const RawServer server(keepSilent, TestCertificates::server(certificate));
        arrangeFor(wait);
        m_sites->answers[wait.path] = httpRedirect(server.url().toEncoded());
        CHECKED(pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1202)));
        QVERIFY(!server.connections().empty());
        QCOMPARE(server.requests().size(), std::size_t(0));
    }
};

QTEST_GUILESS_MAIN(TlsTest)
#include "tst_Tls.moc"
