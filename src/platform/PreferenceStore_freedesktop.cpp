// SPDX-License-Identifier: MIT
#include "platform/PreferenceStore.h"

#include "platform/Files.h"
#include "platform/FolderAlias.h"
#include "platform/Places.h"
#include "platform/Text.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace cartloom
{

namespace
{

constexpr off_t maxFileBytes = 8 * 1024 * 1024;

/// True if QSettings can open the file without blocking: a pipe would wait for its other end.
bool isUsable(const std::filesystem::path& file)
{
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0)
        return errno == ENOENT;
    return S_ISREG(status.st_mode) && status.st_size <= maxFileBytes;
}

FileDescriptor openFolder(const std::filesystem::path& folder, PreferenceStore::Access access)
{
    try {
        if (access == PreferenceStore::Access::writing)
            Files::createFolders(folder);
    } catch (const std::system_error&) {
        // Opening it fails, too.
    }
    return FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

} // namespace

PreferenceStore PreferenceStore::open(Access access)
{
    const auto file = Places::preferencesFolder() / "Cartloom/Cartloom.conf";
    // QSettings locks the store with a file beside it.
    if (!isUsable(file) || !isUsable(file.native() + ".lock"))
        return {};
    PreferenceStore store;
    QString name = toText(file);
    if (!decodeUtf8(QByteArray::fromStdString(file.native()))) {
        store.folder = openFolder(file.parent_path(), access);
        if (!store.folder.isOpen())
            return {};
        name = FolderAlias::of(store.folder, file);
    }
    store.settings = std::make_unique<QSettings>(name, QSettings::NativeFormat);
    return store;
}

} // namespace cartloom
