// SPDX-License-Identifier: MIT
#include "DemoRom.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>

#include <cstdio>
#include <cstdlib>

namespace
{

/// What an emulator would be: a window that is named after the game's file and shows what the file holds. It
/// plays nothing.
class StandInWindow : public QRasterWindow
{
public:
    StandInWindow(const QString& romFile, const QByteArray& rom, QString commandLine)
        : m_gameTitle(cartloom::DemoRom::title(rom))
        , m_picture(cartloom::DemoRom::picture(rom))
        , m_commandLine(std::move(commandLine))
    {
        setTitle(QFileInfo(romFile).completeBaseName());
        resize(640, 560);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(QRect(QPoint(), size()), Qt::black);
        const QRect screen(0, 0, width(), height() * 6 / 7);
        QRect shown(QPoint(), m_picture.size().scaled(screen.size(), Qt::KeepAspectRatio));
        shown.moveCenter(screen.center());
        painter.drawImage(shown, m_picture);

        painter.setPen(Qt::white);
        const QRect caption(10, screen.height(), width() - 20, height() - screen.height());
        painter.drawText(caption, Qt::AlignCenter | Qt::TextWrapAnywhere,
                         QStringLiteral("Stand-in emulator · ") + m_gameTitle + QStringLiteral("\n") +
                             m_commandLine);
    }

private:
    const QString m_gameTitle;
    const QImage m_picture;
    const QString m_commandLine;
};

} // namespace

/// standin-ares --system "Nintendo 64" [--fullscreen] FILE
int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments().mid(1);
    QFile rom(arguments.isEmpty() ? QString() : arguments.last());
    if (!rom.open(QFile::ReadOnly)) {
        std::fprintf(stderr, "standin-ares: cannot open the game \"%s\"\n", qPrintable(rom.fileName()));
        return EXIT_FAILURE;
    }
    StandInWindow window(rom.fileName(), rom.readAll(), arguments.join(QStringLiteral(" ")));
    if (arguments.contains(QLatin1String("--fullscreen")))
        window.showFullScreen();
    else
        window.show();
    return QGuiApplication::exec();
}
