// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

namespace cartloom
{

/// A field that its owner shows to the user. Every write is announced twice: by the owner's objectWillChange
/// before, by the field's own signal after it. Of the owner's thread.
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
        m_owner->objectWillChange();
        m_value = std::move(value);
        (m_owner->*m_changed)();
        return *this;
    }

    [[nodiscard]] const T& value() const { return m_value; }

private:
    Owner* const m_owner;
    const Signal m_changed;
    T m_value;
};

} // namespace cartloom
