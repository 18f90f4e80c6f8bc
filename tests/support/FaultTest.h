// SPDX-License-Identifier: MIT
#pragma once

#include "support/FlowTest.h"

#include <array>

namespace cartloom
{

/// What the player is told of a failure.
struct Failure
{
    QString message;
    QString details;
};

/// The failure with which the network layer's error of this code ends a step.
[[nodiscard]] Failure networkFailure(const QString& step, int code);
/// The failure with which the system's error of this number ends a step, with the system's own words for it.
[[nodiscard]] Failure systemFailure(const QString& step, int number);

/// One of the five answers that a first press waits for.
struct Wait
{
    const char* name;
    const char* path;
    const char* step;

    /// Whether the answer goes to a file as it comes, whatever its length.
    [[nodiscard]] bool isFile() const
    {
        return path == QByteArray(ScriptedSites::archive) || path == QByteArray(ScriptedSites::game);
    }
    [[nodiscard]] bool isForTheGame() const
    {
        return QLatin1String(step) == QLatin1String("Getting the game");
    }
};

inline constexpr std::array waits{
    Wait{"release lookup", ScriptedSites::latest, "Getting Ares"},
    Wait{"emulator's download", ScriptedSites::archive, "Getting Ares"},
    Wait{"store's page", ScriptedSites::page, "Getting the game"},
    Wait{"store's form", ScriptedSites::form, "Getting the game"},
    Wait{"game's download", ScriptedSites::game, "Getting the game"},
};

/// Faults, and the whole of how they end: what is shown, every file of the player's, what is left behind, and
/// that the next press plays. Temporary files of the program and its children go to a folder of the test's
/// own.
class FaultTest : public FlowTest
{
    Q_OBJECT

protected:
    /// A row for each of the waits, with the wait as its value: "07 reset: emulator's download".
    static void addRowForEachWait(const char* fault);

    /// Installs what the wait is not for, so that a press comes to it.
    void arrangeFor(const Wait& wait);

    /// Makes the answer to a wait come from another origin, where it has the same path.
    void serveFrom(const Wait& wait, const QUrl& origin);

    /// Takes down every file that the player has.
    void remember();
    /// Takes it down, presses the button, and waits for the end.
    void press();
    /// Takes it down, looks for a newer emulator, installs it and waits for the end.
    void update();
    /// Chooses a file in the panel for the game file.
    void chooseGameFile(const std::filesystem::path& file);
    /// Chooses a file in the panel for any ROM.
    void chooseROM(const std::filesystem::path& file);

    /// Checks that nothing is under way and that no work folder is left, but for one that is known of.
    void isAtRestWithoutTraces(const QString& known = {});

    /// Checks that the model rests and shows this failure and nothing else.
    void shows(const Failure& failure, bool ofTheGameDownload = false);
    /// Checks that every file is as it was taken down, and that nothing was left behind.
    void nothingChanged();
    /// Makes the sites work again and checks that a press plays and comes to rest with all in its place.
    void nextPressPlays();
    /// As nextPressPlays, with whatever the sites say now.
    void pressPlays();

    /// How an answer with this body, which is not what was asked for, is told at a wait. To be called while
    /// the sites' own answer is still there.
    [[nodiscard]] Failure unusable(const Wait& wait, const QByteArray& body) const;

    /// A press at this wait fails in this way, changes nothing, and the next one plays.
    void pressFailsWith(const Wait& wait, const Failure& failure);

    static void removeStorage();
    /// A folder with a file that nothing must touch, beside the home.
    [[nodiscard]] std::filesystem::path outside() const { return m_sandbox->scratch() / "outside"; }
    [[nodiscard]] std::filesystem::path temporary() const { return m_sandbox->root() / "tmp"; }
    [[nodiscard]] static QByteArray installedTag();
    [[nodiscard]] QString message() const { return m_model->errorMessage().value_or(QStringLiteral("none")); }

protected Q_SLOTS:
    void init();
    void cleanup();

private:
    [[nodiscard]] QStringList everyFile() const;

    QByteArray m_formerTemporary;
    QStringList m_before;
};

} // namespace cartloom

Q_DECLARE_METATYPE(cartloom::Wait)
