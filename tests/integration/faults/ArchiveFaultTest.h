// SPDX-License-Identifier: MIT
#pragma once

#include "support/Checked.h"
#include "support/FaultTest.h"
#include "support/ZipWriter.h"

#include <QtTest>

namespace cartloom
{

/// Releases whose archive is not what it should be, as a first installation and as an update.
class ArchiveFaultTest : public FaultTest
{
protected:
    static inline const auto damaged = QStringLiteral("Could not unpack Ares. The download may be damaged.");
    static inline const auto withoutApp =
        QStringLiteral("The Ares download did not contain ares.app. Please try again.");

    /// The entries, followed by a complete emulator.
    static QByteArray before(std::vector<ZipEntry> entries)
    {
        entries.push_back(zipProgram());
        return zipOf(entries);
    }

    /// Checks, for a first installation and for an update, that the archive is refused, that nothing has
    /// changed and that the next press plays. Empty details are expected if none are told.
    void isRefused(const QByteArray& zip, const QString& told, const QString& sentence = damaged)
    {
        saveGame();
        restart();
        m_sites->publish(zip);
        CHECKED(press());
        CHECKED(wasRefused(told, sentence));
        CHECKED(nextPressPlays());
        QCOMPARE(installedTag(), QByteArray("v147"));

        m_sites->publish(zip, "v148");
        CHECKED(update());
        CHECKED(wasRefused(told, sentence));
        CHECKED(pressPlays());
        QCOMPARE(installedTag(), QByteArray("v147"));
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v147"));
    }

    /// Checks that the archive is installed and played and that nothing outside has changed.
    void isTaken(const QByteArray& zip)
    {
        saveGame();
        restart();
        remember();
        m_sites->publish(zip);
        CHECKED(pressPlays());
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v147"));
        m_model->reset();
        saveGame();
        nothingChanged();
    }

private:
    void wasRefused(const QString& told, const QString& sentence)
    {
        const QString details = m_model->errorDetails();
        QVERIFY2(details.contains(told) && told.isEmpty() == details.isEmpty(), qPrintable(details));
        CHECKED(shows({sentence, details}));
        nothingChanged();
    }
};

} // namespace cartloom
