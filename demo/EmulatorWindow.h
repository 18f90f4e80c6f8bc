// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QString>
#include <QWindow>

#include <optional>

namespace cartloom
{

/// The window of an emulator that this process has started, as the window manager knows it. Asks it through
/// wmctrl.
class EmulatorWindow
{
public:
    /// The window of this title that belongs to a child of this process; none while there is no such window.
    [[nodiscard]] static std::optional<EmulatorWindow> find(const QString& title);

    /// What is on the screen where the window is.
    [[nodiscard]] QImage picture() const;

    /// Asks the window manager to close it, as its close button does. False when it could not be asked.
    [[nodiscard]] bool close() const;

private:
    explicit EmulatorWindow(WId id)
        : m_id(id)
    {
    }

    WId m_id;
};

} // namespace cartloom
