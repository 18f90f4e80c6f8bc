// SPDX-License-Identifier: MIT
#include "support/SmallVolume.h"

#include <QtGlobal>

#include <fstream>
#include <string>

#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace cartloom
{

bool SmallVolume::prepare()
{
    const auto user = std::to_string(::geteuid());
    const auto group = std::to_string(::getegid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

SmallVolume::SmallVolume(std::filesystem::path folder, long long bytes)
    : m_folder(std::move(folder))
{
    const auto options = "size=" + std::to_string(bytes);
    if (::mount("none", m_folder.c_str(), "tmpfs", 0, options.c_str()) != 0)
        qFatal("cannot mount on %s", m_folder.c_str());
}

void SmallVolume::leaveRoomFor(long long bytes, long long entries) const
{
    struct statvfs status = {};
    if (::statvfs(m_folder.c_str(), &status) != 0)
        qFatal("cannot look at %s", m_folder.c_str());
    const auto takenEntries = static_cast<long long>(status.f_files - status.f_ffree);
    const auto options =
        "size=" + std::to_string(used() + bytes) + ",nr_inodes=" + std::to_string(takenEntries + entries);
    if (::mount("none", m_folder.c_str(), "tmpfs", MS_REMOUNT, options.c_str()) != 0)
        qFatal("cannot change the size of %s", m_folder.c_str());
}

long long SmallVolume::used() const
{
    struct statvfs status = {};
    if (::statvfs(m_folder.c_str(), &status) != 0)
        qFatal("cannot look at %s", m_folder.c_str());
    return static_cast<long long>((status.f_blocks - status.f_bfree) * status.f_frsize);
}

SmallVolume::~SmallVolume()
{
    ::umount2(m_folder.c_str(), MNT_DETACH);
}

} // namespace cartloom
