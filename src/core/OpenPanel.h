// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QUrl>
#include <QtQmlIntegration>

#include <filesystem>
#include <functional>

namespace cartloom
{

/// Asks the player for one file. The window shows the system's own panel while this is open, and answers it.
/// Main thread.
class OpenPanel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The model owns the one panel.")

    Q_PROPERTY(bool isOpen READ isOpen NOTIFY isOpenChanged)
    Q_PROPERTY(QString title READ title NOTIFY isOpenChanged)
    Q_PROPERTY(QString message READ message NOTIFY isOpenChanged)
    Q_PROPERTY(QStringList nameFilters READ nameFilters NOTIFY isOpenChanged)

public:
    using Confirmed = std::function<void(const std::filesystem::path&)>;

    /// What the panel shows.
    struct Request
    {
        QString title;
        /// May be empty.
        QString message;
        /// The file-name extensions that can be chosen, without dots; all files when there are none.
        QStringList extensions;
    };

    /// Opens the panel; does nothing while it is open. The callback gets the file that the player confirms,
    /// if one is.
    void open(const Request& request, Confirmed confirmed);

    [[nodiscard]] bool isOpen() const { return static_cast<bool>(m_confirmed); }
    [[nodiscard]] const QString& title() const { return m_request.title; }
    [[nodiscard]] const QString& message() const { return m_request.message; }
    /// The extensions that can be chosen, as the file dialogs of Qt want them: one filter that bears the
    /// message as its name; none when all files can be chosen.
    [[nodiscard]] QStringList nameFilters() const;

    /// The player has chosen; an address that is no local file counts as no choice.
    Q_INVOKABLE void confirm(const QUrl& file);
    /// The player has closed the panel.
    Q_INVOKABLE void dismiss();

Q_SIGNALS:
    void isOpenChanged();

private:
    Confirmed close();

    Request m_request;
    Confirmed m_confirmed;
};

} // namespace cartloom
