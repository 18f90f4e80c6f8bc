// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

#include <filesystem>
#include <memory>

namespace cartloom
{

/// The two web sites that the launcher asks, in this process and on this machine: the releases of the
/// emulator with their downloads, and the game's store page with its form. They refuse what the real ones
/// would refuse. Any thread; serves on threads of its own for as long as the object lives.
class StandInSites
{
public:
    struct Content
    {
        /// The archive that the newest release offers for macOS. Read from the disk as it is sent.
        std::filesystem::path emulatorArchive;
        /// The game that the store offers. Read from the disk as it is sent.
        std::filesystem::path game;
        QString tag = QStringLiteral("v148");
        /// How fast the two files are sent; 0 for as fast as it goes.
        qint64 bytesPerSecond = 0;
        /// The port of 127.0.0.1 to listen on; 0 for any that is free.
        int port = 0;
    };

    /// Listens. Throws std::system_error when a file is missing or the port is not to be had.
    explicit StandInSites(Content content);
    ~StandInSites();
    StandInSites(const StandInSites&) = delete;
    StandInSites& operator=(const StandInSites&) = delete;

    /// Scheme, host and port, the same for both sites.
    [[nodiscard]] QUrl origin() const;

    /// How many requests have come in so far, refused ones included.
    [[nodiscard]] int requests() const;

private:
    class Server;
    std::unique_ptr<Server> m_server;
};

} // namespace cartloom
