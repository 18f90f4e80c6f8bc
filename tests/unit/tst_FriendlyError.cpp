// SPDX-License-Identifier: MIT
#include "errors/FriendlyError.h"
#include "errors/PlatformError.h"

#include <QtTest>

#include <filesystem>
#include <new>
#include <system_error>

using namespace cartloom;

namespace
{

const auto step = QStringLiteral("Getting Ares");
const auto noInternet = QStringLiteral("No internet connection. Check your network and try again.");
const auto diskFull = QStringLiteral("Your disk is full. Free some space and try again.");
const auto tooSlow = QStringLiteral("The server took too long to answer. Try again in a moment.");

} // namespace

class FriendlyErrorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAppErrorComesBackAsItIs()
    {
        const auto made = FriendlyError::make(AppError(QStringLiteral("X"), QStringLiteral("Y")), step);
        QCOMPARE(made.message, QStringLiteral("X"));
        QCOMPARE(made.details, QStringLiteral("Y"));
        QCOMPARE(made.errorDescription(), QStringLiteral("X"));
        QCOMPARE(QByteArray(made.what()), QByteArray("X"));
    }

    void knownCodesHaveTheirSentence_data()
    {
        QTest::addColumn<QByteArray>("domain");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        const auto fallback = QStringLiteral("Getting Ares failed: What the system says.");
        const auto row = [](const char* domain, int code, const QString& message) {
            QTest::addRow("%s %d", domain, code) << QByteArray(domain) << code << message;
        };
        row("NSURLErrorDomain", -1001, tooSlow);
        for (const int code : {-1003, -1004, -1005, -1006, -1009})
            row("NSURLErrorDomain", code, noInternet);
        for (const int code :
             {-1, -999, -1000, -1002, -1007, -1008, -1010, -1011, -1022, -1103, -1200, -1202, 28, 640})
            row("NSURLErrorDomain", code, fallback);
        row("NSCocoaErrorDomain", 640, diskFull);
        for (const int code : {4, 28, 639, 641, -1001})
            row("NSCocoaErrorDomain", code, fallback);
        row("NSPOSIXErrorDomain", 28, diskFull);
        for (const int code : {2, 13, 27, 29, 640, -1001})
            row("NSPOSIXErrorDomain", code, fallback);
        for (const int code : {28, 640, -1001})
            row("nsurlerrordomain", code, fallback);
    }

    void knownCodesHaveTheirSentence()
    {
        QFETCH(QByteArray, domain);
        QFETCH(int, code);
        QFETCH(QString, message);
        const auto description = QStringLiteral("What the system says.");
        const auto made = FriendlyError::make(PlatformError(domain.constData(), code, description), step);
        QCOMPARE(made.message, message);
        QCOMPARE(made.details, QStringLiteral("Getting Ares\n%1 %2\nWhat the system says.")
                                   .arg(QString::fromLatin1(domain))
                                   .arg(code));
    }

    void missingMemoryIsTheSystemsError()
    {
        const auto made = FriendlyError::make(std::bad_alloc(), step);
        QCOMPARE(made.message, QStringLiteral("Getting Ares failed: Cannot allocate memory"));
        QCOMPARE(made.details, QStringLiteral("Getting Ares\nNSPOSIXErrorDomain 12\nCannot allocate memory"));
    }

    void aTimeOutHasThreeLinesOfDetails()
    {
        const auto made = FriendlyError::make(urlError(UrlError::timedOut), step);
        QCOMPARE(made.message, tooSlow);
        QCOMPARE(made.details,
                 QStringLiteral("Getting Ares\nNSURLErrorDomain -1001\nThe request timed out."));
    }

    void aPermissionErrorOfTheSystem()
    {
        const auto made = FriendlyError::make(std::system_error(EACCES, std::generic_category()), step);
        QCOMPARE(made.message, QStringLiteral("Getting Ares failed: Permission denied"));
        QCOMPARE(made.details, QStringLiteral("Getting Ares\nNSPOSIXErrorDomain 13\nPermission denied"));
    }

    void aFullDiskOfTheSystem()
    {
        const auto made = FriendlyError::make(std::system_error(ENOSPC, std::generic_category()), step);
        QCOMPARE(made.message, diskFull);
        QCOMPARE(made.details,
                 QStringLiteral("Getting Ares\nNSPOSIXErrorDomain 28\nNo space left on device"));
    }

    void whatTheStandardLibraryThrowsNamesNoPath()
    {
        try {
            static_cast<void>(std::filesystem::file_size("/nothing/here"));
            QFAIL("there is something");
        } catch (const std::exception& error) {
            const auto made = FriendlyError::make(error, step);
            QCOMPARE(made.message, QStringLiteral("Getting Ares failed: No such file or directory"));
            QCOMPARE(made.details,
                     QStringLiteral("Getting Ares\nNSPOSIXErrorDomain 2\nNo such file or directory"));
        }
    }

    void anErrorOfNoKnownKindFallsBackToItsOwnWords()
    {
        const auto made = FriendlyError::make(std::runtime_error("odd"), step);
        QCOMPARE(made.message, QStringLiteral("Getting Ares failed: odd"));
        QVERIFY(made.details.startsWith(QStringLiteral("Getting Ares\n")));
        QVERIFY(made.details.endsWith(QStringLiteral("\nodd")));
    }

    void textIsNeverTakenForAPattern()
    {
        const auto made = FriendlyError::make(
            PlatformError("NSCocoaErrorDomain", 4, QStringLiteral("%1 %2 %n")), QStringLiteral("%1 step"));
        QCOMPARE(made.message, QStringLiteral("%1 step failed: %1 %2 %n"));
        QCOMPARE(made.details, QStringLiteral("%1 step\nNSCocoaErrorDomain 4\n%1 %2 %n"));
    }

    void onlyCancellationsAreCancellations()
    {
        QVERIFY(FriendlyError::isCancel(CancellationError()));
        QVERIFY(FriendlyError::isCancel(urlError(-999)));
        QVERIFY(!FriendlyError::isCancel(urlError(-1001)));
        QVERIFY(!FriendlyError::isCancel(PlatformError("NSCocoaErrorDomain", -999, QString())));
        QVERIFY(!FriendlyError::isCancel(PlatformError("NSPOSIXErrorDomain", ECANCELED, QString())));
        QVERIFY(!FriendlyError::isCancel(AppError(QStringLiteral("Cancelled"), QStringLiteral("-999"))));
        QVERIFY(!FriendlyError::isCancel(std::system_error(ECANCELED, std::generic_category())));
        QVERIFY(!FriendlyError::isCancel(std::runtime_error("cancelled")));
    }

    void anErrorDescribesItself()
    {
        QCOMPARE(FriendlyError::localizedDescription(AppError(QStringLiteral("X"), QStringLiteral("Y"))),
                 QStringLiteral("X"));
        QCOMPARE(FriendlyError::localizedDescription(urlError(-1005)),
                 QStringLiteral("The network connection was lost."));
        QCOMPARE(FriendlyError::localizedDescription(std::system_error(ENOENT, std::generic_category())),
                 QStringLiteral("No such file or directory"));
    }
};

QTEST_GUILESS_MAIN(FriendlyErrorTest)
#include "tst_FriendlyError.moc"
