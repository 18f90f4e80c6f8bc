// SPDX-License-Identifier: MIT
#include "Drawing.h"
#include "IconFiles.h"

#include <QPainter>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QXmlStreamReader>
#include <QtEndian>
#include <QtTest>

using namespace cartloom;

class IconsTest : public QObject
{
    Q_OBJECT

    QQmlEngine m_engine;

    std::unique_ptr<QQuickItem> make(const QByteArray& qml)
    {
        QQmlComponent component(&m_engine);
        component.setData(qml, QUrl(QStringLiteral("qrc:/qt/qml/Cartloom/Test.qml")));
        auto* const item = qobject_cast<QQuickItem*>(component.create());
        if (!item)
            qFatal("%s", qPrintable(component.errorString()));
        return std::unique_ptr<QQuickItem>(item);
    }

    std::unique_ptr<QQuickItem> robot() { return make("import Cartloom\nRobotIcon {}"); }

    /// The drawing on black, where the item itself would draw it.
    static QImage drawn(const Drawing& drawing, const QSize& size)
    {
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::black);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        for (const DrawnShape& shape : drawing.shapes) {
            painter.setPen(shape.stroke);
            painter.setBrush(shape.fill);
            painter.drawPath(shape.outline);
        }
        return image;
    }

private Q_SLOTS:
    void initTestCase() { m_engine.addImportPath(QStringLiteral("qrc:/qt/qml")); }

    void theDrawingIsWhatTheWindowShows()
    {
        QQuickWindow window;
        window.setColor(Qt::black);
        const auto item = robot();
        item->setParentItem(window.contentItem());
        window.resize(item->size().toSize());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QImage shown = window.grabWindow();
        const QImage expected = drawn(drawingOf(*item), shown.size());
        int different = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                const QColor a = shown.pixelColor(x, y);
                const QColor b = expected.pixelColor(x, y);
                const int most = std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                                           std::abs(a.blue() - b.blue())});
                different += most > 24 ? 1 : 0;
            }
        }
        // Of the edges, some pixels are smoothed in another way.
        QVERIFY2(different < shown.width() * shown.height() / 100, QByteArray::number(different).constData());
    }

    void withoutAWindowTheDrawingIsTheSame()
    {
        QQuickWindow window;
        const auto inWindow = robot();
        inWindow->setParentItem(window.contentItem());
        const auto alone = robot();
        QCOMPARE(IconFiles::svg(drawingOf(*alone)), IconFiles::svg(drawingOf(*inWindow)));
    }

    void whatCannotBeDrawnIsRefused_data()
    {
        QTest::addColumn<QByteArray>("qml");
        QTest::newRow("text") << QByteArray("import QtQuick\nItem { Text { text: \"a\" } }");
        QTest::newRow("arc") << QByteArray("import QtQuick\nimport QtQuick.Shapes\n"
                                           "Shape { ShapePath { PathArc { x: 1; y: 1 } } }");
    }

    void whatCannotBeDrawnIsRefused()
    {
        QFETCH(QByteArray, qml);
        const auto item = make(qml);
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, static_cast<void>(drawingOf(*item)));
    }

    void thePictureStandsInTheMiddleOfItsSquareWithAMargin()
    {
        const QImage picture = IconFiles::picture(drawingOf(*robot()), 200);
        QRect covered;
        for (int y = 0; y < 200; ++y) {
            for (int x = 0; x < 200; ++x) {
                if (picture.pixelColor(x, y).alpha() > 128)
                    covered |= QRect(x, y, 1, 1);
            }
        }
        QCOMPARE(covered.top(), 8);
        QCOMPARE(199 - covered.bottom(), 8);
        QVERIFY(std::abs(covered.left() - (199 - covered.right())) <= 1);
    }

    void theScalablePictureIsXmlWithAPathForEachShape()
    {
        const Drawing drawing = drawingOf(*robot());
        QXmlStreamReader xml(IconFiles::svg(drawing));
        std::size_t paths = 0;
        while (!xml.atEnd()) {
            if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("path"))
                ++paths;
        }
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        // Antenna, its tip, head, face plate, two eyes, bolt.
        QCOMPARE(drawing.shapes.size(), std::size_t(7));
        QCOMPARE(paths, drawing.shapes.size());
    }

    void theContainerHoldsAPictureOfTheSizeThatEachOfItsEntriesNames()
    {
        const QHash<QByteArray, int> sides{{"icp4", 16},  {"icp5", 32},  {"ic11", 32},  {"ic12", 64},
                                           {"ic07", 128}, {"ic13", 256}, {"ic08", 256}, {"ic14", 512},
                                           {"ic09", 512}, {"ic10", 1024}};
        const QByteArray file = IconFiles::icns(drawingOf(*robot()));
        QCOMPARE(file.first(4), QByteArray("icns"));
        QCOMPARE(qFromBigEndian<quint32>(file.constData() + 4), quint32(file.size()));
        int entries = 0;
        for (qsizetype at = 8; at < file.size(); ++entries) {
            const QByteArray type = file.mid(at, 4);
            const auto size = qsizetype(qFromBigEndian<quint32>(file.constData() + at + 4));
            const QImage picture = QImage::fromData(file.mid(at + 8, size - 8), "PNG");
            QVERIFY2(sides.contains(type), type.constData());
            QCOMPARE(picture.size(), QSize(sides[type], sides[type]));
            at += size;
        }
        QCOMPARE(entries, int(sides.size()));
    }
};

QTEST_MAIN(IconsTest)
#include "tst_Icons.moc"
