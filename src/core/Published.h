// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Text.h"

#include <QVariant>

#include <filesystem>
#include <optional>
#include <utility>

namespace cartloom
{

[[nodiscard]] inline QVariant toVariant(const std::filesystem::path& path)
{
    return toText(path);
}

template <typename T>
[[nodiscard]] QVariant toVariant(const T& value)
{
    return QVariant::fromValue(value);
}

/// An optional value that QML reads: undefined while there is none.
template <typename T>
class Optional : public std::optional<T>
{
public:
    using std::optional<T>::optional;
    Optional(const std::optional<T>& value)
        : std::optional<T>(value)
    {
    }

    operator QVariant() const { return this->has_value() ? toVariant(**this) : QVariant(); }
};

/// Without these two, an empty one would compare unequal to an empty std::optional, as to a value.
template <typename T>
[[nodiscard]] bool operator==(const Optional<T>& one, const std::optional<T>& other)
{
    return static_cast<const std::optional<T>&>(one) == other;
}

template <typename T>
[[nodiscard]] bool operator==(const Optional<T>& one, const Optional<T>& other)
{
    return one == static_cast<const std::optional<T>&>(other);
}

/// A field of the model. Reading is a call, `model.stage()`; writing is an assignment. Each write is
/// announced by the owner's objectWillChange before it and by the field's own signal after it. Thread of the
/// owner.
template <typename Owner, typename T>
class Published
{
public:
    using Signal = void (Owner::*)();

    Published(Owner* owner, Signal changed, T initial = {})
        : m_owner(owner)
        , m_changed(changed)
        , m_value(std::move(initial))
    {
    }
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    Published& operator=(T value)
    {
        Q_EMIT m_owner->objectWillChange();
        m_value = std::move(value);
        Q_EMIT(m_owner->*m_changed)();
        return *this;
    }

    [[nodiscard]] const T& operator()() const { return m_value; }

private:
    Owner* const m_owner;
    const Signal m_changed;
    T m_value;
};

} // namespace cartloom
