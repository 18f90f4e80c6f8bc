// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"
#include "support/Sandbox.h"

#include <QMimeData>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTcpServer>
#include <QVariantMap>

#include <optional>

namespace cartloom
{

/// What the tests of the window do and see beyond QML: the model behind the page, what assistive technology
/// is told, what would be opened in a browser. QML knows the one instance as "probe". Main thread.
class PageProbe : public QObject
{
    Q_OBJECT
    Q_PROPERTY(cartloom::AppModel* model READ model NOTIFY modelChanged)
    Q_PROPERTY(QList<QUrl> opened MEMBER m_opened NOTIFY openedChanged)

public:
    PageProbe();
    ~PageProbe() override;

    [[nodiscard]] AppModel* model() { return m_model.get(); }

    /// Begins anew: an empty home, a model that has just been made, and addresses that lead nowhere.
    Q_INVOKABLE void renew();
    /// Puts fields of the model into a state; undefined is absent.
    Q_INVOKABLE void put(const QVariantMap& fields);

    /// The ROM that waits for the answer to the offer; undefined when there is none.
    Q_INVOKABLE QVariant pendingROM() const;
    /// Whether the model has ever started an operation.
    Q_INVOKABLE bool hasTask() const;
    /// Makes the release service one that takes connections and never answers.
    Q_INVOKABLE void silenceReleaseApi();
    /// Puts a copy of the emulator among the user's applications; returns its path.
    Q_INVOKABLE QString placeExternalAres();
    /// The emulator that the preferences name; undefined when they name none.
    Q_INVOKABLE QVariant preferredAres() const;

    /// Whether the window can be opened although nobody gives it a model.
    Q_INVOKABLE bool opensWithoutModel() const;

    /// What assistive technology is told of an item: name, role, value and states.
    Q_INVOKABLE QVariantMap accessible(QQuickItem* item) const;
    Q_INVOKABLE QString clipboardText() const;
    /// Does what assistive technology does to press or toggle an item.
    Q_INVOKABLE bool act(QQuickItem* item, const QString& action) const;
    /// Holds a key down until it has repeated itself three times; it may have been down before.
    Q_INVOKABLE void hold(QQuickWindow* window, Qt::Key key, bool wasDown = false) const;
    /// Drags addresses over a window, at a point; returns whether they would be taken.
    Q_INVOKABLE bool drag(QQuickWindow* window, const QPointF& point, const QList<QUrl>& addresses);
    /// Lets go of what is dragged.
    Q_INVOKABLE void drop(QQuickWindow* window, const QPointF& point);
    /// Takes what is dragged out of the window.
    Q_INVOKABLE void leave(QQuickWindow* window);
    /// A file of that size in a folder of its own; its first bytes are those of a game.
    Q_INVOKABLE QUrl placeRom(const QString& name, qint64 size);
    Q_INVOKABLE QUrl storage() const;
    Q_INVOKABLE bool storageIsFolder() const;
    /// Puts something in the place of the storage folder, so that it cannot be made.
    Q_INVOKABLE void obstructStorage() const;
    /// What the preferences say about full-screen mode.
    Q_INVOKABLE bool prefersFullscreen() const;
    Q_INVOKABLE bool hasIcon(QQuickWindow* window) const;
    /// How much larger than usual all texts are if the program starts with a desktop font of this size.
    Q_INVOKABLE qreal textScaleFor(qreal points) const;

Q_SIGNALS:
    void modelChanged();
    void openedChanged();

private Q_SLOTS:
    void open(const QUrl& address);

private:
    std::optional<Sandbox> m_sandbox;
    std::shared_ptr<AppModel> m_model;
    QTcpServer m_silence;
    QList<QUrl> m_opened;
    QMimeData m_dragged;
};

} // namespace cartloom
