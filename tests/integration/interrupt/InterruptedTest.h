// SPDX-License-Identifier: MIT
#pragma once

#include "PlayerRun.h"
#include "support/Sandbox.h"
#include "support/ScriptedSites.h"

#include <QObject>

#include <memory>

namespace cartloom
{

/// A test that interrupts operations of the launcher. Each release is a small bundle whose program tells its
/// tag; the sites offer v147.
class InterruptedTest : public QObject
{
    Q_OBJECT

protected:
    /// Gives the home folder the state that an operation begins with, and nothing else.
    void prepare(const QString& operation) const;

    [[nodiscard]] PlayerEnd run(const QString& command, const Interruption& interruption = {},
                                const QStringList& wrapper = {}) const;

    /// What the player does in an operation.
    [[nodiscard]] static QString commandOf(const QString& operation);

    std::unique_ptr<Sandbox> m_sandbox;
    std::unique_ptr<ScriptedSites> m_sites;

private:
    void installRelease(const std::filesystem::path& folder, const char* tag) const;
    void saveGame() const;
    [[nodiscard]] std::filesystem::path whole(const char* tag) const;

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
};

} // namespace cartloom
