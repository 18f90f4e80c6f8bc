// SPDX-License-Identifier: MIT
#include "DemoRom.h"
#include "TitlePicture.h"

#include <QGuiApplication>
#include <QSaveFile>

#include <cstdio>
#include <cstdlib>

namespace
{

/// Within what the launcher takes for its game.
constexpr qsizetype romSize = 16'000'000;

} // namespace

/// cartloom-make-rom FILE: writes the demo's game.
int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("usage: cartloom-make-rom FILE\n", stderr);
        return EXIT_FAILURE;
    }
    QSaveFile file(arguments.at(1));
    const bool written = file.open(QIODevice::WriteOnly) &&
                         file.write(cartloom::DemoRom::make(QStringLiteral("QUILLET!64"),
                                                            cartloom::titlePicture(), romSize)) == romSize &&
                         file.commit();
    if (!written)
        std::fprintf(stderr, "cartloom-make-rom: cannot write %s: %s\n", qPrintable(file.fileName()),
                     qPrintable(file.errorString()));
    return written ? EXIT_SUCCESS : EXIT_FAILURE;
}
