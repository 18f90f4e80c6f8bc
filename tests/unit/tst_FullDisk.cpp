// SPDX-License-Identifier: MIT
#include "core/AppModel.h"
#include "core/Paths.h"
#include "game/FileDownloader.h"
#include "game/FriendlyError.h"
#include "game/GameDownloader.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/ResultOf.h"
#include "support/Sandbox.h"
#include "support/SmallVolumeTest.h"
#include "support/TestOrigins.h"

#include <QtTest>

#include <system_error>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

const auto noProgress = [](qint64, qint64) {};

/// A storage folder on a volume with room for 256 KiB.
struct FullDisk
{
    FullDisk()
    {
        fs::create_directories(Paths::support());
        volume.emplace(Paths::support(), 256 * 1024);
    }

    [[nodiscard]] bool isEmpty() const { return Sandbox::storage().isEmpty(); }

    Sandbox sandbox;
    std::optional<SmallVolume> volume;
};

} // namespace

/// Every writer on a disk that is really full.
class FullDiskTest : public QObject
{
    Q_OBJECT

private:
    void verifyFull(const std::optional<std::system_error>& error)
    {
        QVERIFY(error);
        QCOMPARE(error->code().value(), ENOSPC);
        const auto shown = FriendlyError::make(*error, QStringLiteral("Step"));
        QCOMPARE(shown.message, QStringLiteral("Your disk is full. Free some space and try again."));
        QCOMPARE(shown.details, QStringLiteral("Step\nNSPOSIXErrorDomain 28\nNo space left on device"));
    }

private Q_SLOTS:
    void copyingLeavesNothing()
    {
        const FullDisk disk;
        const auto source = disk.sandbox.scratch() / "source";
        writeSparse(source, "x", 1'000'000);
        verifyFull(failureOf<std::system_error>([&] {
            Files::copy(source, Paths::gameFile());
            return 0;
        }));
        QVERIFY(disk.isEmpty());
    }

    void writingAtomicallyKeepsTheOldFile()
    {
        const FullDisk disk;
        writeFile(Paths::aresVersion(), "v1");
        verifyFull(failureOf<std::system_error>([&] {
            Files::writeAtomically(Paths::aresVersion(), QByteArray(1'000'000, 'x'));
            return 0;
        }));
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v1"));
        QCOMPARE(Sandbox::storage().size(), 1);
    }

    void aDownloadKeepsTheOldFileAndEndsTheTransfer()
    {
        const FullDisk disk;
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 64000000\r\n\r\n");
            connection.sendEndlessly(QByteArray(64'000, 'x'), 64'000'000);
        });
        writeFile(Paths::gameFile(), "old");
        FileDownloader downloader(Paths::gameFile(), noProgress);
        verifyFull(failureOf<std::system_error>(
            [&] { return resultOf(downloader.download(QNetworkRequest(server.url()), {})); }));
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("old"));
        QCOMPARE(Sandbox::storage().size(), 1);
        QVERIFY(server.connections().front()->sent() < 32'000'000);
    }

    void aGameDownloadLeavesTheInstalledGameAndNoWorkFolder()
    {
        const FullDisk disk;
        RawServer* store = nullptr;
        RawServer server([&](RawConnection& connection, const RawRequest& request) {
            if (request.path == "/quillet64")
                connection.send(httpAnswer(200, "name=\"csrf_token\" value=\"t\" data-upload_id=\"1\""));
            else if (request.verb == "POST")
                connection.send(
                    httpAnswer(200, "{\"url\":\"" + store->url(QStringLiteral("/rom")).toEncoded() + "\"}"));
            else
                connection.send(httpAnswer(200, bigEndianHeader + QByteArray(10'000'000, 'x')));
            connection.close();
        });
        store = &server;
        TestOrigins::setStore(server.url(QString()));
        writeFile(Paths::gameFile(), "old");
        verifyFull(
            failureOf<std::system_error>([&] { return resultOf(GameDownloader::download(noProgress, {})); }));
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("Quillet64.z64")});
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("old"));
    }

    void aGameFileGivenByHandIsToldInTheFullDisksOwnWords()
    {
        const FullDisk disk;
        const auto file = disk.sandbox.scratch() / "mine.z64";
        writeFile(file, bigEndianHeader + QByteArray(10'000'000, 'x'));
        AppModel model;
        model.chooseExistingGameFile();
        model.openPanel()->confirm(QUrl::fromLocalFile(toText(file)));
        QCOMPARE(model.errorMessage(), QStringLiteral("Your disk is full. Free some space and try again."));
        QCOMPARE(model.errorDetails().section(u'\n', 0, 0), QStringLiteral("Adding the game file"));
        QVERIFY(disk.isEmpty());
    }

    void anEntryThatAResetCannotDeleteDoesNotKeepTheOthers()
    {
        const Sandbox sandbox;
        for (const auto& folder : {Paths::ares(), Paths::aresOld(), Paths::aresNew()})
            fs::create_directories(folder);
        writeFile(Paths::gameFile(), "game");
        writeFile(Paths::aresVersion(), "v147");
        // A folder that a volume is mounted on is in use.
        const SmallVolume volume(Paths::ares(), 4096);
        AppModel model;
        model.reset();
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("Ares")});
        QCOMPARE(model.notice(),
                 QStringLiteral("Everything was deleted. The next click downloads it again."));
    }

    void movingToAnotherVolumeIsNotAMove()
    {
        const FullDisk disk;
        const auto source = disk.sandbox.scratch() / "source";
        writeFile(source, "x");
        const auto error = failureOf<std::system_error>([&] {
            Files::move(source, Paths::gameFile());
            return 0;
        });
        QVERIFY(error);
        QCOMPARE(error->code().value(), EXDEV);
        QVERIFY(fs::exists(source));
        QVERIFY(disk.isEmpty());
    }

    void aStorageFolderOnAVolumeOfItsOwnServesAllTheSame()
    {
        const FullDisk disk;
        const RawServer server(httpAnswer(200, "small"));
        FileDownloader downloader(Paths::gameFile(), noProgress);
        static_cast<void>(resultOf(downloader.download(QNetworkRequest(server.url()), {})));
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("small"));
    }
};

int main(int argc, char** argv)
{
    return runWithSmallVolumes<FullDiskTest>(argc, argv);
}

#include "tst_FullDisk.moc"
