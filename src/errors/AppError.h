// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <exception>

namespace cartloom
{

/// The one error that reaches the player: a finished sentence, and technical text that is shown on request
/// only.
struct AppError : std::exception
{
    explicit AppError(const QString& errorMessage, const QString& errorDetails = {})
        : message(errorMessage)
        , details(errorDetails)
        , m_what(errorMessage.toUtf8())
    {
    }

    /// The message, which is also how this error describes itself where another one's details quote it.
    [[nodiscard]] const QString& errorDescription() const { return message; }

    /// The message in UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

    QString message;
    QString details;

private:
    QByteArray m_what;
};

} // namespace cartloom
