// SPDX-License-Identifier: MIT
// player SCRATCH ORIGIN OPERATION: one operation of the launcher, without a window, in a process of its own.
// The home folder is the environment's, ORIGIN is asked for everything. Ends with status 0 when the model has
// come to rest, whatever it then says; and "aftermath" only if all is as it must be after any interruption.
// SCRATCH holds
//   whole/TAG   the tree of each release, as it is installed
//   games       every game file that there may be
// and the emulator's program writes its tag to SCRATCH/played and then waits for SCRATCH/go.
#include "core/AppModel.h"
#include "emulator/AresInstaller.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "storage/Removal.h"
#include "support/ModelProbe.h"
#include "support/ResultOf.h"
#include "support/TestOrigins.h"
#include "support/TreeText.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QtTest>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

namespace
{

constexpr int patience = 60'000;
constexpr StartedAres updated{.isOwn = true, .justUpdated = true};

[[noreturn]] void fail(const QString& reason)
{
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    // The emulator must not wait for ever.
    std::_Exit(EXIT_FAILURE);
}

void require(bool condition, const QString& reason)
{
    if (!condition)
        fail(reason);
}

QByteArray contentsOf(const fs::path& path)
{
    QFile file(toText(path));
    require(file.open(QFile::ReadOnly), QStringLiteral("cannot read ") + toText(path));
    return file.readAll();
}

class Player
{
public:
    explicit Player(fs::path scratch)
        : m_scratch(std::move(scratch))
    {
    }

    /// Presses the button and lets the emulator, if it comes to that, end with a failure.
    void press()
    {
        startPlaying();
        endPlaying();
    }

    void update()
    {
        const auto release = resultOf(AresInstaller::fetchLatest());
        m_model.installUpdate(release);
        comeToRest();
    }

    /// The emulator has run long enough.
    void commit()
    {
        m_model.didExit({0, 3.0, QString()}, updated);
        const bool cleared = QTest::qWaitFor([this] { return !m_model.hasWorkUnderWay(); }, patience);
        require(cleared, QStringLiteral("never done with clearing away"));
    }
    /// The emulator has ended at once.
    void rollBack() { m_model.didExit({1, 0.1, QStringLiteral("broken")}, updated); }
    void reset() { m_model.reset(); }

    void importGame()
    {
        m_model.chooseExistingGameFile();
        m_model.openPanel()->confirm(QUrl::fromLocalFile(toText(m_scratch / "games/imported")));
    }

    /// Whatever has happened before: the next press plays a whole copy of the emulator and of the game. When
    /// that run fails, what stays or is put back is whole as well. And nothing is left over after the next
    /// download.
    void faceTheAftermath()
    {
        for (int time = 0; time < 2; ++time) {
            startPlaying();
            require(m_model.stage() == Stage::playing,
                    QStringLiteral("does not play: ") + m_model.errorMessage().value_or(QString()));
            const auto tag = QString::fromUtf8(contentsOf(m_scratch / "played"));
            requireWhole(tag);
            requireTrueVersion();
            endPlaying();
        }
        update();
        require(m_model.notice().value_or(QString()).contains(QLatin1String("is installed")),
                QStringLiteral("no update: ") + m_model.errorMessage().value_or(QString()));
        requireNothingLeftOver();
        require(contentsOf(Paths::support() / "Quillet64.eeprom") == "progress",
                QStringLiteral("the player's progress is lost"));
    }

    /// What the model says at the end.
    [[nodiscard]] QString words() const
    {
        return m_model.errorMessage().value_or(m_model.notice().value_or(QString()));
    }

private:
    void startPlaying()
    {
        for (const auto* mark : {"played", "go"})
            Removal::tryRemove(m_scratch / mark);
        m_model.play();
        const bool comes = QTest::qWaitFor(
            [this] {
                const bool over = m_model.stage() == Stage::idle && ModelProbe::task(m_model)->hasBegun();
                return over || Files::exists(m_scratch / "played");
            },
            patience);
        require(comes, QStringLiteral("the press leads nowhere"));
    }

    void endPlaying()
    {
        QFile go(toText(m_scratch / "go"));
        require(go.open(QFile::WriteOnly), QStringLiteral("cannot let the emulator go"));
        comeToRest();
    }

    void comeToRest()
    {
        const bool rests = QTest::qWaitFor(
            [this] {
                return m_model.stage() == Stage::idle && ModelProbe::task(m_model)->hasBegun() &&
                       !m_model.hasWorkUnderWay();
            },
            patience);
        require(rests, QStringLiteral("never comes to rest"));
    }

    void requireWhole(const QString& tag) const
    {
        const auto expected = m_scratch / "whole" / toPath(tag);
        require(!tag.isEmpty() && fs::exists(expected), QStringLiteral("no release is called ") + tag);
        require(treeText(Paths::ares()) == treeText(expected), tag + QStringLiteral(" is not whole"));
        const auto played = contentsOf(Paths::gameFile());
        bool known = false;
        for (const auto& game : fs::directory_iterator(m_scratch / "games"))
            known = known || contentsOf(game.path()) == played;
        require(known, QStringLiteral("the game is not whole"));
    }

    void requireTrueVersion() const
    {
        const auto version = AresInstaller::installedVersion();
        require(!version || QDir(toText(m_scratch / "whole")).entryList().contains(*version),
                QStringLiteral("no release has the recorded tag"));
    }

    static void requireNothingLeftOver()
    {
        const QStringList allowed{QStringLiteral("Ares"), QStringLiteral("Ares-old"),
                                  QStringLiteral("Quillet64.eeprom"), QStringLiteral("Quillet64.z64"),
                                  QStringLiteral("ares-version.txt")};
        const auto entries =
            QDir(toText(Paths::support()))
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        for (const auto& entry : entries)
            require(allowed.contains(entry), QStringLiteral("left over: ") + entry);
    }

    const fs::path m_scratch;
    const std::shared_ptr<AppModel> m_modelOwner = AppModel::create();
    AppModel& m_model = *m_modelOwner;
};

} // namespace

int main(int argc, char* argv[])
{
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication::setApplicationName(QStringLiteral("Cartloom"));
    QCoreApplication::setOrganizationName(QStringLiteral("Cartloom"));
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    require(arguments.size() == 4, QStringLiteral("player SCRATCH ORIGIN OPERATION"));
    TestOrigins::setReleaseApi(QUrl(arguments[2]));
    TestOrigins::setStore(QUrl(arguments[2]));

    Player player(toPath(arguments[1]));
    const std::map<QString, void (Player::*)()> operations{
        {QStringLiteral("press"), &Player::press},
        {QStringLiteral("update"), &Player::update},
        {QStringLiteral("commit"), &Player::commit},
        {QStringLiteral("rollback"), &Player::rollBack},
        {QStringLiteral("import"), &Player::importGame},
        {QStringLiteral("reset"), &Player::reset},
        {QStringLiteral("aftermath"), &Player::faceTheAftermath}};
    const auto operation = operations.find(arguments[3]);
    require(operation != operations.end(), QStringLiteral("there is no ") + arguments[3]);
    (player.*operation->second)();
    std::printf("%s\n", qPrintable(player.words()));
    return EXIT_SUCCESS;
}
