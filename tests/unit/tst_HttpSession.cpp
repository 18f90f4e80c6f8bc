// SPDX-License-Identifier: MIT
#include "platform/HttpSession.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/ResultOf.h"

#include <QtTest>

using namespace cartloom;

class HttpSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAnswerComesWithItsStatusAndItsWholeBody()
    {
        const RawServer server(httpAnswer(200, "hello"));
        HttpSession session;
        const auto answer = resultOf(session.get(QNetworkRequest(server.url(QStringLiteral("/x?y=1"))), {}));
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.body, QByteArray("hello"));
        QCOMPARE(server.requests().size(), std::size_t(1));
        QCOMPARE(server.requests().front().verb, QByteArray("GET"));
        QCOMPARE(server.requests().front().path, QByteArray("/x?y=1"));
    }
};

QTEST_GUILESS_MAIN(HttpSessionTest)
#include "tst_HttpSession.moc"
