// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "game/FriendlyError.h"
#include "game/GameDownloader.h"
#include "game/RomCheck.h"
#include "platform/Files.h"
#include "platform/Text.h"

namespace cartloom
{

void AppModel::chooseExistingGameFile()
{
    if (!isAtRest())
        return;
    m_openPanel.open({QStringLiteral("Choose Quillet64.z64"), {}, {}},
                     [this](const std::filesystem::path& file) { addGameFile(file); });
}

void AppModel::openROM()
{
    if (!isAtRest())
        return;
    m_openPanel.open({QStringLiteral("Choose a Nintendo 64 game"),
                      QStringLiteral("Pick a .z64 or .v64 ROM file."),
                      {QStringLiteral("z64"), QStringLiteral("v64"), QStringLiteral("n64")}},
                     [this](const std::filesystem::path& rom) { playROM(rom); });
}

void AppModel::openDropped(const QList<QUrl>& addresses)
{
    if (!isAtRest())
        return;
    if (addresses.size() != 1) {
        clearMessages();
        m_errorMessage = QStringLiteral("Drop one game file at a time.");
        return;
    }
    const auto file = toPath(addresses.first().toLocalFile());
    if (!addresses.first().isLocalFile() || Files::isFolder(file)) {
        clearMessages();
        m_errorMessage = QStringLiteral("Drop a game file that is on this computer.");
        return;
    }
    playROM(file);
}

void AppModel::addGameFile(const std::filesystem::path& file)
{
    // Something else may have begun while the panel was open.
    if (!isAtRest())
        return;
    try {
        RomCheck::validate(file, true);
        GameDownloader::install(file, true);
        clearMessages();
        refreshState();
        m_notice = QStringLiteral("Game file added. Press the button to play.");
    } catch (const std::exception& error) {
        showError(FriendlyError::make(error, QStringLiteral("Adding the game file")));
    }
}

void AppModel::playROM(const std::filesystem::path& rom)
{
    if (!isAtRest())
        return;
    clearMessages();
    try {
        RomCheck::validate(rom, false);
    } catch (const std::exception& error) {
        showError(FriendlyError::make(error, QStringLiteral("Checking the ROM")));
        return;
    }
    start(rom, true);
}

} // namespace cartloom
