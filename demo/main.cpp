// SPDX-License-Identifier: MIT
#include "DemoHome.h"
#include "DemoOrigins.h"
#include "Say.h"
#include "StandInSites.h"
#include "UnattendedRun.h"
#include "core/CartloomApp.h"
#include "platform/Text.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QTimer>

#include <cstdlib>

namespace
{

/// Slow enough to watch the downloads.
constexpr qint64 bytesPerSecond = 25'000'000;

struct Options
{
    std::filesystem::path home;
    std::filesystem::path emulatorArchive;
    std::filesystem::path game;
    QString tag;
    /// Where an unattended run leaves its pictures; none for a run with a player.
    std::optional<std::filesystem::path> pictures;
};

Options optionsIn(int argc, char* argv[])
{
    const QCommandLineOption home(QStringLiteral("home"), {}, QStringLiteral("folder"));
    const QCommandLineOption archive(QStringLiteral("emulator"), {}, QStringLiteral("zip"));
    const QCommandLineOption game(QStringLiteral("game"), {}, QStringLiteral("rom"));
    const QCommandLineOption tag(QStringLiteral("tag"), {}, QStringLiteral("tag"));
    const QCommandLineOption unattended(QStringLiteral("unattended"), {}, QStringLiteral("folder"));
    QCommandLineParser parser;
    parser.addOptions({home, archive, game, tag, unattended});
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    const bool complete = parser.parse(arguments) && parser.isSet(home) && parser.isSet(archive) &&
                          parser.isSet(game) && parser.isSet(tag);
    if (!complete)
        throw std::runtime_error("usage: cartloom-demo --home FOLDER --emulator ZIP --game ROM --tag TAG "
                                 "[--unattended PICTURE_FOLDER]");
    Options options{cartloom::toPath(parser.value(home)), cartloom::toPath(parser.value(archive)),
                    cartloom::toPath(parser.value(game)), parser.value(tag), std::nullopt};
    if (parser.isSet(unattended))
        options.pictures = cartloom::toPath(parser.value(unattended));
    return options;
}

int run(int argc, char* argv[])
{
    const Options options = optionsIn(argc, argv);
    cartloom::liveIn(options.home);
    const cartloom::StandInSites sites({options.emulatorArchive, options.game, options.tag, bytesPerSecond});
    cartloom::DemoOrigins::set(sites.origin());

    cartloom::CartloomApp::prepare();
    const QGuiApplication application(argc, argv);
    cartloom::CartloomApp cartloom;
    if (!options.pictures)
        return cartloom.run();
    if (!cartloom.isFirst())
        throw std::runtime_error("it runs already, in " + options.home.string());

    cartloom::UnattendedRun unattended(cartloom, *options.pictures);
    QTimer::singleShot(0, &application, [&] {
        const bool good = unattended.execute();
        cartloom::say(QStringLiteral("requests: %1").arg(sites.requests()));
        QGuiApplication::exit(good ? EXIT_SUCCESS : EXIT_FAILURE);
    });
    return cartloom.run();
}

} // namespace

/// The launcher, wired to a stand-in for its two sites that runs within it.
int main(int argc, char* argv[])
{
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "cartloom-demo: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
