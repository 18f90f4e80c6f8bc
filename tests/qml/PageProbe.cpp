// SPDX-License-Identifier: MIT
#include "PageProbe.h"

#include "core/PreferenceKeys.h"
#include "platform/Files.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/ModelProbe.h"
#include "support/TestOrigins.h"

#include <QAccessible>
#include <QClipboard>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QMetaEnum>
#include <QQmlApplicationEngine>
#include <QQmlComponent>

#include <functional>
#include <memory>

namespace cartloom
{

namespace
{

const QUrl nowhere(QStringLiteral("http://127.0.0.1:1"));

/// What would be opened with other programs.
const QStringList schemes = {QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("file")};

template <typename T>
std::optional<T> optionalOf(const QVariant& value)
{
    return value.isValid() ? std::optional(value.value<T>()) : std::nullopt;
}

std::optional<std::filesystem::path> pathOf(const QVariant& value)
{
    return value.isValid() ? std::optional(toPath(value.toString())) : std::nullopt;
}

/// A release by its tag, which nobody can download.
std::optional<AresRelease> releaseOf(const QVariant& tag)
{
    if (!tag.isValid())
        return std::nullopt;
    return AresRelease{tag.toString(), QStringLiteral("ares-macos-universal.zip"),
                       nowhere.toEncoded().toStdString(), 80'000'000};
}

AppModel::Stage stageOf(const QVariant& value)
{
    const auto name = value.toString().toLatin1();
    const int stage = QMetaEnum::fromType<AppModel::Stage>().keyToValue(name.constData());
    if (stage < 0)
        qFatal("no such stage: %s", name.constData());
    return static_cast<AppModel::Stage>(stage);
}

using Setter = std::function<void(AppModel&, const QVariant&)>;

const QHash<QString, Setter>& setters()
{
    static const QHash<QString, Setter> all = {
        {QStringLiteral("stage"), [](auto& model, const auto& v) { model.stage = stageOf(v); }},
        {QStringLiteral("fraction"),
         [](auto& model, const auto& v) { model.fraction = optionalOf<double>(v); }},
        {QStringLiteral("detailLine"), [](auto& model, const auto& v) { model.detailLine = v.toString(); }},
        {QStringLiteral("errorMessage"),
         [](auto& model, const auto& v) { model.errorMessage = optionalOf<QString>(v); }},
        {QStringLiteral("errorDetails"),
         [](auto& model, const auto& v) { model.errorDetails = v.toString(); }},
        {QStringLiteral("gameDownloadFailed"),
         [](auto& model, const auto& v) { model.gameDownloadFailed = v.toBool(); }},
        {QStringLiteral("notice"), [](auto& model, const auto& v) { model.notice = optionalOf<QString>(v); }},
        {QStringLiteral("offerExternal"),
         [](auto& model, const auto& v) { model.offerExternal = pathOf(v); }},
        {QStringLiteral("setupDone"), [](auto& model, const auto& v) { model.setupDone = v.toBool(); }},
        {QStringLiteral("updateOffer"), [](auto& model, const auto& v) { model.updateOffer = releaseOf(v); }},
        {QStringLiteral("aresVersion"),
         [](auto& model, const auto& v) { model.aresVersion = optionalOf<QString>(v); }},
        {QStringLiteral("usingExternalAres"),
         [](auto& model, const auto& v) { model.usingExternalAres = v.toBool(); }},
        {QStringLiteral("pendingROM"),
         [](auto& model, const auto& v) { ModelProbe::setPendingROM(model, pathOf(v)); }},
    };
    return all;
}

} // namespace

PageProbe::PageProbe()
{
    QAccessible::setActive(true);
    for (const auto& scheme : schemes)
        QDesktopServices::setUrlHandler(scheme, this, "open");
    renew();
}

PageProbe::~PageProbe()
{
    for (const auto& scheme : schemes)
        QDesktopServices::unsetUrlHandler(scheme);
}

void PageProbe::renew()
{
    m_model.reset();
    m_sandbox.emplace();
    m_silence.close();
    TestOrigins::setReleaseApi(nowhere);
    TestOrigins::setStore(nowhere);
    m_opened.clear();
    m_model = AppModel::create();
    QQmlEngine::setObjectOwnership(model(), QQmlEngine::CppOwnership);
    Q_EMIT modelChanged();
    Q_EMIT openedChanged();
}

void PageProbe::put(const QVariantMap& fields)
{
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        const auto setter = setters().constFind(field.key());
        if (setter == setters().constEnd())
            qFatal("no such field: %s", qPrintable(field.key()));
        (*setter)(*m_model, field.value());
    }
}

QVariant PageProbe::pendingROM() const
{
    const auto& rom = ModelProbe::pendingROM(*m_model);
    return rom ? QVariant(toText(*rom)) : QVariant();
}

bool PageProbe::hasTask() const
{
    return ModelProbe::task(*m_model).has_value();
}

void PageProbe::silenceReleaseApi()
{
    if (!m_silence.listen(QHostAddress::LocalHost))
        qFatal("cannot listen: %s", qPrintable(m_silence.errorString()));
    TestOrigins::setReleaseApi(QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_silence.serverPort())));
}

QString PageProbe::placeExternalAres()
{
    const auto app = m_sandbox->home() / "Applications/ares.app";
    std::filesystem::create_directories(app);
    return toText(app);
}

QVariant PageProbe::preferredAres() const
{
    const auto path = Preferences::text(PreferenceKeys::externalAres);
    return path ? QVariant(*path) : QVariant();
}

bool PageProbe::opensWithoutModel() const
{
    QQmlApplicationEngine engine;
    engine.setOutputWarningsToStandardError(false);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Cartloom/Main.qml")));
    return !engine.rootObjects().isEmpty();
}

QVariantMap PageProbe::accessible(QQuickItem* item) const
{
    auto* const interface = QAccessible::queryAccessibleInterface(item);
    if (!interface)
        return {};
    const auto state = interface->state();
    auto* const value = interface->valueInterface();
    return {
        {QStringLiteral("name"), interface->text(QAccessible::Name)},
        {QStringLiteral("description"), interface->text(QAccessible::Description)},
        {QStringLiteral("role"), nameOf(interface->role())},
        {QStringLiteral("value"), value ? value->currentValue() : QVariant()},
        {QStringLiteral("focusable"), bool(state.focusable)},
        {QStringLiteral("disabled"), bool(state.disabled)},
        {QStringLiteral("invisible"), bool(state.invisible)},
        {QStringLiteral("checked"), bool(state.checked)},
        {QStringLiteral("pressed"), bool(state.pressed)},
        {QStringLiteral("readOnly"), bool(state.readOnly)},
    };
}

QString PageProbe::clipboardText() const
{
    return QGuiApplication::clipboard()->text();
}

bool PageProbe::act(QQuickItem* item, const QString& action) const
{
    auto* const interface = QAccessible::queryAccessibleInterface(item);
    auto* const actions = interface ? interface->actionInterface() : nullptr;
    if (!actions || !actions->actionNames().contains(action))
        return false;
    actions->doAction(action);
    return true;
}

void PageProbe::hold(QQuickWindow* window, Qt::Key key, bool wasDown) const
{
    const QString text = key == Qt::Key_Space ? QStringLiteral(" ") : QStringLiteral("\r");
    const auto send = [&](QEvent::Type type, bool repeated) {
        QKeyEvent event(type, key, Qt::NoModifier, text, repeated);
        QGuiApplication::sendEvent(window, &event);
    };
    if (!wasDown)
        send(QEvent::KeyPress, false);
    for (int i = 0; i < 3; ++i) {
        send(QEvent::KeyRelease, true);
        send(QEvent::KeyPress, true);
    }
    send(QEvent::KeyRelease, false);
}

bool PageProbe::drag(QQuickWindow* window, const QPointF& point, const QList<QUrl>& addresses)
{
    m_dragged.setUrls(addresses);
    QDragEnterEvent enter(point.toPoint(), Qt::CopyAction, &m_dragged, Qt::LeftButton, Qt::NoModifier);
    QGuiApplication::sendEvent(window, &enter);
    return enter.isAccepted();
}

void PageProbe::drop(QQuickWindow* window, const QPointF& point)
{
    QDropEvent dropped(point, Qt::CopyAction, &m_dragged, Qt::LeftButton, Qt::NoModifier);
    QGuiApplication::sendEvent(window, &dropped);
}

void PageProbe::leave(QQuickWindow* window)
{
    QDragLeaveEvent gone;
    QGuiApplication::sendEvent(window, &gone);
}

QUrl PageProbe::placeRom(const QString& name, qint64 size)
{
    const auto file = m_sandbox->scratch() / toPath(name);
    writeSparse(file, bigEndianHeader, size);
    return QUrl::fromLocalFile(toText(file));
}

QUrl PageProbe::storage() const
{
    return QUrl::fromLocalFile(toText(Paths::support()));
}

bool PageProbe::storageIsFolder() const
{
    return Files::isFolder(Paths::support());
}

void PageProbe::obstructStorage() const
{
    writeFile(Paths::support(), "in the way");
}

bool PageProbe::prefersFullscreen() const
{
    return Preferences::boolean(PreferenceKeys::fullscreen);
}

bool PageProbe::hasIcon(QQuickWindow* window) const
{
    return !window->icon().isNull();
}

double PageProbe::textScaleFor(double points) const
{
    const QFont usual = QGuiApplication::font();
    QFont font = usual;
    font.setPointSizeF(points);
    QGuiApplication::setFont(font);
    QQmlEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    QQmlComponent component(&engine);
    component.setData("import QtQml; import Cartloom; QtObject { property real scale: Theme.textScale }", {});
    const std::unique_ptr<QObject> theme(component.create());
    QGuiApplication::setFont(usual);
    return theme ? theme->property("scale").toDouble() : 0;
}

void PageProbe::open(const QUrl& address)
{
    m_opened.append(address);
    Q_EMIT openedChanged();
}

} // namespace cartloom
