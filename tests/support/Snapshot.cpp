// SPDX-License-Identifier: MIT
#include "support/Snapshot.h"

#include "platform/Text.h"

#include <QCryptographicHash>

#include <fstream>
#include <vector>

namespace fs = std::filesystem;

namespace cartloom
{

namespace
{

QString contents(const fs::path& path)
{
    // QFile does not open paths that are not UTF-8.
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return QStringLiteral("unreadable");
    QCryptographicHash hash(QCryptographicHash::Sha1);
    qint64 size = 0;
    std::vector<char> block(1024 * 1024);
    while (const auto count = file.read(block.data(), std::ssize(block)).gcount()) {
        hash.addData({block.data(), static_cast<qsizetype>(count)});
        size += count;
    }
    return QString::number(size) + u' ' + QString::fromLatin1(hash.result().toHex());
}

QString described(const fs::directory_entry& entry)
{
    const auto status = entry.symlink_status();
    const auto mode = QString::number(static_cast<int>(status.permissions()), 8);
    if (fs::is_regular_file(status))
        return QStringLiteral("file ") + mode + u' ' + contents(entry);
    if (fs::is_directory(status))
        return QStringLiteral("folder ") + mode;
    if (fs::is_symlink(status))
        return QStringLiteral("link to ") + toText(fs::read_symlink(entry));
    return QStringLiteral("neither file nor folder");
}

} // namespace

QStringList snapshotOf(const fs::path& folder)
{
    QStringList lines;
    if (!fs::is_directory(folder))
        return lines;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        lines.append(toText(entry.path().lexically_relative(folder)) + QStringLiteral(": ") +
                     described(entry));
    lines.sort();
    return lines;
}

} // namespace cartloom
