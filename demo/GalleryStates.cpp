// SPDX-License-Identifier: MIT
#include "GalleryStates.h"

#include "support/ModelProbe.h"

namespace cartloom
{

namespace
{

using Stage = AppModel::Stage;
using P = ModelProbe;

void beIdle(AppModel& /*model*/) {}

void beSetUp(AppModel& model)
{
    P::setSetupDone(model, true);
    P::setAresVersion(model, QStringLiteral("v148"));
}

void download(AppModel& model, Stage stage, std::optional<double> fraction, const QString& line)
{
    P::setStage(model, stage);
    P::setFraction(model, fraction);
    P::setDetailLine(model, line);
}

void fail(AppModel& model, const QString& details)
{
    beSetUp(model);
    P::setErrorMessage(model, QStringLiteral("Ares stopped right away (exit code 3).\n\nno such core"));
    P::setErrorDetails(model, details);
}

QString longDetails()
{
    QStringList lines;
    for (int i = 1; i <= 30; ++i)
        lines.append(QStringLiteral("line %1: no such core, and none to take its place").arg(i));
    return lines.join(u'\n');
}

void failToGetGame(AppModel& model)
{
    P::setAresVersion(model, QStringLiteral("v148"));
    P::setErrorMessage(model, QStringLiteral("The connection was lost while downloading. Please try again."));
    P::setErrorDetails(model, QStringLiteral("Getting the game: NSURLErrorDomain -1005"));
    P::setGameDownloadFailed(model, true);
}

std::vector<GalleryState> statesOfPage()
{
    return {
        {QStringLiteral("idle-before-set-up"), beIdle, {}, QStringLiteral("Set up and Play")},
        {QStringLiteral("idle-after-set-up"), beSetUp, {}, QStringLiteral("Play")},
        {QStringLiteral("bar-determinate"),
         [](AppModel& model) {
             download(model, Stage::gettingAres, 0.4, QStringLiteral("32 MB of 80 MB, 12.3 MB/s"));
         },
         {},
         QStringLiteral("Getting Ares")},
        {QStringLiteral("bar-indeterminate"),
         [](AppModel& model) { download(model, Stage::gettingGame, {}, QStringLiteral("3.2 MB")); },
         {},
         QStringLiteral("Getting the game")},
        {QStringLiteral("playing"),
         [](AppModel& model) {
             beSetUp(model);
             P::setStage(model, Stage::playing);
         },
         {},
         QStringLiteral("Playing...")},
        {QStringLiteral("error-without-details"), [](AppModel& model) { fail(model, {}); }},
        {QStringLiteral("error-details-closed"),
         [](AppModel& model) { fail(model, longDetails()); },
         {},
         QStringLiteral("Show Details")},
        {QStringLiteral("error-details-open"),
         [](AppModel& model) { fail(model, longDetails()); },
         {QStringLiteral("Show Details")},
         longDetails()},
        {QStringLiteral("error-recovery"), failToGetGame, {}, QStringLiteral("I already have the file")},
        {QStringLiteral("notice"),
         [](AppModel& model) { P::setNotice(model, QStringLiteral("Cancelled. Nothing was changed.")); },
         {},
         QStringLiteral("Cancelled. Nothing was changed.")},
    };
}

std::vector<GalleryState> statesAbovePage()
{
    return {
        {QStringLiteral("alert-offer"),
         [](AppModel& model) { P::setOfferExternal(model, "/Applications/ares.app"); },
         {},
         QStringLiteral("Ares is already on this Mac")},
        {QStringLiteral("alert-update"),
         [](AppModel& model) {
             beSetUp(model);
             AresRelease release;
             release.tagName = QStringLiteral("v149");
             P::setUpdateOffer(model, release);
         },
         {},
         QStringLiteral("A newer Ares is available")},
        {QStringLiteral("alert-reset"),
         [](AppModel& model) {
             beSetUp(model);
             model.setConfirmReset(true);
         },
         {},
         QStringLiteral("Reset everything?")},
        {QStringLiteral("about"), beSetUp, {QStringLiteral("About")}, QStringLiteral("About Cartloom")},
        {QStringLiteral("about-small"),
         beSetUp,
         {QStringLiteral("About")},
         QStringLiteral("About Cartloom"),
         {480, 600}},
        {QStringLiteral("window-small"), failToGetGame, {}, {}, {480, 600}},
        {QStringLiteral("window-large"), beSetUp, {}, {}, {900, 900}},
    };
}

} // namespace

std::vector<GalleryState> galleryStates()
{
    auto states = statesOfPage();
    for (auto& state : statesAbovePage())
        states.push_back(std::move(state));
    return states;
}

} // namespace cartloom
