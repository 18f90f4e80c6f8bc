// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "errors/FriendlyError.h"
#include "game/GameDownloader.h"
#include "game/RomCheck.h"
#include "platform/Files.h"
#include "platform/Text.h"

namespace cartloom
{

void AppModel::chooseExistingGameFile()
{
    if (!canStart())
        return;
    m_openPanel.open({QStringLiteral("Choose Quillet64.z64"), {}, {}},
                     [this](const std::filesystem::path& file) { addGameFile(file); });
}

void AppModel::openROM()
{
    if (!canStart())
        return;
    m_openPanel.open({QStringLiteral("Choose a Nintendo 64 game"),
                      QStringLiteral("Pick a .z64 or .v64 ROM file."),
                      {QStringLiteral("z64"), QStringLiteral("v64"), QStringLiteral("n64")}},
                     [this](const std::filesystem::path& rom) { playROM(rom); });
}

void AppModel::openDropped(const QList<QUrl>& addresses)
{
    if (!canStart())
        return;
    if (addresses.size() != 1) {
        clearMessages();
        errorMessage = QStringLiteral("Drop one game file at a time.");
        return;
    }
    const auto file = toPath(addresses.first());
    if (!file || Files::isFolder(*file)) {
        clearMessages();
        errorMessage = QStringLiteral("Drop a game file that is on this computer.");
        return;
    }
    playROM(*file);
}

void AppModel::addGameFile(const std::filesystem::path& file)
{
    // Something else may have begun while the panel was open.
    if (!canStart())
        return;
    try {
        RomCheck::validate(file, true);
        GameDownloader::install(file, true);
        clearMessages();
        refreshState();
        notice = QStringLiteral("Game file added. Press the button to play.");
    } catch (const std::exception& error) {
        showError(FriendlyError::make(error, phraseFor(Step::addingGameFile)));
    }
}

void AppModel::playROM(const std::filesystem::path& rom)
{
    if (!canStart())
        return;
    clearMessages();
    try {
        RomCheck::validate(rom, false);
    } catch (const std::exception& error) {
        showError(FriendlyError::make(error, phraseFor(Step::checkingROM)));
        return;
    }
    start(rom, true);
}

} // namespace cartloom
