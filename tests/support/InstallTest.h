// SPDX-License-Identifier: MIT
#pragma once

#include "core/Paths.h"
#include "emulator/AresInstaller.h"
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/Failures.h"
#include "support/ResultOf.h"
#include "support/Sandbox.h"

#include <QObject>

#include <memory>

namespace cartloom
{

/// A sandbox for each test, and releases of Ares that are packed and installed in it.
class InstallTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<Sandbox> m_sandbox;

    std::filesystem::path archive() const { return m_sandbox->scratch() / "release.zip"; }

    /// A release whose archive holds an ares.app at a place, marked with its tag.
    AresRelease makeRelease(const QString& tag, const std::filesystem::path& place = {}) const
    {
        const auto tree = m_sandbox->scratch() / ("tree-" + tag.toStdString());
        std::filesystem::create_directories(tree / place);
        writeFile(makeAresApp(tree / place) / "tag", tag.toUtf8());
        return packRelease(tag, tree);
    }

    AresRelease packRelease(const QString& tag, const std::filesystem::path& tree) const
    {
        zipFolder(tree, archive());
        return {tag, QStringLiteral("ares-macos-universal.zip"), QUrl::fromLocalFile(toText(archive())),
                static_cast<qint64>(std::filesystem::file_size(archive()))};
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
    void init() { m_sandbox = std::make_unique<Sandbox>(); }

    void cleanup()
    {
        if (std::filesystem::exists(Paths::support()))
            std::filesystem::permissions(Paths::support(), std::filesystem::perms::owner_all);
        m_sandbox.reset();
    }
};

} // namespace cartloom
