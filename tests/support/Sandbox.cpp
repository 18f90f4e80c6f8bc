// SPDX-License-Identifier: MIT
#include "support/Sandbox.h"

#include "platform/Text.h"
#include "storage/Paths.h"

#include <QCoreApplication>
#include <QSettings>

#include <fstream>
#include <sstream>
#include <system_error>

namespace cartloom
{

Sandbox::Sandbox()
{
    QCoreApplication::setApplicationName(QStringLiteral("Cartloom"));
    QCoreApplication::setOrganizationName(QStringLiteral("Cartloom"));
    for (const auto& folder : {home(), scratch()})
        std::filesystem::create_directories(folder);
    qputenv("HOME", QByteArray::fromStdString(home().native()));
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString((home() / "data").native()));
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString((home() / "config").native()));
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, toText(home() / "config"));
}

Sandbox::~Sandbox()
{
    // QTemporaryDir does not remove names that are not UTF-8.
    std::error_code ignored;
    std::filesystem::remove_all(root(), ignored);
}

std::filesystem::path Sandbox::root() const
{
    return toPath(m_folder.path());
}

void Sandbox::openToEveryone() const
{
    std::filesystem::permissions(root(), std::filesystem::perms(0755));
}

void Sandbox::giveToEveryone() const
{
    openToEveryone();
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root())) {
        if (!entry.is_symlink())
            std::filesystem::permissions(entry, std::filesystem::perms(0777));
    }
}

QStringList Sandbox::storage()
{
    QStringList names;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(Paths::support(), missing))
        names << toText(entry.path().filename());
    names.sort();
    return names;
}

// QFile does not open paths that are not UTF-8.

void writeFile(const std::filesystem::path& path, const QByteArray& bytes)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    if (!file.write(bytes.constData(), bytes.size()).flush())
        qFatal("cannot write %s", path.c_str());
}

QByteArray readFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        qFatal("cannot read %s", path.c_str());
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return QByteArray::fromStdString(bytes.str());
}

void writeSparse(const std::filesystem::path& path, const QByteArray& head, qint64 size)
{
    writeFile(path, head);
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size));
}

std::ptrdiff_t entriesOf(const std::filesystem::path& folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

} // namespace cartloom
