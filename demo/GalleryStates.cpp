// SPDX-License-Identifier: MIT
#include "GalleryStates.h"

#include "GalleryWindow.h"

#include <tuple>

namespace cartloom
{

namespace
{

using Stage = AppModel::Stage;

constexpr QSize smallWindow(480, 600);
constexpr QSize largeWindow(900, 900);
constexpr qreal largerText = 1.5;

void beIdle(AppModel& /*model*/) {}

void beSetUp(AppModel& model)
{
    model.setupDone = true;
    model.aresVersion = QStringLiteral("v148");
}

void useExternal(AppModel& model)
{
    model.setupDone = true;
    model.usingExternalAres = true;
    model.setFullscreen(true);
}

void download(AppModel& model, Stage stage, std::optional<double> fraction, const QString& line)
{
    model.stage = stage;
    model.fraction = fraction;
    model.detailLine = line;
}

void downloadHalf(AppModel& model)
{
    download(model, Stage::gettingAres, 0.4, QStringLiteral("32 MB of 80 MB · 12.3 MB/s"));
}

void play(AppModel& model, Stage stage)
{
    beSetUp(model);
    model.stage = stage;
}

void fail(AppModel& model, const QString& details)
{
    beSetUp(model);
    model.errorMessage = QStringLiteral("Ares stopped right away (exit code 3).\n\nno such core");
    model.errorDetails = details;
}

QString longDetails()
{
    QStringList lines;
    for (int i = 1; i <= 30; ++i)
        lines.append(QStringLiteral("line %1: no such core, and none to take its place").arg(i));
    return lines.join(u'\n');
}

void failAtLength(AppModel& model)
{
    fail(model, longDetails());
}

void failInMoreWordsThanAreShown(AppModel& model)
{
    fail(model, {});
    model.errorMessage = QStringLiteral("no such core, and none to take its place; ").repeated(25'000);
}

void failToGetGame(AppModel& model)
{
    model.aresVersion = QStringLiteral("v148");
    model.errorMessage = QStringLiteral("The connection was lost while downloading. Please try again.");
    model.errorDetails = QStringLiteral("Getting the game: NSURLErrorDomain -1005");
    model.gameDownloadFailed = true;
}

void offer(AppModel& model, const std::filesystem::path& app)
{
    model.offerExternal = app;
}

void offerAtLength(AppModel& model)
{
    offer(model, "/home/anna/" + std::string(300, 'n') + "/Applications/ares.app");
}

void offerUpdate(AppModel& model)
{
    beSetUp(model);
    AresRelease release;
    release.tagName = QStringLiteral("v149");
    model.updateOffer = release;
}

void askWhetherToReset(AppModel& model)
{
    beSetUp(model);
    model.confirmReset = true;
}

void openDetails(const QQuickWindow& window)
{
    GalleryWindow::press(window, QStringLiteral("Show Details"));
    GalleryWindow::requireShown(window, longDetails());
}

void openAbout(const QQuickWindow& window)
{
    GalleryWindow::press(window, QStringLiteral("About"));
    GalleryWindow::requireShown(window, QStringLiteral("About Cartloom"));
}

void openAboutAtItsEnd(QQuickWindow& window)
{
    openAbout(window);
    GalleryWindow::scrollToEnd(window, QStringLiteral("Ares license"));
}

void readLicenceToItsEnd(QQuickWindow& window)
{
    openAbout(window);
    GalleryWindow::scrollToEnd(window, QStringLiteral("Copyright (c) 2004-2025 ares team, Near et al"));
}

void useKeyboardInAbout(QQuickWindow& window)
{
    openAbout(window);
    GalleryWindow::tab(window, 1);
}

void scrollPageToItsEnd(QQuickWindow& window)
{
    GalleryWindow::scrollToEnd(window, QStringLiteral("About"));
}

void useKeyboard(QQuickWindow& window)
{
    GalleryWindow::tab(window, 4);
}

/// One picture per control, of the pointer in action on it.
std::vector<GalleryState> statesOfControls(const QString& ending,
                                           const std::function<void(QQuickWindow&, const QString&)>& act)
{
    const std::tuple<QString, void (*)(AppModel&), QString> controls[] = {
        {QStringLiteral("play"), beSetUp, QStringLiteral("Play")},
        {QStringLiteral("open"), beSetUp, QStringLiteral("Open a ROM file (.z64 / .v64)...")},
        {QStringLiteral("fullscreen"), useExternal, QStringLiteral("Fullscreen")},
        {QStringLiteral("link"), beSetUp, QStringLiteral("Check for a newer Ares")},
        {QStringLiteral("details"), failAtLength, QStringLiteral("Show Details")},
        {QStringLiteral("delete"), askWhetherToReset, QStringLiteral("Delete")},
        {QStringLiteral("update"), offerUpdate, QStringLiteral("Update")},
    };
    std::vector<GalleryState> all;
    for (const auto& [name, put, text] : controls)
        all.push_back(
            {name + ending, put, text, [act, text = text](QQuickWindow& window) { act(window, text); }});
    return all;
}

std::vector<GalleryState> statesOfHover()
{
    return statesOfControls(QStringLiteral("-hovered"), GalleryWindow::pointAt);
}

/// The last pictures: the mouse button is not let go, which would be a click.
std::vector<GalleryState> statesOfPress()
{
    return statesOfControls(QStringLiteral("-pressed"), GalleryWindow::hold);
}

std::vector<GalleryState> statesOfWork()
{
    return {
        {QStringLiteral("idle-before-set-up"), beIdle, QStringLiteral("Set up and Play")},
        {QStringLiteral("idle-after-set-up"), beSetUp, QStringLiteral("Play")},
        {QStringLiteral("idle-external"), useExternal, QStringLiteral("Using the Ares already on this Mac")},
        {QStringLiteral("bar-determinate"), downloadHalf, QStringLiteral("Cancel")},
        {QStringLiteral("bar-indeterminate"),
         [](AppModel& model) { download(model, Stage::gettingGame, {}, QStringLiteral("3.2 MB")); },
         QStringLiteral("Getting the game"), GalleryWindow::letBarTravel},
        {QStringLiteral("starting"), [](AppModel& model) { play(model, Stage::starting); },
         QStringLiteral("Starting"), GalleryWindow::letBarTravel},
        {QStringLiteral("playing"), [](AppModel& model) { play(model, Stage::playing); },
         QStringLiteral("Playing...")},
    };
}

std::vector<GalleryState> statesOfMessages()
{
    return {
        {QStringLiteral("error-without-details"), [](AppModel& model) { fail(model, {}); }},
        {QStringLiteral("error-details-closed"), failAtLength, QStringLiteral("Show Details")},
        {QStringLiteral("error-details-open"), failAtLength, QStringLiteral("Show Details"), openDetails},
        {QStringLiteral("error-cut"), failInMoreWordsThanAreShown, {}, scrollPageToItsEnd},
        {QStringLiteral("error-recovery"), failToGetGame, QStringLiteral("I already have the file")},
        {QStringLiteral("notice"),
         [](AppModel& model) { model.notice = QStringLiteral("Cancelled. Nothing was changed."); },
         QStringLiteral("Cancelled. Nothing was changed.")},
    };
}

std::vector<GalleryState> statesAbovePage()
{
    return {
        {QStringLiteral("alert-offer"), [](AppModel& model) { offer(model, "/Applications/ares.app"); },
         QStringLiteral("Ares is already on this Mac")},
        {QStringLiteral("alert-offer-long"), offerAtLength, QStringLiteral("Ares is already on this Mac")},
        {QStringLiteral("alert-update"), offerUpdate, QStringLiteral("A newer Ares is available")},
        {QStringLiteral("alert-reset"), askWhetherToReset, QStringLiteral("Reset everything?")},
        {QStringLiteral("about"), beSetUp, {}, openAbout},
        {QStringLiteral("about-licence-end"), beSetUp, {}, readLicenceToItsEnd},
        {QStringLiteral("about-keyboard"), beSetUp, {}, useKeyboardInAbout},
        {QStringLiteral("drop"), beSetUp, QStringLiteral("Play"), GalleryWindow::dragFileOver},
        {QStringLiteral("keyboard"), beSetUp, QStringLiteral("Play"), useKeyboard},
    };
}

std::vector<GalleryState> statesOfOtherSizes()
{
    return {
        {QStringLiteral("small"), beSetUp, {}, {}, smallWindow},
        {QStringLiteral("small-end"), failToGetGame, {}, scrollPageToItsEnd, smallWindow},
        {QStringLiteral("small-about"), beSetUp, {}, openAbout, smallWindow},
        {QStringLiteral("large"), beSetUp, {}, {}, largeWindow},
        {QStringLiteral("large-about"), beSetUp, {}, openAbout, largeWindow},
        {QStringLiteral("text-larger"), beIdle, {}, {}, {480, 640}, largerText},
        {QStringLiteral("text-larger-end"), useExternal, {}, scrollPageToItsEnd, {480, 640}, largerText},
        {QStringLiteral("text-larger-bar"), downloadHalf, {}, {}, {480, 640}, largerText},
        {QStringLiteral("text-larger-error"), failToGetGame, {}, {}, {480, 640}, largerText},
        {QStringLiteral("text-larger-alert"), askWhetherToReset, {}, {}, {480, 640}, largerText},
        {QStringLiteral("text-larger-about"), beSetUp, {}, openAbout, {480, 640}, largerText},
        {QStringLiteral("text-larger-about-end"), beSetUp, {}, openAboutAtItsEnd, {480, 640}, largerText},
    };
}

} // namespace

std::vector<GalleryState> galleryStates()
{
    std::vector<GalleryState> all;
    for (auto* const part : {statesOfHover, statesOfWork, statesOfMessages, statesAbovePage,
                             statesOfOtherSizes, statesOfPress}) {
        for (auto& state : part())
            all.push_back(std::move(state));
    }
    return all;
}

} // namespace cartloom
