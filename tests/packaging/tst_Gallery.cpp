// SPDX-License-Identifier: MIT
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace
{

/// The leftmost column with a dot of this colour; the width of the picture if there is none.
int leftmost(const QImage& picture, QRgb colour)
{
    for (int x = 0; x < picture.width(); ++x) {
        for (int y = 0; y < picture.height(); ++y) {
            if (picture.pixel(x, y) == colour)
                return x;
        }
    }
    return picture.width();
}

} // namespace

/// The pictures that cartloom-gallery writes.
class GalleryTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QImage picture(const QString& name) const
    {
        return QImage(m_folder.filePath(name + QStringLiteral(".png")));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QProcess gallery;
        gallery.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        gallery.start(QStringLiteral(CARTLOOM_GALLERY), {m_folder.path()});
        QVERIFY(gallery.waitForFinished(100'000));
        QCOMPARE(gallery.exitStatus(), QProcess::NormalExit);
        QCOMPARE(gallery.exitCode(), 0);
    }

    void picturesHaveTheSizeOfTheWindow()
    {
        QCOMPARE(picture(QStringLiteral("idle-before-set-up")).size(), QSize(480, 640));
        QCOMPARE(picture(QStringLiteral("small")).size(), QSize(480, 600));
    }

    void pieceOfTheBarIsOnItsWay_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* const name : {"bar-indeterminate", "starting"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void pieceOfTheBarIsOnItsWay()
    {
        QFETCH(const QString, name);
        constexpr int startOfTheBar = 24;
        const int piece = leftmost(picture(name), qRgb(0x4d, 0xa3, 0xff));
        QVERIFY2(piece > startOfTheBar + 5 && piece < 480, qPrintable(QString::number(piece)));
    }
};

QTEST_GUILESS_MAIN(GalleryTest)
#include "tst_Gallery.moc"
