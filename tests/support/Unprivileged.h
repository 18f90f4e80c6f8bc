// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <unistd.h>

namespace cartloom
{

/// Drops root's privileges for its scope, so that permissions apply even if the tests run as root.
class Unprivileged
{
public:
    Unprivileged()
        : m_user(::geteuid())
    {
        constexpr uid_t nobody = 65534;
        if (m_user == 0 && ::seteuid(nobody) != 0)
            qFatal("cannot give up the privileges");
    }
    ~Unprivileged()
    {
        if (m_user == 0 && ::seteuid(m_user) != 0)
            qFatal("cannot take the privileges back");
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    const uid_t m_user;
};

} // namespace cartloom
