// SPDX-License-Identifier: MIT
#pragma once

#include "support/RawServer.h"

#include <filesystem>
#include <map>
#include <set>

namespace cartloom
{

/// The release service and the store on one server, which answer well until a test replaces an answer. Sets
/// itself as the origin of both. The release is an ares.app with the scripted child. Needs a Sandbox.
class ScriptedSites
{
public:
    static constexpr auto latest = "/repos/ares-emulator/ares/releases/latest";
    static constexpr auto archive = "/ares.zip";
    static constexpr auto page = "/quillet64";
    static constexpr auto form = "/quillet64/file/42?source=game_download";
    static constexpr auto game = "/game.z64";

    explicit ScriptedSites(const std::filesystem::path& scratch, const QByteArray& tag = "v147");

    /// Whole answers by path; a path that is not here is not found. An answer that is empty never comes.
    std::map<QByteArray, QByteArray> answers;
    /// What is done instead of answering, by path.
    std::map<QByteArray, RawServer::Respond> scripts;

    /// Publishes this archive as the download of a release of its size.
    void publish(const QByteArray& zip, const QByteArray& tag = "v147");
    /// The service's answer for a release with one download.
    [[nodiscard]] static QByteArray release(const QByteArray& tag, qint64 size, const QUrl& address);
    /// The form's answer for a file.
    [[nodiscard]] static QByteArray link(const QUrl& address);

    [[nodiscard]] QByteArray body(const char* path) const;
    [[nodiscard]] QUrl url(const char* path) const { return m_server.url(QLatin1String(path)); }

    /// Makes everything work again, whatever was changed.
    void mend();

    [[nodiscard]] const std::vector<RawRequest>& requests() const { return m_server.requests(); }
    [[nodiscard]] const RawConnection& lastConnection() const { return *m_server.connections().back(); }

    /// Paths whose connection stays open after the answer, as if more were to come.
    std::set<QByteArray> heldOpen;

    /// What the sites are asked under.
    [[nodiscard]] QUrl origin() const { return m_server.url(QString()); }

    /// Whether everyone who asked has gone.
    [[nodiscard]] bool isDeserted() const;

    /// The paths that were asked for, in order.
    [[nodiscard]] QStringList asked() const;

private:
    RawServer m_server;
    std::map<QByteArray, QByteArray> m_good;
};

} // namespace cartloom
