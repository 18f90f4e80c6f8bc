// SPDX-License-Identifier: MIT
#pragma once

#include "emulator/AresInstaller.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/ResultOf.h"
#include "support/Sandbox.h"

#include <QObject>

#include <memory>

namespace cartloom
{

/// A sandbox for each test, and a server with the release of Ares that was packed last.
class InstallTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<Sandbox> m_sandbox;
    std::unique_ptr<RawServer> m_server;

    /// The entries of the storage folder after a first installation.
    static inline const QStringList installed{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")};

    std::filesystem::path archive() const { return m_sandbox->scratch() / "release.zip"; }

    /// A release whose download is the archive, of this size by the release service.
    AresRelease release(const QString& tag, qint64 size) const
    {
        return {tag, QStringLiteral("ares-macos-universal.zip"), m_server->url().toEncoded().toStdString(),
                size};
    }

    /// A release whose archive holds an ares.app at a place, marked with its tag.
    AresRelease makeRelease(const QString& tag, const std::filesystem::path& place = {}) const
    {
        const auto tree = m_sandbox->scratch() / ("tree-" + tag.toStdString());
        std::filesystem::create_directories(tree / place);
        writeFile(makeAresApp(tree / place) / "tag", tag.toUtf8());
        zipFolder(tree, archive());
        return release(tag, static_cast<qint64>(std::filesystem::file_size(archive())));
    }

    static std::filesystem::path install(const AresRelease& release, CancellationToken token = {})
    {
        return resultOf(AresInstaller::install(
            release, [](qint64, qint64) {}, std::move(token)));
    }

    template <typename Error>
    static std::optional<Error> installFailure(const AresRelease& release,
                                               const CancellationToken& token = {})
    {
        return failureOf<Error>([&] { return install(release, token); });
    }

    static QByteArray tagOf(const std::filesystem::path& folder) { return readFile(folder / "ares.app/tag"); }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        m_server = std::make_unique<RawServer>([this](RawConnection& connection, const RawRequest&) {
            connection.send(httpAnswer(200, readFile(archive())));
            connection.close();
        });
    }

    void cleanup()
    {
        if (std::filesystem::exists(Paths::support()))
            std::filesystem::permissions(Paths::support(), std::filesystem::perms::owner_all);
        m_server.reset();
        m_sandbox.reset();
    }
};

} // namespace cartloom
