// SPDX-License-Identifier: MIT
#include "core/CartloomApp.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <thread>

namespace
{

using namespace cartloom;

constexpr int reports = 300;
constexpr qint64 expected = 80'000'000;

/// Processor time that this thread has used, in nanoseconds.
qint64 used()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return qint64(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

void waitForFrame(QQuickWindow& window)
{
    QEventLoop loop;
    QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
    QTimer::singleShot(5000, &loop, [] { throw std::runtime_error("no frame was drawn"); });
    loop.exec();
}

struct Costs
{
    double toLabel = 0;
    double toScreen = 0;
};

/// One report from another thread, as the downloader makes it.
Costs report(CartloomApp& cartloom, QQuickWindow& window, const QQuickItem& label, qint64 received)
{
    const auto callback = cartloom.model().progressCallback();
    std::thread([&] { callback(received, expected); }).join();
    const QString before = label.property("text").toString();
    const qint64 start = used();
    QCoreApplication::sendPostedEvents();
    const qint64 told = used();
    if (label.property("text").toString() == before)
        throw std::runtime_error("the label does not tell the progress");
    const qint64 waiting = used();
    waitForFrame(window);
    return {static_cast<double>(told - start) / 1e3,
            static_cast<double>(told - start + used() - waiting) / 1e3};
}

void measure(CartloomApp& cartloom)
{
    auto* const window = qobject_cast<QQuickWindow*>(cartloom.engine().rootObjects().value(0));
    waitForFrame(*window);
    cartloom.model().stage = AppModel::Stage::gettingAres;
    waitForFrame(*window);
    const auto* const label = window->findChild<QQuickItem*>(QStringLiteral("detailLine"));
    if (!label)
        throw std::runtime_error("there is no label");
    for (qint64 turn = 1; turn <= reports; ++turn) {
        const auto costs = report(cartloom, *window, *label, expected / reports * turn);
        std::printf("%.2f %.2f\n", costs.toLabel, costs.toScreen);
    }
}

} // namespace

/// progress-report: shows the launcher's window and prints, for each of many reports of a download's
/// progress, how many microseconds of the main thread it took until the label had its new text, and until the
/// frame with it was drawn.
int main(int argc, char* argv[])
{
    CartloomApp::prepare();
    const QGuiApplication application(argc, argv);
    try {
        CartloomApp cartloom;
        measure(cartloom);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "progress-report: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
