// SPDX-License-Identifier: MIT
#pragma once

#include "async/TaskHandle.h"
#include "core/OpenPanel.h"
#include "core/PathProbe.h"
#include "core/Published.h"
#include "core/Step.h"
#include "emulator/AresRelease.h"
#include "emulator/Launcher.h"
#include "errors/AppError.h"
#include "network/ProgressCallback.h"
#include "network/Timeouts.h"

#include <QObject>
#include <QUrl>
#include <QVariant>
#include <QtQmlIntegration>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace cartloom
{

/// Which copy of the emulator a run starts, decided before the start.
struct StartedAres
{
    /// False for a copy that the player installed, which is never committed and never replaced.
    bool isOwn = false;
    /// True if the copy has not proven itself since an update.
    bool justUpdated = false;
};

/// Everything that the window shows and everything that the player can do. The application creates the one
/// instance and owns it; a running flow keeps it alive. Main thread. No operation throws: failures end in the
/// message fields.
class AppModel : public QObject, public std::enable_shared_from_this<AppModel>
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application owns the one model.")

    Q_PROPERTY(QString stageTitle READ stageTitle NOTIFY stageChanged)
    Q_PROPERTY(bool atRest READ atRest NOTIFY stageChanged)
    Q_PROPERTY(bool showsProgress READ showsProgress NOTIFY stageChanged)
    Q_PROPERTY(bool canCancel READ canCancel NOTIFY stageChanged)
    Q_PROPERTY(QVariant fraction READ fraction NOTIFY fractionChanged)
    Q_PROPERTY(QString detailLine READ detailLine NOTIFY detailLineChanged)
    Q_PROPERTY(QVariant errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(QString errorDetails READ errorDetails NOTIFY errorDetailsChanged)
    Q_PROPERTY(bool gameDownloadFailed READ gameDownloadFailed NOTIFY gameDownloadFailedChanged)
    Q_PROPERTY(QVariant notice READ notice NOTIFY noticeChanged)
    Q_PROPERTY(QVariant offerExternal READ offerExternal NOTIFY offerExternalChanged)
    Q_PROPERTY(QVariant updateOffer READ updateOffer NOTIFY updateOfferChanged)
    Q_PROPERTY(bool confirmReset READ confirmReset WRITE setConfirmReset NOTIFY confirmResetChanged)
    Q_PROPERTY(bool setupDone READ setupDone NOTIFY setupDoneChanged)
    Q_PROPERTY(QVariant aresVersion READ aresVersion NOTIFY aresVersionChanged)
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

    /// Reads the preferences and looks at what is installed. Speeds are measured by the clock.
    [[nodiscard]] static std::shared_ptr<AppModel> create(Clock clock = std::chrono::steady_clock::now,
                                                          Timeouts timeouts = {});

    // The state that is shown.

    template <typename T>
    using Field = Published<AppModel, T>;

    Field<Stage> stage{this, &AppModel::stageChanged, Stage::idle};
    /// Progress of a download from 0.0 to 1.0; none if no bar can be drawn.
    Field<Optional<double>> fraction{this, &AppModel::fractionChanged};
    /// Bytes so far, total and speed.
    Field<QString> detailLine{this, &AppModel::detailLineChanged};
    Field<Optional<QString>> errorMessage{this, &AppModel::errorMessageChanged};
    Field<QString> errorDetails{this, &AppModel::errorDetailsChanged};
    Field<bool> gameDownloadFailed{this, &AppModel::gameDownloadFailedChanged};
    Field<Optional<QString>> notice{this, &AppModel::noticeChanged};
    /// A copy of the emulator found on the machine, while the player is asked whether to use it.
    Field<Optional<std::filesystem::path>> offerExternal{this, &AppModel::offerExternalChanged};
    /// A newer release, while the player is asked whether to install it.
    Field<Optional<AresRelease>> updateOffer{this, &AppModel::updateOfferChanged};
    Field<bool> confirmReset{this, &AppModel::confirmResetChanged};
    /// True if the next press starts playing at once.
    Field<bool> setupDone{this, &AppModel::setupDoneChanged};
    /// The version of the emulator that this program installed; none while another one is used.
    Field<Optional<QString>> aresVersion{this, &AppModel::aresVersionChanged};
    Field<bool> usingExternalAres{this, &AppModel::usingExternalAresChanged};

    [[nodiscard]] bool fullscreen() const { return m_fullscreen(); }

    // The stage as the window shows it.

    /// Empty in the stage idle.
    [[nodiscard]] QString stageTitle() const;
    /// True in the stage idle.
    [[nodiscard]] bool atRest() const;
    [[nodiscard]] bool showsProgress() const;
    [[nodiscard]] bool canCancel() const;

    /// The game's store page, for a browser.
    [[nodiscard]] static QUrl storePage();

    /// Asks the player for a file.
    [[nodiscard]] OpenPanel* openPanel() { return &m_openPanel; }
    /// The domain name of the emulator's web site.
    [[nodiscard]] static QString emulatorSite();

    /// True while anything is fetched, installed or deleted, whether it is shown or not.
    [[nodiscard]] bool hasWorkUnderWay() const;

    // What the window sets.

    void setFullscreen(bool fullscreen);
    void setConfirmReset(bool confirm) { confirmReset = confirm; }
    Q_INVOKABLE void clearOfferExternal() { offerExternal = std::nullopt; }
    Q_INVOKABLE void clearUpdateOffer() { updateOffer = std::nullopt; }

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
    /// Looks whether there is another release than the installed one, and offers it. Cannot be cancelled;
    /// waits for the look-up that is running, if there is one.
    Q_INVOKABLE void checkForUpdate();
    /// Installs an offered release; the installed copy is kept until the new one has started once.
    Q_INVOKABLE void installUpdate(const cartloom::AresRelease& release);
    /// Shows the storage folder in the system's file browser.
    Q_INVOKABLE void revealStorage();
    /// Deletes all that was downloaded and forgets the player's own choice of an emulator. Never fails.
    Q_INVOKABLE void reset();

    // The parts of the play flow.

    /// Never throws.
    [[nodiscard]] QCoro::Task<void> runFlow(std::optional<std::filesystem::path> customROM,
                                            bool allowExternalOffer, CancellationToken token);
    /// Commits or rolls back an update by how the emulator ended. Called once per run.
    void didExit(const LaunchResult& result, StartedAres started);

    // Shared by the operations.

    /// Recomputes what is derived from the disk and the preferences.
    void refreshState();
    /// Removes the messages of the last run.
    void clearMessages();
    /// The emulator to start: the player's own choice before the installed one.
    [[nodiscard]] std::optional<std::filesystem::path> locateAres();
    /// The emulator that the player chose, while something exists there. None while the volume that it lies
    /// on does not answer.
    [[nodiscard]] std::optional<std::filesystem::path> externalPreference();

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
    /// Reads and calls private members, for tests.
    friend class ModelProbe;

    AppModel(Clock clock, Timeouts timeouts);

    /// True if no flow is running or queued.
    [[nodiscard]] bool canStart() const;
    /// Runs a task that cannot be cancelled; the stage stays idle meanwhile.
    TaskHandle runInBackground(const TaskHandle::Body& body);
    /// Calls the function on the main thread, unless the model is gone by then. Any thread.
    static void postTo(std::weak_ptr<AppModel> model, std::function<void(AppModel&)> function);
    /// Looks whether the emulator that the player chose exists, if one is chosen.
    void askForChosenAres();
    /// As locateAres(), by the last answer.
    [[nodiscard]] std::optional<std::filesystem::path> knownAres() const;
    /// As refreshState(), by the last answer.
    void showState();
    /// As locateAres(), but waits for a volume which does not answer.
    [[nodiscard]] QCoro::Task<std::optional<std::filesystem::path>> awaitAres(CancellationToken token);
    [[nodiscard]] QCoro::Task<std::filesystem::path> downloadAres(CancellationToken token);
    [[nodiscard]] QCoro::Task<std::filesystem::path> downloadGame(CancellationToken token);
    [[nodiscard]] std::filesystem::path checkedSavedGame();
    void launchAres(const std::optional<std::filesystem::path>& app,
                    const std::optional<std::filesystem::path>& rom, StartedAres started);
    [[nodiscard]] QCoro::Task<void> lookForUpdate();
    [[nodiscard]] QCoro::Task<void> runUpdate(AresRelease release, CancellationToken token);
    void addGameFile(const std::filesystem::path& file);
    void playROM(const std::filesystem::path& rom);
    void showError(const AppError& error);
    void failFlow(const std::exception& error, Step step, StartedAres started);
    void endProgress();

    const Clock m_clock;
    const Timeouts m_timeouts;
    Field<bool> m_fullscreen;

    /// Asks for the player's choice of an emulator.
    PathProbe m_chosenAres;
    Launcher m_launcher;
    OpenPanel m_openPanel;
    /// The running flow, or the last one.
    std::optional<TaskHandle> m_task;
    std::vector<TaskHandle> m_backgroundTasks;
    /// The look-up of the newest release, or the last one.
    std::optional<TaskHandle> m_lookup;
    /// The ROM that the flow was started with before it stopped to offer a copy of the emulator.
    std::optional<std::filesystem::path> m_pendingROM;

    // The last speed sample.
    TimePoint m_lastTick;
    qint64 m_lastBytes = 0;
    QString m_speedText;
};

} // namespace cartloom
