// SPDX-License-Identifier: MIT
#include "Drawing.h"
#include "IconFiles.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>

#include <array>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace
{

using namespace cartloom;

/// The sizes of icons that desktops of the freedesktop kind ask for, in pixels.
constexpr std::array sizes{16, 22, 24, 32, 48, 64, 128, 256, 512};
const QString name = QStringLiteral("org.cartloom.Cartloom");

Drawing robot()
{
    QQmlEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    QQmlComponent component(&engine, QUrl(QStringLiteral("qrc:/qt/qml/Cartloom/RobotIcon.qml")));
    const std::unique_ptr<QObject> object(component.create());
    auto* const item = qobject_cast<QQuickItem*>(object.get());
    if (!item)
        throw std::runtime_error(component.errorString().toStdString());
    return drawingOf(*item);
}

void write(const QDir& folder, const QString& place, const QByteArray& bytes)
{
    QFile file(folder.filePath(place));
    if (!folder.mkpath(QFileInfo(place).path()) || !file.open(QFile::WriteOnly) ||
        file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write " + file.fileName().toStdString());
}

void writePicture(const QDir& folder, const Drawing& drawing, int side)
{
    const QString place = QStringLiteral("hicolor/%1x%1/apps").arg(side);
    if (!folder.mkpath(place) || !IconFiles::picture(drawing, side)
                                      .save(folder.filePath(place + u'/' + name + QStringLiteral(".png"))))
        throw std::runtime_error("cannot write an icon into " + folder.filePath(place).toStdString());
}

} // namespace

/// make-icons FOLDER: writes the robot of the window as FOLDER/hicolor/…, for desktops of the freedesktop
/// kind, and as FOLDER/Cartloom.icns, for macOS.
int main(int argc, char* argv[])
{
    // Nothing is shown.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("usage: make-icons FOLDER\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        const Drawing drawing = robot();
        const QDir folder(arguments[1]);
        for (const int side : sizes)
            writePicture(folder, drawing, side);
        write(folder, QStringLiteral("hicolor/scalable/apps/") + name + QStringLiteral(".svg"),
              IconFiles::svg(drawing));
        write(folder, QStringLiteral("Cartloom.icns"), IconFiles::icns(drawing));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make-icons: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
