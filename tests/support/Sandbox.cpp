// SPDX-License-Identifier: MIT
#include "support/Sandbox.h"

#include "platform/Text.h"
#include "storage/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>

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
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, toText(home() / "config"));
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
    return QDir(toText(Paths::support()))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

void writeFile(const std::filesystem::path& path, const QByteArray& bytes)
{
    std::filesystem::create_directories(path.parent_path());
    QFile file(toText(path));
    if (!file.open(QFile::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s: %s", path.c_str(), qPrintable(file.errorString()));
}

QByteArray readFile(const std::filesystem::path& path)
{
    QFile file(toText(path));
    if (!file.open(QFile::ReadOnly))
        qFatal("cannot read %s: %s", path.c_str(), qPrintable(file.errorString()));
    return file.readAll();
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
