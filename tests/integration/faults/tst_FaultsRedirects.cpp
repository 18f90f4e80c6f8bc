// SPDX-License-Identifier: MIT
#include "support/FaultTest.h"
#include "support/TestCertificates.h"

#include <QtTest>

using namespace cartloom;

/// Servers that send on to where nobody may go.
class FaultsRedirectsTest : public FaultTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    void aRedirectLoop_data() { addRowForEachWait("17 redirect loop"); }

    void aRedirectLoop()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path] = httpRedirect(wait.path);
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1007));
    }

    void aRedirectFromHttpsToHttp_data() { addRowForEachWait("18 https to http"); }

    void aRedirectFromHttpsToHttp()
    {
        QFETCH(const Wait, wait);
        const RawServer plain(httpAnswer(200));
        const RawServer secure(httpRedirect(plain.url().toEncoded()),
                               TestCertificates::server(QStringLiteral("good")));
        arrangeFor(wait);
        serveFrom(wait, secure.url(QString()));
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1022));
        QCOMPARE(secure.requests().size(), std::size_t(1));
        QCOMPARE(plain.connections().size(), std::size_t(0));
    }

    void aRedirectToAnotherScheme_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<Wait>("wait");
        for (const char* const target :
             {"ftp://127.0.0.1/file", "file:///etc/hostname", "data:text/plain,hello"}) {
            for (const auto& wait : waits)
                QTest::addRow("19 to %s: %s", target, wait.name) << QByteArray(target) << wait;
        }
    }

    void aRedirectToAnotherScheme()
    {
        QFETCH(const QByteArray, target);
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path] = httpRedirect(target);
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1002));
    }
};

QTEST_GUILESS_MAIN(FaultsRedirectsTest)
#include "tst_FaultsRedirects.moc"
