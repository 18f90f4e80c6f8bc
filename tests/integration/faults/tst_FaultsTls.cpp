// SPDX-License-Identifier: MIT
#include "support/FaultTest.h"
#include "support/TestCertificates.h"

#include <QtTest>

using namespace cartloom;

/// Connections that cannot be trusted. None of them is ever told what was to be asked for.
class FaultsTlsTest : public FaultTest
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

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    /// Shows that it is the certificate which the other cases fail for.
    void aGoodCertificate_data() { addRowForEachWait("12-16 a good certificate is taken"); }

    void aGoodCertificate()
    {
        QFETCH(const Wait, wait);
        const auto good = m_sites->answers;
        const RawServer server(
            [&good](RawConnection& connection, const RawRequest& request) {
                connection.send(good.at(request.path));
                connection.close();
            },
            TestCertificates::server(QStringLiteral("good")));
        arrangeFor(wait);
        serveFrom(wait, server.url(QString()));
        pressPlays();
        QVERIFY(!server.requests().empty());
    }

    void aCertificateThatIsNotTrusted_data() { addRows(QStringLiteral("%1 %2: %3")); }

    void aCertificateThatIsNotTrusted()
    {
        QFETCH(const QString, certificate);
        QFETCH(const Wait, wait);
        const RawServer server(keepSilent, TestCertificates::server(certificate));
        arrangeFor(wait);
        serveFrom(wait, server.url(QString()));
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1202));
        QVERIFY(!server.connections().empty());
        QCOMPARE(server.requests().size(), std::size_t(0));
    }

    void aHandshakeThatIsCutOff_data() { addRowForEachWait("15 handshake cut off"); }

    void aHandshakeThatIsCutOff()
    {
        QFETCH(const Wait, wait);
        RawServer server(keepSilent);
        server.onConnected = [](RawConnection& connection) {
            connect(&connection, &RawConnection::received, &connection, &RawConnection::close);
        };
        QUrl origin = server.url(QString());
        origin.setScheme(QStringLiteral("https"));
        arrangeFor(wait);
        serveFrom(wait, origin);
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1200));
        QVERIFY(!server.connections().empty());
    }

    void aRedirectToACertificateThatIsNotTrusted_data()
    {
        addRows(QStringLiteral("16 redirect to one of %1, %2: %3"));
    }

    void aRedirectToACertificateThatIsNotTrusted()
    {
        QFETCH(const QString, certificate);
        QFETCH(const Wait, wait);
        const RawServer server(keepSilent, TestCertificates::server(certificate));
        arrangeFor(wait);
        m_sites->answers[wait.path] = httpRedirect(server.url().toEncoded());
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1202));
        QVERIFY(!server.connections().empty());
        QCOMPARE(server.requests().size(), std::size_t(0));
    }
};

QTEST_GUILESS_MAIN(FaultsTlsTest)
#include "tst_FaultsTls.moc"
