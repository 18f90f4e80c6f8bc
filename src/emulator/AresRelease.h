// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaType>
#include <QString>

#include <string>

namespace cartloom
{

/// One release of the emulator, chosen for download.
struct AresRelease
{
    Q_GADGET
    Q_PROPERTY(QString tagName MEMBER tagName CONSTANT)

public:
    /// As the release service gives it.
    QString tagName;
    QString assetName;
    /// Byte for byte as the release service gives it.
    std::string downloadURL;
    /// In bytes, as the release service reports it.
    qint64 size = 0;

    friend bool operator==(const AresRelease&, const AresRelease&) = default;
};

} // namespace cartloom
