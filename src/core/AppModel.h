// SPDX-License-Identifier: MIT
#pragma once

#include "core/OpenPanel.h"
#include "core/Published.h"
#include "core/TaskHandle.h"
#include "emulator/AresRelease.h"
#include "emulator/Launcher.h"
#include "game/AppError.h"
#include "game/ProgressCallback.h"

#include <QObject>
#include <QUrl>
#include <QVariant>
#include <QtQmlIntegration>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>

namespace cartloom
{

/// Everything that the window shows, and everything that the player can do. The application makes the one
/// instance and owns it. Main thread only. No operation throws: failures end in the message fields.
class AppModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application owns the one model.")

    /// The stage by its name, because QML cannot name an enumerator that begins with a small letter.
    Q_PROPERTY(QString stage READ stageName NOTIFY stageChanged)
    Q_PROPERTY(bool canCancel READ canCancel NOTIFY stageChanged)
    Q_PROPERTY(QVariant fraction READ fractionVariant NOTIFY fractionChanged)
    Q_PROPERTY(QString detailLine READ detailLine NOTIFY detailLineChanged)
    Q_PROPERTY(QVariant errorMessage READ errorMessageVariant NOTIFY errorMessageChanged)
    Q_PROPERTY(QString errorDetails READ errorDetails NOTIFY errorDetailsChanged)
    Q_PROPERTY(bool gameDownloadFailed READ gameDownloadFailed NOTIFY gameDownloadFailedChanged)
    Q_PROPERTY(QVariant notice READ noticeVariant NOTIFY noticeChanged)
    Q_PROPERTY(QVariant offerExternal READ offerExternalVariant NOTIFY offerExternalChanged)
    Q_PROPERTY(QVariant updateOffer READ updateOfferVariant NOTIFY updateOfferChanged)
    Q_PROPERTY(bool confirmReset READ confirmReset WRITE setConfirmReset NOTIFY confirmResetChanged)
    Q_PROPERTY(bool setupDone READ setupDone NOTIFY setupDoneChanged)
    Q_PROPERTY(QVariant aresVersion READ aresVersionVariant NOTIFY aresVersionChanged)
    Q_PROPERTY(bool usingExternalAres READ usingExternalAres NOTIFY usingExternalAresChanged)
    Q_PROPERTY(bool fullscreen READ fullscreen WRITE setFullscreen NOTIFY fullscreenChanged)
    Q_PROPERTY(cartloom::OpenPanel* openPanel READ openPanel CONSTANT)
    Q_PROPERTY(QString emulatorSite READ emulatorSite CONSTANT)
    Q_PROPERTY(QUrl storePage READ storePage CONSTANT)

public:
    /// The phase that the launcher is in.
    enum class Stage {
        /// Nothing is running; the messages of the last run stay visible.
        idle,
        /// The emulator is being looked up, downloaded or installed.
        gettingAres,
        /// The game is being fetched from its store page.
        gettingGame,
        /// Both are there and the emulator is being started.
        starting,
        /// The emulator is running.
        playing,
    };
    Q_ENUM(Stage)

    using TimePoint = std::chrono::steady_clock::time_point;
    using Clock = std::function<TimePoint()>;

    /// Reads the preferences and looks at what is installed. The clock is what speeds are measured by.
    explicit AppModel(Clock clock = std::chrono::steady_clock::now);

    // The state that is shown.

    [[nodiscard]] Stage stage() const { return m_stage.value(); }
    /// Progress of a download from 0.0 to 1.0; none when no bar can be drawn.
    [[nodiscard]] const std::optional<double>& fraction() const { return m_fraction.value(); }
    [[nodiscard]] const QString& detailLine() const { return m_detailLine.value(); }
    [[nodiscard]] const std::optional<QString>& errorMessage() const { return m_errorMessage.value(); }
    [[nodiscard]] const QString& errorDetails() const { return m_errorDetails.value(); }
    [[nodiscard]] bool gameDownloadFailed() const { return m_gameDownloadFailed.value(); }
    [[nodiscard]] const std::optional<QString>& notice() const { return m_notice.value(); }
    /// A copy of the emulator found on the machine, while the player is asked whether to use it.
    [[nodiscard]] const std::optional<std::filesystem::path>& offerExternal() const
    {
        return m_offerExternal.value();
    }
    /// A newer release, while the player is asked whether to install it.
    [[nodiscard]] const std::optional<AresRelease>& updateOffer() const { return m_updateOffer.value(); }
    [[nodiscard]] bool confirmReset() const { return m_confirmReset.value(); }
    /// Whether the next press starts playing at once.
    [[nodiscard]] bool setupDone() const { return m_setupDone.value(); }
    /// The version of the emulator that this program installed; none while another one is used.
    [[nodiscard]] const std::optional<QString>& aresVersion() const { return m_aresVersion.value(); }
    [[nodiscard]] bool usingExternalAres() const { return m_usingExternalAres.value(); }
    [[nodiscard]] bool fullscreen() const { return m_fullscreen.value(); }
    [[nodiscard]] bool canCancel() const
    {
        return stage() == Stage::gettingAres || stage() == Stage::gettingGame;
    }

    /// The game's store page, for a browser.
    [[nodiscard]] static QUrl storePage();

    /// Through which the player is asked for a file.
    [[nodiscard]] OpenPanel* openPanel() { return &m_openPanel; }
    /// The domain name of the emulator's web site.
    [[nodiscard]] static QString emulatorSite();

    /// Whether something is being fetched, installed or cleared away, shown or not.
    [[nodiscard]] bool hasWorkUnderWay() const;

    // What the window sets.

    void setFullscreen(bool fullscreen);
    void setConfirmReset(bool confirm) { m_confirmReset = confirm; }
    Q_INVOKABLE void clearOfferExternal() { m_offerExternal = std::nullopt; }
    Q_INVOKABLE void clearUpdateOffer() { m_updateOffer = std::nullopt; }

    // What the player can do.

    /// Starts the flow that ends with the game running: with a ROM of the player's own, or with the saved
    /// game. Nothing happens unless nothing is running.
    void start(std::optional<std::filesystem::path> customROM, bool allowExternalOffer);
    /// The main button.
    Q_INVOKABLE void play() { start(std::nullopt, true); }
    /// Accepts a copy of the emulator as the player's own from now on, and goes on with what was asked for.
    void useExistingAres(const std::filesystem::path& app);
    Q_INVOKABLE void useExistingAres(const QString& app);
    /// Turns the offered copy down and goes on with what was asked for, by a download.
    Q_INVOKABLE void downloadAresInstead();
    /// Turns the offered copy down and forgets what was asked for.
    Q_INVOKABLE void dismissOffer() { m_pendingROM.reset(); }
    /// Cancels the running task.
    Q_INVOKABLE void cancel();
    /// Asks for a ROM of the player's own and plays it; it is not copied.
    Q_INVOKABLE void openROM();
    /// As if the one file that was dropped on the window had been chosen for openROM.
    Q_INVOKABLE void openDropped(const QList<QUrl>& addresses);
    /// Asks for a copy of the game that the player has, and installs it.
    Q_INVOKABLE void chooseExistingGameFile();
    /// Looks whether there is another release than the installed one, and offers it. Cannot be cancelled.
    Q_INVOKABLE void checkForUpdate();
    /// Installs an offered release; the installed copy is kept until the new one has started once.
    Q_INVOKABLE void installUpdate(const cartloom::AresRelease& release);
    /// Shows the storage folder in the system's file browser.
    Q_INVOKABLE void revealStorage();
    /// Deletes all that was downloaded and forgets the player's own choice of an emulator. Never fails.
    Q_INVOKABLE void reset();

    // The parts of the play flow.

    /// Never throws; the model may be gone before it ends.
    [[nodiscard]] QCoro::Task<void> runFlow(std::optional<std::filesystem::path> customROM,
                                            bool allowExternalOffer, CancellationToken token);
    /// Judges how the emulator ended; to be called once a run.
    void didExit(const LaunchResult& result, bool justUpdated);

    // What the operations share.

    /// Recomputes what is derived from the disk and the preferences.
    void refreshState();
    /// Removes the messages of the last run.
    void clearMessages();
    /// The emulator to start: the player's own choice before the installed one.
    [[nodiscard]] std::optional<std::filesystem::path> locateAres() const;
    /// The emulator that the player chose, while something exists there.
    [[nodiscard]] std::optional<std::filesystem::path> externalPreference() const;

    /// Resets the progress at the start of a download.
    void beginProgress();
    /// Applies one report: bytes received, and bytes expected, below 1 when unknown.
    void progress(qint64 received, qint64 expected);
    /// Reports to this model from any thread, every report once and in order, for as long as the model
    /// exists.
    [[nodiscard]] ProgressCallback progressCallback();

Q_SIGNALS:
    /// Before each write to a published field.
    void objectWillChange();
    void stageChanged();
    void fractionChanged();
    void detailLineChanged();
    void errorMessageChanged();
    void errorDetailsChanged();
    void gameDownloadFailedChanged();
    void noticeChanged();
    void offerExternalChanged();
    void updateOfferChanged();
    void confirmResetChanged();
    void setupDoneChanged();
    void aresVersionChanged();
    void usingExternalAresChanged();
    void fullscreenChanged();

private:
    /// Puts the model into any state, for tests.
    friend class ModelProbe;

    template <typename T>
    using Field = Published<AppModel, T>;

    [[nodiscard]] QString stageName() const;
    [[nodiscard]] QVariant fractionVariant() const;
    [[nodiscard]] QVariant errorMessageVariant() const;
    [[nodiscard]] QVariant noticeVariant() const;
    [[nodiscard]] QVariant offerExternalVariant() const;
    [[nodiscard]] QVariant updateOfferVariant() const;
    [[nodiscard]] QVariant aresVersionVariant() const;

    [[nodiscard]] bool isAtRest() const;
    [[nodiscard]] QCoro::Task<std::filesystem::path> downloadAres(CancellationToken token);
    [[nodiscard]] QCoro::Task<std::filesystem::path> downloadGame(CancellationToken token);
    [[nodiscard]] std::filesystem::path checkedSavedGame();
    void launchAres(const std::optional<std::filesystem::path>& app,
                    const std::optional<std::filesystem::path>& rom);
    [[nodiscard]] QCoro::Task<void> lookForUpdate();
    [[nodiscard]] QCoro::Task<void> runUpdate(AresRelease release, CancellationToken token);
    void addGameFile(const std::filesystem::path& file);
    void playROM(const std::filesystem::path& rom);
    void showError(const AppError& error);
    void failFlow(const std::exception& error, QLatin1String step);

    const Clock m_clock;

    Field<Stage> m_stage{this, &AppModel::stageChanged, Stage::idle};
    Field<std::optional<double>> m_fraction{this, &AppModel::fractionChanged};
    Field<QString> m_detailLine{this, &AppModel::detailLineChanged};
    Field<std::optional<QString>> m_errorMessage{this, &AppModel::errorMessageChanged};
    Field<QString> m_errorDetails{this, &AppModel::errorDetailsChanged};
    Field<bool> m_gameDownloadFailed{this, &AppModel::gameDownloadFailedChanged};
    Field<std::optional<QString>> m_notice{this, &AppModel::noticeChanged};
    Field<std::optional<std::filesystem::path>> m_offerExternal{this, &AppModel::offerExternalChanged};
    Field<std::optional<AresRelease>> m_updateOffer{this, &AppModel::updateOfferChanged};
    Field<bool> m_confirmReset{this, &AppModel::confirmResetChanged};
    Field<bool> m_setupDone{this, &AppModel::setupDoneChanged};
    Field<std::optional<QString>> m_aresVersion{this, &AppModel::aresVersionChanged};
    Field<bool> m_usingExternalAres{this, &AppModel::usingExternalAresChanged};
    Field<bool> m_fullscreen;

    Launcher m_launcher;
    OpenPanel m_openPanel;
    /// The running operation, or the last one.
    std::optional<TaskHandle> m_task;
    int m_checksForUpdate = 0;
    /// Ends when what was left over is gone.
    QFuture<void> m_clearing;
    /// What the player asked to play when the flow stopped to offer a copy of the emulator.
    std::optional<std::filesystem::path> m_pendingROM;

    // The last speed sample.
    TimePoint m_lastTick;
    qint64 m_lastBytes = 0;
    QString m_speedText;
};

} // namespace cartloom
